// The clocks of a recording: names and times are UTC, durations come from the clock that is never set.
#ifndef VELAGNSS_APPS_RECORD_CLOCK_H
#define VELAGNSS_APPS_RECORD_CLOCK_H

#include <chrono>
#include <functional>
#include <string>

namespace Host {

using t_RecordTime = std::chrono::sys_time<std::chrono::microseconds>;  // UTC
using t_SteadyTime = std::chrono::steady_clock::time_point;

struct S_RecordMoment {
  t_RecordTime utc;
  t_SteadyTime steady;

  // What UTC is ahead of the steady clock: it changes only when the clock is set.
  std::chrono::microseconds Offset() const;
};

// What a recorder asks for the time. Tests have their own.
using t_RecordClock = std::function<S_RecordMoment()>;
S_RecordMoment NowForRecords();

// A computer without a battery begins at 1970 or at the date of its system, until the network or a receiver has set its
// clock. Such a time is not a date.
bool IsClockSet(t_RecordTime utc);

// Tells the starts of the machine apart while it has no date: the first digits of the kernel's random number.
std::string BootId();

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_CLOCK_H
