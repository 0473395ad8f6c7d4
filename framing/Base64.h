// Bytes as text and back: Base64 of RFC 4648, section 4, with "+", "/" and "=" padding. Not exported.
#ifndef VELAGNSS_FRAMING_BASE64_H
#define VELAGNSS_FRAMING_BASE64_H

namespace UTIL {

// Writes source[0, length) as text that ends in a NUL. Returns the number of characters before the NUL, a multiple of
// 4; 0 when `length` is 0. When text and NUL do not fit into `capacity` characters, or a pointer is null, nothing is
// written and the result is 0. A `capacity` of 0 is not refused: the caller must not pass it.
unsigned int Base64Encode(const unsigned char* source, unsigned int length, char* dest, unsigned int capacity);

// Decodes the NUL-terminated text up to its end or the first "="; padding may be missing. Returns the number of bytes
// written. When they do not fit into `capacity`, or a pointer is null, nothing is written and the result is 0. A
// character outside the alphabet, such as a line break, gives 0; the groups of four before it stay written.
unsigned int Base64Decode(const char* source, unsigned char* dest, unsigned int capacity);

}  // namespace UTIL

#endif  // VELAGNSS_FRAMING_BASE64_H
