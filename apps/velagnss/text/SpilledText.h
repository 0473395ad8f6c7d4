// Text that is kept until it can be written, in bounded memory: what does not fit goes to a temporary file.
#ifndef VELAGNSS_APPS_SPILLED_TEXT_H
#define VELAGNSS_APPS_SPILLED_TEXT_H

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Host {

// Thrown when text cannot be read back from its temporary file.
struct S_SpillLost {};

// The file is in TMPDIR, else in /var/tmp, and has no name: nothing is left of it, however the program ends. Where no
// file can be written, the text stays in memory.
class C_SpilledText {
 public:
  void Append(std::string_view text);
  bool IsEmpty() const { return m_spilled == 0 && m_rest.empty(); }
  char Last() const { return m_last; }  // character, when it is not empty

  // Hands over the text piece by piece, in its order, and clears it.
  void MoveTo(const std::function<void(std::string_view piece)>& take);

 private:
  static constexpr std::size_t kMemory = 1 << 18;  // bytes kept in memory

  void Spill();
  bool OpenFile();

  struct S_Close {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }  // only read by then
  };
  std::unique_ptr<std::FILE, S_Close> m_file;
  bool m_hasFailed = false;     // the file takes no more
  std::uint64_t m_spilled = 0;  // bytes in the file, the beginning of the text
  std::string m_rest;           // the end of the text
  char m_last = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SPILLED_TEXT_H
