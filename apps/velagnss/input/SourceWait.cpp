#include "apps/velagnss/input/SourceWait.h"

#include <algorithm>

#include "apps/velagnss/os/Signals.h"

namespace Host {

// A signal that comes just before the wait still ends it.
C_SourceWait::C_SourceWait(int wake) : m_polled{{wake, POLLIN, 0}, {SignalDescriptor(), POLLIN, 0}} {}

void C_SourceWait::Add(const C_ByteSource& source) {
  m_sources.push_back({&source, false});
  m_polled.insert(m_polled.end() - kNumOthers, {source.Descriptor(), POLLIN, 0});
}

void C_SourceWait::Remove(std::size_t number) {
  m_sources[number] = {};
  m_polled[number].fd = -1;  // poll passes it over
}

C_SourceWait::eWait C_SourceWait::Wait(t_Limit limit) {
  const bool hasFile =
      std::any_of(m_sources.begin(), m_sources.end(), [](const S_Source& s) { return s.NeverWaits(); });
  const bool isFileAlone = hasFile && m_sources.size() == 1;
  const int timeout = hasFile ? 0 : limit ? static_cast<int>(limit->count()) : -1;
  const int count = isFileAlone ? 0 : ::poll(m_polled.data(), m_polled.size(), timeout);
  bool isAnyReady = false;
  for (std::size_t i = 0; i < m_sources.size(); ++i) {
    m_sources[i].isReady = m_sources[i].NeverWaits() || (count > 0 && m_polled[i].revents != 0);
    isAnyReady = isAnyReady || m_sources[i].isReady;
  }
  if (isAnyReady) return eWait::Ready;
  return count == 0 ? eWait::TimeOver : eWait::Interrupted;
}

}  // namespace Host
