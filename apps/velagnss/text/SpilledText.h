// Text that is kept until it can be written, in bounded memory: what does not fit goes to a temporary file.
#ifndef VELAGNSS_APPS_SPILLED_TEXT_H
#define VELAGNSS_APPS_SPILLED_TEXT_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "apps/velagnss/text/TemporaryFile.h"

namespace Host {

// Where no file can be written, the text stays in memory.
class C_SpilledText {
 public:
  void Append(std::string_view text);
  bool IsEmpty() const { return m_file.Size() == 0 && m_rest.empty(); }
  char Last() const { return m_last; }  // character, when it is not empty

  using t_Take = std::function<void(std::string_view piece)>;

  // Hands over the text piece by piece, in its order; the second one clears it.
  void ForEach(const t_Take& take);
  void MoveTo(const t_Take& take);

 private:
  static constexpr std::size_t kMemory = 1 << 18;  // bytes kept in memory

  C_TemporaryFile m_file;  // the beginning of the text
  std::string m_rest;      // its end
  char m_last = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SPILLED_TEXT_H
