// Owner of a file descriptor of the operating system.
#ifndef VELAGNSS_APPS_FILE_DESCRIPTOR_H
#define VELAGNSS_APPS_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace Host {

class C_FileDescriptor {
 public:
  C_FileDescriptor() = default;
  explicit C_FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
  C_FileDescriptor(C_FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  C_FileDescriptor& operator=(C_FileDescriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }
  ~C_FileDescriptor() { Close(); }

  int Get() const { return m_descriptor; }
  bool IsOpen() const { return m_descriptor >= 0; }
  int Release() { return std::exchange(m_descriptor, -1); }  // the caller owns it

  // False when the operating system only now reports that something written was lost (`errno`).
  bool Close() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }

 private:
  int m_descriptor = -1;
};

// Must be called before any file is opened. The next file that is opened would get the number of a standard stream that
// the caller has closed. Here each such number goes to a descriptor that fails when it is used.
void OccupyStandardDescriptors();

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_DESCRIPTOR_H
