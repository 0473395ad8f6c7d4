// Text in UTF-8 (RFC 3629).
#ifndef VELAGNSS_APPS_UTF8_H
#define VELAGNSS_APPS_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Host {

struct S_Character {
  char32_t code = 0;
  std::size_t size = 0;  // bytes; 0 when the text does not begin with UTF-8
};

// The character at the front of a text that is not empty. Overlong forms and surrogates are not UTF-8.
S_Character FirstCharacter(std::string_view text);

// `text` for a terminal: as it is, but for what the terminal could take for a control sequence. Control characters
// other than tab and line ends, those of Unicode (U+0080 to U+009F) and bytes that are not UTF-8 become "\xNN", byte by
// byte.
std::string PrintableText(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_UTF8_H
