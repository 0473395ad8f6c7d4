#include "apps/velagnss/record/RecordClock.h"

#include <fstream>

namespace Host {

using namespace std::chrono;

microseconds S_RecordMoment::Offset() const {
  return duration_cast<microseconds>(utc.time_since_epoch() - steady.time_since_epoch());
}

S_RecordMoment NowForRecords() { return {time_point_cast<microseconds>(system_clock::now()), steady_clock::now()}; }

bool IsClockSet(t_RecordTime utc) {
  constexpr sys_days kFirstUse = 2025y / January / 1;  // this program did not exist before
  return utc >= kFirstUse;
}

std::string BootId() {
  constexpr std::size_t kDigits = 8;
  std::string id;
  std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), id);
  return id.empty() ? "boot" : id.substr(0, kDigits);
}

}  // namespace Host
