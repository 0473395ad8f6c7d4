// A set of characters, built by the compiler. Internal.
//
// One table look-up per character, with the whole range of a byte: a high byte is simply not a member, whatever the
// sign of `char`.
#ifndef VELAGNSS_TEXTPROTO_CHAR_SET_H
#define VELAGNSS_TEXTPROTO_CHAR_SET_H

#include <array>
#include <string_view>

namespace velagnss::textproto {

// For sets that are tested for every character of a field.
class C_CharSet {
 public:
  constexpr C_CharSet() = default;
  constexpr explicit C_CharSet(std::string_view members) {
    for (const char c : members) m_contains[static_cast<unsigned char>(c)] = true;
  }
  constexpr bool Contains(char c) const { return m_contains[static_cast<unsigned char>(c)]; }

 private:
  std::array<bool, 256> m_contains{};
};

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_CHAR_SET_H
