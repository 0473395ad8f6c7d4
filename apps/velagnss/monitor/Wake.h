// Signals from one thread to another that there is something new. Several signals count as one.
#ifndef VELAGNSS_APPS_WAKE_H
#define VELAGNSS_APPS_WAKE_H

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

class C_Wake {
 public:
  C_Wake() : m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_event.IsOpen()) throw std::system_error(errno, std::generic_category());
  }

  // Readable from the first call to `Clear`.
  int Descriptor() const { return m_event.Get(); }

  // From any thread. Only the first one is a system call.
  void operator()() {
    if (m_isSet.exchange(true)) return;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_event.Get(), &one, sizeof one);
  }

  // Before the news is looked at. In this order: of two calls in between, the second one would find it set.
  void Clear() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(m_event.Get(), &count, sizeof count);
    m_isSet = false;
  }

 private:
  C_FileDescriptor m_event;
  std::atomic<bool> m_isSet = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_WAKE_H
