// The checksum of NMEA 0183: the XOR of all characters between "$" and "*". Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_CHECKSUM_H
#define VELAGNSS_TEXTPROTO_SENTENCE_CHECKSUM_H

#include <array>
#include <cstddef>
#include <string_view>

namespace velagnss::textproto {

// "*" and the two digits of the checksum of a text that starts with "$" and ends before the "*".
std::array<char, 3> ChecksumText(std::string_view text);

// Index of the last "*" of a sentence if the checksum after it is right, else npos. The "*" must be at index 6 or
// later. Digits of either case pass; what else passes for two hexadecimal digits is what a scan with "%x" takes.
std::size_t FindCheckedStar(std::string_view sentence);

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_CHECKSUM_H
