#include "apps/velagnss/record/ReplayReader.h"

#include <algorithm>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/record/FileNames.h"

namespace Host {
namespace {

constexpr std::size_t kReadSize = 1 << 16;  // bytes, and the most that a piece has

// Of a recording: a damaged or forged index must not make the sum of its pauses overflow.
constexpr std::chrono::microseconds kLongest = std::chrono::years(100);

}  // namespace

C_ReplayReader::C_ReplayReader(std::vector<std::string> files, t_MaxGap maxGap)
    : m_files(std::move(files)), m_maxGap(maxGap), m_buffer(kReadSize), m_borders(C_FrameBorders::eTimes::Elapsed) {}

bool C_ReplayReader::OpenNext() {
  const std::string& name = m_files[m_nextFile++];
  const bool hadIndex = m_file != nullptr && m_file->hasIndex;
  m_file = std::make_unique<S_File>();
  m_isAtEnd = !m_file->file.Open(name);
  m_hasFailed = m_hasFailed || m_isAtEnd;
  m_file->hasIndex = m_file->index.Open(name + std::string(kIndexEnding));
  if (m_file->hasIndex != hadIndex) m_time.reset();  // the times of streams and of arrivals do not compare
  if (!m_file->hasIndex) ReportDetail(name + ": has no index of arrival times; the times in the data are used");
  m_left = 0;
  m_arrival.reset();
  return !m_isAtEnd;
}

C_ReplayReader::eRead C_ReplayReader::Next(S_ReplayPiece& piece) {
  for (;;) {
    if (m_file != nullptr && (m_file->hasIndex ? FillByIndex(piece) : FillByDataTime(piece))) return eRead::Piece;
    if (m_nextFile == m_files.size()) return m_hasFailed ? eRead::Failed : eRead::End;
    OpenNext();
  }
}

// More bytes of the file; false at its end.
bool C_ReplayReader::Refill() {
  while (!m_isAtEnd) {
    S_Chunk chunk;
    const C_ByteSource::eRead read = m_file->plain.Read(m_buffer, chunk);
    m_hasFailed = m_hasFailed || read == C_ByteSource::eRead::Failed;
    m_isAtEnd = read == C_ByteSource::eRead::End || read == C_ByteSource::eRead::Failed;
    if (read != C_ByteSource::eRead::Bytes) continue;
    m_bytes.insert(m_bytes.end(), chunk.bytes.begin(), chunk.bytes.end());
    if (!m_file->hasIndex) m_borders.Feed(chunk.bytes);
    return true;
  }
  return false;
}

void C_ReplayReader::Give(std::size_t size, S_ReplayPiece& piece) {
  const auto end = m_bytes.begin() + static_cast<std::ptrdiff_t>(size);
  piece.bytes.assign(m_bytes.begin(), end);
  piece.at = m_at;
  piece.arrival = m_arrival;
  m_bytes.erase(m_bytes.begin(), end);
  if (!m_file->hasIndex) m_position += size;
}

// Time that runs backward does not make a pause.
void C_ReplayReader::Advance(t_RecordTime time) {
  if (m_time) {
    const auto pause = std::max(time - *m_time, std::chrono::microseconds(0));
    m_at = std::min(m_at + (m_maxGap ? std::min(pause, *m_maxGap) : pause), kLongest);
  }
  m_time = time;
}

// After a step of the clock times are on another scale, which begins at the same moment.
void C_ReplayReader::TakeRecord(const S_IndexRecord& record) {
  using eKind = S_IndexRecord::eKind;
  if (record.kind == eKind::Gap || record.kind == eKind::End || record.kind == eKind::Reconnect) return;
  if (record.kind != eKind::Unindexed) Advance(record.time);
  if (record.kind == eKind::ClockStep) m_time.reset();
  if (record.HasData()) m_left = record.length;
  m_arrival = record.kind == eKind::Data ? std::optional(record.time) : std::nullopt;
}

// Bytes after the end of the index came at unknown times.
bool C_ReplayReader::FillByIndex(S_ReplayPiece& piece) {
  while (m_left == 0) {
    const std::optional<S_IndexRecord> record = m_file->index.Next();
    if (!record) break;
    TakeRecord(*record);
  }
  if (m_bytes.empty() && !Refill()) return false;
  const bool isIndexed = m_left > 0;
  while (isIndexed && m_bytes.size() < std::min<std::uint64_t>(m_left, kReadSize) && Refill()) {
  }
  const std::size_t size = isIndexed ? static_cast<std::size_t>(std::min<std::uint64_t>(m_left, kReadSize)) : kReadSize;
  const std::size_t given = std::min(size, m_bytes.size());
  if (isIndexed) m_left -= given;
  Give(given, piece);
  return true;
}

// A piece ends where the time of the stream goes on, as far as is known by now.
bool C_ReplayReader::FillByDataTime(S_ReplayPiece& piece) {
  const auto noteSteps = [this] {
    for (const S_Border& border : m_borders.Borders())
      if (border.time) m_timeSteps.push_back(border);
  };
  for (;;) {
    while (!m_timeSteps.empty() && m_timeSteps.front().at <= m_position) {
      Advance(*m_timeSteps.front().time);
      m_timeSteps.pop_front();
    }
    const std::uint64_t end = m_timeSteps.empty() ? m_borders.Resolved() : m_timeSteps.front().at;
    const std::uint64_t size = std::min<std::uint64_t>(end - m_position, kReadSize);
    if (size > 0 && (!m_timeSteps.empty() || size == kReadSize || m_isAtEnd)) {
      Give(static_cast<std::size_t>(size), piece);
      return true;
    }
    if (m_isAtEnd && m_bytes.empty()) return false;
    if (!Refill()) m_borders.Finish();
    noteSteps();
  }
}

}  // namespace Host
