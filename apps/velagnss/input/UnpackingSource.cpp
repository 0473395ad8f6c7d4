#include "apps/velagnss/input/UnpackingSource.h"

#include <fmt/core.h>
#include <poll.h>

#include <algorithm>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

constexpr std::size_t kPackedSize = 1 << 16;  // bytes to read at once

}  // namespace

C_ByteSource::eRead C_UnpackingSource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  if (m_state == eState::Plain) return m_source.Read(buffer, chunk);
  return m_state == eState::Guessing ? Guess(buffer, chunk) : Unpack(buffer, chunk);
}

// Bytes that may begin a signature wait for those after them.
C_ByteSource::eRead C_UnpackingSource::Guess(std::span<unsigned char> buffer, S_Chunk& chunk) {
  const auto rest = std::copy(m_packed.begin(), m_packed.end(), buffer.begin());
  const eRead read = m_source.Read({rest, buffer.end()}, chunk);
  if (read == eRead::Nothing || read == eRead::Failed) return read;
  const std::size_t size = m_packed.size() + (read == eRead::Bytes ? chunk.bytes.size() : 0);
  const S_KindGuess guess = GuessKind(buffer.first(size));
  m_packed.assign(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
  if (guess.kind == nullptr && guess.needsMore && read == eRead::Bytes) return eRead::Nothing;
  m_kind = guess.kind;
  if (m_kind != nullptr) {
    if (m_kind->codec == eCodec::None || m_layer == eLayer::Last) return RefuseContainer(*m_kind);
    m_state = eState::Unpacking;
    m_unpacker = MakeUnpacker(m_kind->codec);
    return Unpack(buffer, chunk);
  }
  m_state = eState::Plain;
  m_packed.clear();
  chunk = {buffer.first(size), S_Chunk::t_Clock::now()};
  return size == 0 ? eRead::End : eRead::Bytes;
}

// A fault and an end are dealt with only after what came before them has been delivered.
C_ByteSource::eRead C_UnpackingSource::Unpack(std::span<unsigned char> buffer, S_Chunk& chunk) {
  while (SignalReceived() == 0) {
    const C_Unpacker::eOutcome outcome = std::exchange(m_outcome, C_Unpacker::eOutcome::More);
    if (outcome == C_Unpacker::eOutcome::Damaged) return ReportFault("are damaged before");
    if (outcome == C_Unpacker::eOutcome::End && !BeginMember()) return End();
    const C_Unpacker::S_Step step = m_unpacker->Unpack(std::span(m_packed).subspan(m_used), buffer);
    m_used += step.taken;
    m_outcome = step.outcome;
    if (step.given > 0) {
      chunk = {buffer.first(step.given), S_Chunk::t_Clock::now()};
      return eRead::Bytes;
    }
    if (m_outcome == C_Unpacker::eOutcome::More && step.taken == 0 && !Refill() && SignalReceived() == 0)
      return ReportFault("are cut off after");
  }
  return eRead::Nothing;
}

// Whether another member follows; zeros between and after members are padding.
bool C_UnpackingSource::BeginMember() {
  while (true) {
    while (m_used < m_packed.size() && m_packed[m_used] == 0) ++m_used;
    const S_KindGuess guess = GuessKind(std::span(m_packed).subspan(m_used));
    const bool needsMore = m_used == m_packed.size() || (guess.kind == nullptr && guess.needsMore);
    if (needsMore && Refill()) continue;
    if (guess.kind == nullptr || guess.kind->codec != m_kind->codec) return false;
    m_unpacker = MakeUnpacker(m_kind->codec);
    return true;
  }
}

// Reads more bytes to unpack; false at the end, after a failure and after a signal.
bool C_UnpackingSource::Refill() {
  m_packed.erase(m_packed.begin(), m_packed.begin() + static_cast<std::ptrdiff_t>(m_used));
  m_usedBefore += std::exchange(m_used, 0);
  const std::size_t held = m_packed.size();
  std::size_t size = 0;
  m_packed.resize(held + kPackedSize);
  while (size == 0 && SignalReceived() == 0 && !m_sourceFailed) {
    S_Chunk chunk;
    const eRead read = m_source.Read(std::span(m_packed).subspan(held), chunk);
    m_sourceFailed = read == eRead::Failed;
    if (read == eRead::Bytes) size = chunk.bytes.size();
    if (read == eRead::End) break;
    if (read == eRead::Nothing) WaitForSource();
  }
  m_packed.resize(held + size);
  return size > 0;
}

void C_UnpackingSource::WaitForSource() const {
  pollfd waiting[] = {{m_source.Descriptor(), POLLIN, 0}, {SignalDescriptor(), POLLIN, 0}};
  ::poll(waiting, 2, -1);
}

// What follows is data that somebody misses.
C_ByteSource::eRead C_UnpackingSource::End() const {
  if (m_used < m_packed.size())
    ReportWarning(
        fmt::format("{}: what follows its {} from byte {} on is ignored", Name(), m_kind->name, m_usedBefore + m_used));
  return m_sourceFailed ? eRead::Failed : eRead::End;
}

C_ByteSource::eRead C_UnpackingSource::RefuseContainer(const S_FileKind& kind) const {
  ReportError(
      fmt::format("{}: {} {}; {}", Name(), m_layer == eLayer::Outer ? "is" : "contains", kind.name, kind.advice));
  return eRead::Failed;
}

C_ByteSource::eRead C_UnpackingSource::ReportFault(std::string_view what) const {
  if (m_sourceFailed) return eRead::Failed;
  ReportError(fmt::format("{}: the {} {} byte {}; what was unpacked before is in the output", Name(), m_kind->name,
                          what, m_usedBefore + m_used));
  return eRead::Failed;
}

}  // namespace Host
