#include "apps/velagnss/rinex/NavStore.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <type_traits>

namespace Host {
namespace {

constexpr std::size_t kInMemory = 1 << 13;  // ephemerides; 3 MB
constexpr std::size_t kBlock = 16;          // ephemerides read at once

static_assert(std::is_trivially_copyable_v<S_NavRecord>);

}  // namespace

// Reads one part of the file from its beginning to its end.
class C_NavStore::C_Cursor {
 public:
  C_Cursor(C_TemporaryFile& file, const S_Run& run) : m_file(file), m_run(run) { Advance(); }

  bool IsAtEnd() const { return m_at == m_block.size(); }
  const S_NavRecord& Record() const { return m_block[m_at]; }

  void Advance() {
    if (++m_at < m_block.size()) return;
    m_at = 0;
    m_block.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, (m_run.end - m_run.next) / kSize)));
    if (m_block.empty()) return;
    m_file.Read(m_run.next, reinterpret_cast<char*>(m_block.data()), m_block.size() * kSize);
    m_run.next += m_block.size() * kSize;
  }

 private:
  static constexpr std::size_t kSize = sizeof(S_NavRecord);

  C_TemporaryFile& m_file;
  S_Run m_run;
  std::vector<S_NavRecord> m_block;
  std::size_t m_at = 0;
};

void C_NavStore::Insert(const S_NavRecord& record) {
  const auto [place, isNew] = m_records.insert(record);
  if (isNew) {
    if (m_records.size() >= kInMemory && m_canSpill) m_canSpill = Spill();
    return;
  }
  auto node = m_records.extract(place);
  Complete(node.value(), record);
  m_records.insert(std::move(node));
}

bool C_NavStore::Spill() {
  std::vector<S_NavRecord> sorted(m_records.begin(), m_records.end());
  const std::uint64_t begin = m_file.Size();
  if (!m_file.Append({reinterpret_cast<const char*>(sorted.data()), sorted.size() * sizeof(S_NavRecord)})) return false;
  m_runs.push_back({begin, m_file.Size()});
  m_records.clear();
  return true;
}

// The parts are older than what is still in memory, and in their order: of equal ephemerides the oldest comes first.
void C_NavStore::MoveTo(const std::function<void(const S_NavRecord& record)>& take) {
  std::vector<C_Cursor> cursors;
  for (const S_Run& run : m_runs) cursors.emplace_back(m_file, run);
  std::optional<S_NavRecord> last;
  const auto add = [&](const S_NavRecord& record) {
    if (last && !(*last < record)) return Complete(*last, record);
    if (last) take(*last);
    last = record;
  };
  const auto oldestLeast = [&](const S_NavRecord* bound) -> C_Cursor* {
    C_Cursor* least = nullptr;
    for (C_Cursor& cursor : cursors)
      if (!cursor.IsAtEnd() && (least == nullptr || cursor.Record() < least->Record())) least = &cursor;
    return least != nullptr && bound != nullptr && *bound < least->Record() ? nullptr : least;
  };
  const auto mergeUpTo = [&](const S_NavRecord* bound) {
    for (C_Cursor* least = oldestLeast(bound); least != nullptr; least = oldestLeast(bound)) {
      add(least->Record());
      least->Advance();
    }
  };
  for (const S_NavRecord& record : m_records) {
    mergeUpTo(&record);
    add(record);
  }
  mergeUpTo(nullptr);
  if (last) take(*last);
}

}  // namespace Host
