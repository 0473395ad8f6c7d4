// Ephemerides in the order of the file, each only once, in bounded memory.
#ifndef VELAGNSS_APPS_NAV_STORE_H
#define VELAGNSS_APPS_NAV_STORE_H

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "apps/velagnss/rinex/NavRecord.h"
#include "apps/velagnss/text/TemporaryFile.h"

namespace Host {

// What does not fit in memory is sorted and put into a temporary file, part by part; the parts are merged at the end.
// Where no file can be written, everything stays in memory.
class C_NavStore {
 public:
  // Of equal ephemerides the first is kept, and completed by the others.
  void Insert(const S_NavRecord& record);
  bool IsEmpty() const { return m_records.empty() && m_runs.empty(); }

  // Hands over the ephemerides in their order. Only once.
  void MoveTo(const std::function<void(const S_NavRecord& record)>& take);

 private:
  struct S_Run {
    std::uint64_t next;  // offset in the file
    std::uint64_t end;
  };
  class C_Cursor;

  bool Spill();

  std::set<S_NavRecord> m_records;
  std::vector<S_Run> m_runs;
  C_TemporaryFile m_file;
  bool m_canSpill = true;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NAV_STORE_H
