// Sentences of any address: what makes a line one that NMEA 0183 allows, whether or not its formatter is listed.
// Internal.
#ifndef VELAGNSS_FRAMING_UNLISTED_SENTENCE_H
#define VELAGNSS_FRAMING_UNLISTED_SENTENCE_H

namespace velagnss::framing {

inline constexpr unsigned int kShortestSentence = 7;    // "$A,*hh" and a line end
inline constexpr unsigned int kLongestSentence = 1024;  // well above the 82 of the standard: receivers exceed it
inline constexpr unsigned char kEncapsulatedStart = '!';

// Whether the `held` (1 or more) bytes begin a sentence: "$" or "!", capital letters or digits, and a comma. Only the
// first kShortestSentence bytes are looked at, so the answer is the same however many more of them have arrived.
bool BeginsSentence(const unsigned char* bytes, unsigned int held);

enum class eSentence { NoSentence, BadSum, Checked };

// Judges a line: such a beginning, no control character before the line end that is its last byte, and "*hh" directly
// before that, with digits of either case.
eSentence JudgeSentence(const unsigned char* bytes, unsigned int length);

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_UNLISTED_SENTENCE_H
