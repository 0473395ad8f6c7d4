// Several files for one output, each with a part of it.
#ifndef VELAGNSS_APPS_SPLIT_OUTPUT_H
#define VELAGNSS_APPS_SPLIT_OUTPUT_H

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/sinks/Output.h"

namespace Host {

// The part "nmea" of "out" is the file "out.nmea". It is opened when its first bytes come; what C_Output says of files
// holds for each. After a failure, which has been reported, nothing more is written, and no file is replaced.
class C_SplitOutput {
 public:
  explicit C_SplitOutput(std::string base) : m_base(std::move(base)) {}

  std::string NameOf(std::string_view part) const { return m_base + "." + std::string(part); }

  // Where bytes of the part are to be appended; written from time to time and by `Flush`.
  std::string& Part(std::string_view part);
  void Flush();
  void Close();
  bool HasFailed() const { return m_hasFailed; }

 private:
  struct S_File {
    C_Output output;
    std::string waiting;
  };
  void Flush(S_File& file);

  std::string m_base;
  std::map<std::string, S_File, std::less<>> m_files;
  bool m_hasFailed = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SPLIT_OUTPUT_H
