#include "apps/velagnss/report/ArrivalTimes.h"

#include "apps/velagnss/record/FileNames.h"

namespace Host {

C_ArrivalTimes::C_ArrivalTimes(const std::string& name) : m_hasIndex(m_index.Open(name + std::string(kIndexEnding))) {
  if (!m_hasIndex) return;
  m_isClockSet = m_index.Head().isClockSet;
  Append(m_index.Head().firstPosition, std::nullopt);
}

// With an index the bytes come from a file, which knows no times.
void C_ArrivalTimes::NoteBytes(std::uint64_t size, t_Arrival arrival) {
  if (m_hasIndex) return;
  Append(size, arrival ? std::optional(std::chrono::floor<std::chrono::microseconds>(*arrival)) : std::nullopt);
}

void C_ArrivalTimes::Append(std::uint64_t size, std::optional<t_RecordTime> time) {
  m_end += size;
  if (!m_pieces.empty() && m_pieces.back().time == time) return void(m_pieces.back().end = m_end);
  m_pieces.push_back({m_end, time});
  if (m_pieces.size() <= kMaxPieces) return;
  m_begin = m_pieces.front().end;
  m_pieces.pop_front();
}

// False at its end. A clock that is set later may have shown any time before.
bool C_ArrivalTimes::ReadIndex() {
  const std::optional<S_IndexRecord> record = m_index.Next();
  if (!record) return false;
  using eKind = S_IndexRecord::eKind;
  m_isClockSet = m_isClockSet || record->kind == eKind::ClockStep;
  const bool isKnown = record->kind == eKind::Data && m_isClockSet;
  if (record->HasData()) Append(record->length, isKnown ? std::optional(record->time) : std::nullopt);
  return true;
}

std::optional<t_RecordTime> C_ArrivalTimes::At(std::uint64_t position) {
  while (m_hasIndex && m_end <= position && ReadIndex()) {
  }
  while (!m_pieces.empty() && m_pieces.front().end <= position) {
    m_begin = m_pieces.front().end;
    m_pieces.pop_front();
  }
  if (m_pieces.empty() || position < m_begin) return std::nullopt;
  return m_pieces.front().time;
}

}  // namespace Host
