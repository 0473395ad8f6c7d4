#include "apps/velagnss/sinks/live/ReaderSink.h"

#include <fmt/core.h>

#include <utility>

namespace Host {

using eWeight = S_SinkMessage::eWeight;

C_ReaderSink::C_ReaderSink(const S_SinkMaking& making)
    : C_NetSink(making.thread, making.address.Shown(), making.limits),
      m_readers(making.thread.Context(), making.limits, Counters(),
                [this](const std::string& name, const std::string& why) { OnLeave(name, why); }) {}

void C_ReaderSink::AddReader(C_Readers::S_Newcomer newcomer) {
  Say(eWeight::Detail, newcomer.name + " connected");
  m_readers.Add(std::move(newcomer));
  Thread().Wake();
}

void C_ReaderSink::OnLeave(const std::string& name, const std::string& why) {
  Say(eWeight::Detail, fmt::format("{} left: {}", name, why));
  if (IsFinishing() && m_readers.IsEmpty()) NoteFinished();
}

void C_ReaderSink::BeginFinish() {
  StopListening();
  m_readers.Finish();
  if (m_readers.IsEmpty()) NoteFinished();
}

}  // namespace Host
