// Which stream an input is, whatever its name and place: what results are known by that must not be stored twice.
#ifndef VELAGNSS_APPS_INPUT_IDENTITY_H
#define VELAGNSS_APPS_INPUT_IDENTITY_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace Host {

// Of a regular file: 16 hexadecimal digits of the SHA-256 of its first 64 KiB, so that copies on other machines have
// the same, and a file that has grown since keeps it, if it had 64 KiB before. Of anything else: the name, without a
// password, and the time of the call, because what comes from there never comes again.
std::string IdentityOfInput(const std::string& name);

// Whether an identity is that of contents, which another input may have as well.
bool IsOfContents(std::string_view identity);

// Of a file with this beginning: `kIdentityHead` bytes, or all that it has.
inline constexpr std::size_t kIdentityHead = 1 << 16;
std::string IdentityOfHead(std::span<const unsigned char> head);

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUT_IDENTITY_H
