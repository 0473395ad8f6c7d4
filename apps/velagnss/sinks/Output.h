// An output: standard output, a file, or whatever else a name denotes.
#ifndef VELAGNSS_APPS_OUTPUT_H
#define VELAGNSS_APPS_OUTPUT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/sinks/FileReplacement.h"
#include "apps/velagnss/sinks/GzipStream.h"
#include "apps/velagnss/text/TextMaker.h"

namespace Host {

// Nothing is buffered here: hand over whole lines, many at a time. After the first failure every further write does
// nothing and returns false. The failure has been reported to the user by then, unless the reader of a pipe went away.
class C_Output {
 public:
  // "-" is standard output. A regular file keeps its contents until `Close` replaces them, and a new file appears then:
  // without `Close` and after a failure nothing has changed. Anything else, such as a device or a pipe, is written to
  // directly, and so is a file in a directory where none can be created. False, reported, when it cannot be written.
  bool Open(const std::string& name) { return Open(name, eWriting::Replacement); }

  // How a regular file gets its contents: all at once, or as they come.
  enum class eWriting { Replacement, Direct };
  bool Open(const std::string& name, eWriting writing);

  // Compresses everything from here on, gzip. Called after `Open`, before the first byte.
  void Compress();

  // True when the operating system has taken all of `text`. What a terminal could take for a control sequence is
  // written to it as "\xNN" (`PrintableText`).
  bool Write(std::string_view text);

  // Writes what `text` holds and clears it, also after a failure.
  void Flush(C_TextMaker& text);

  // Completes the output. False when the operating system reports a loss only now.
  bool Close();

  // Whether what is written so far is nothing to anybody until `Close`.
  bool IsReplacement() const { return m_replacement != nullptr; }

  bool HasFailed() const { return m_state != eState::Good; }
  bool HasReaderLeft() const { return m_state == eState::ReaderLeft; }
  bool IsATerminal() const { return m_isTerminal; }

 private:
  enum class eState { Good, ReaderLeft, Failed };

  C_FileDescriptor OpenFile(const std::string& name, eWriting writing);
  bool WriteBytes(std::string_view bytes);
  bool Fail(int error);

  C_FileDescriptor m_descriptor;
  std::unique_ptr<C_FileReplacement> m_replacement;  // none: written directly
  std::unique_ptr<C_GzipStream> m_gzip;              // none: as it is
  bool m_isTerminal = false;
  std::string m_name;
  std::uint64_t m_written = 0;
  eState m_state = eState::Failed;  // until it is open
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTPUT_H
