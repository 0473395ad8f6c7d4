// How far a long input has been read.
#ifndef VELAGNSS_APPS_PROGRESS_H
#define VELAGNSS_APPS_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace Host {

// Shows nothing for short inputs, when standard error is not a terminal, or when quiet. The destructor clears the line.
class C_Progress {
 public:
  // `size`: bytes to come, 0 when unknown.
  C_Progress(bool isWanted, std::string name, std::uint64_t size);
  ~C_Progress();
  C_Progress(const C_Progress&) = delete;
  C_Progress& operator=(const C_Progress&) = delete;

  void Update(std::uint64_t done);

 private:
  using t_Clock = std::chrono::steady_clock;

  bool m_isOn;
  std::string m_name;
  std::uint64_t m_size;
  t_Clock::time_point m_start;
  t_Clock::time_point m_nextShow;
};

// "file: 45 %, 120.3 MB/s, 12 s left"; without percentage and time left when `size` is 0.
std::string ProgressText(const std::string& name, std::uint64_t done, std::uint64_t size, double seconds);

}  // namespace Host

#endif  // VELAGNSS_APPS_PROGRESS_H
