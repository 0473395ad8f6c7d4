// Preloaded into the program by a test: a machine whose clock shows OTHER_CLOCK, in seconds since 1970.
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) {
  const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  const char* const other = std::getenv("OTHER_CLOCK");
  if (clock == CLOCK_REALTIME && other != nullptr) now->tv_sec = std::atoll(other);
  return result;
}

time_t time(time_t* out) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  if (out != nullptr) *out = now.tv_sec;
  return now.tv_sec;
}

int gettimeofday(timeval* out, void*) {
  out->tv_sec = time(nullptr);
  out->tv_usec = 0;
  return 0;
}
}
