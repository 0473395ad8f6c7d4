#include "apps/velagnss/pipeline/RecordRun.h"

#include <algorithm>

namespace Host {

C_RecordRun::C_RecordRun(const S_RunOptions& options, std::initializer_list<C_RecordConsumer*> consumers)
    : m_consumers(consumers),
      m_needsRecords(std::any_of(consumers.begin(), consumers.end(), [](auto* c) { return c->NeedsRecords(); })) {
  m_reader.DisableProtocol(C_RawDataMessage::eAllProtocols);
  for (const C_RawDataMessage::eProtocols protocol : options.search) m_reader.EnableProtocol(protocol);
  m_reader.AcceptUnlisted(options.acceptsUnlisted);
  m_reader.ReportEvents(std::any_of(consumers.begin(), consumers.end(), [](auto* c) { return c->NeedsEvents(); }));
  m_decoder.KeepTimeDigits(velagnss::TimeDigits::All);
  if (options.firstDay) m_decoder.AssumeFirstDay(*options.firstDay);
  if (options.seed) m_decoder.SeedTime(*options.seed);
}

void C_RecordRun::BeginInput(const std::string& name) {
  m_reader.Restart();
  m_decoder.Restart();
  for (C_RecordConsumer* consumer : m_consumers) consumer->BeginInput(name);
  SelectActive();
}

// Consumers that want no more are not asked for every frame.
void C_RecordRun::SelectActive() {
  m_active = m_consumers;
  std::erase_if(m_active, [](const C_RecordConsumer* consumer) { return !consumer->WantsMore(); });
}

void C_RecordRun::Feed(const S_Chunk& chunk) {
  m_reader.Feed(chunk.bytes.data(), chunk.bytes.size());
  Pump();
}

// After `-n` frames the rest of the queue is left alone: no consumer wants its frames.
void C_RecordRun::EndInput() {
  if (WantsMore()) {
    m_reader.Finish();
    Pump();
  }
  m_bytesRead += m_reader.BytesFed();
  for (C_RecordConsumer* consumer : m_consumers) consumer->EndInput({m_reader, m_decoder.Clock()});
}

void C_RecordRun::Pump() {
  while (!m_active.empty()) {
    const velagnss::StreamItem& item = m_reader.Next();
    if (const auto* frame = std::get_if<velagnss::Frame>(&item))
      HandOut(*frame);
    else if (const auto* start = std::get_if<velagnss::RejectedStart>(&item))
      ForEachActive([start](C_RecordConsumer& consumer) { consumer.OnRejection(*start); });
    else if (const auto* range = std::get_if<velagnss::SkippedRange>(&item))
      ForEachActive([range](C_RecordConsumer& consumer) { consumer.OnSkipped(*range); });
    else
      return;
  }
}

void C_RecordRun::HandOut(const velagnss::Frame& frame) {
  ++m_framesFound;
  const S_FrameRecord record = {frame, m_needsRecords ? m_decoder.Decode(frame) : m_notDecoded, m_decoder.Clock()};
  ForEachActive([&record](C_RecordConsumer& consumer) { consumer.OnFrame(record); });
}

// The list of active consumers changes only after the loop over it.
template <class Give>
void C_RecordRun::ForEachActive(const Give& give) {
  bool isAnyDone = false;
  for (C_RecordConsumer* consumer : m_active) {
    give(*consumer);
    isAnyDone = isAnyDone || !consumer->WantsMore();
  }
  if (isAnyDone) SelectActive();
}

bool C_RecordRun::WantsMore() const {
  return std::any_of(m_consumers.begin(), m_consumers.end(), [](auto* consumer) { return consumer->WantsMore(); });
}

void C_RecordRun::BeforeWait() {
  for (C_RecordConsumer* consumer : m_consumers) consumer->BeforeWait();
}

void C_RecordRun::Finish() {
  for (C_RecordConsumer* consumer : m_consumers) consumer->Finish();
}

eExitCode C_RecordRun::Judge() const {
  eExitCode worst = eExitOk;
  for (C_RecordConsumer* consumer : m_consumers) worst = std::max(worst, consumer->Judge());
  return worst;
}

}  // namespace Host
