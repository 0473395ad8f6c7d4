// A text output: standard output or a file.
#ifndef VELAGNSS_APPS_OUTPUT_H
#define VELAGNSS_APPS_OUTPUT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/text/TextMaker.h"

namespace Host {

// Nothing is buffered here: hand over whole lines, many at a time. After the first failure every further write does
// nothing and returns false. The failure has been reported to the user by then, unless the reader of a pipe went away.
class C_Output {
 public:
  // Creates or empties `name`; "-" is standard output. False, reported, when that is not possible.
  bool Open(const std::string& name);

  // True when the operating system has taken all of `text`.
  bool Write(std::string_view text);

  // Writes what `text` holds and clears it, also after a failure.
  void Flush(C_TextMaker& text);

  // False when the operating system reports a loss only now.
  bool Close();

  bool HasFailed() const { return m_state != eState::Good; }
  bool HasReaderLeft() const { return m_state == eState::ReaderLeft; }
  bool IsATerminal() const;

 private:
  enum class eState { Good, ReaderLeft, Failed };

  bool Fail(int error);

  C_FileDescriptor m_descriptor;
  std::string m_name;
  std::uint64_t m_written = 0;
  eState m_state = eState::Failed;  // until it is open
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTPUT_H
