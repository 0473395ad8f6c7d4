// The NMEA 0183 sentences beyond the eight of NmeaSentences.h, which have records of their own, found by their
// formatter or by their record. Internal.
//
// No least number of fields is asked for: these sentences have lost and gained trailing fields over the versions of the
// standard, and a sentence that ends early leaves the rest empty.
#ifndef VELAGNSS_TEXTPROTO_NMEA_MORE_SENTENCES_H
#define VELAGNSS_TEXTPROTO_NMEA_MORE_SENTENCES_H

#include <string_view>

#include "textproto/NmeaMoreRecords.h"
#include "textproto/SentenceText.h"

namespace velagnss::textproto {

// Decodes a text from "$" up to its "*", whose address has five characters, into its record. 0 or 11.
using t_MoreDecoder = unsigned int (*)(std::string_view text, NmeaRecord& record, TimeDigits digits);

// Null for a formatter without a record.
t_MoreDecoder FindMoreDecoder(std::string_view formatter);

// Whether each character may be in an address.
bool IsAddress(std::string_view text);

// Whether a text may be part of a sentence: no control characters, no asterisk.
bool IsSentenceText(std::string_view text);

// Appends "$", address and fields to an empty text. 0, 8, 9, or 5 for a record of no such sentence.
[[nodiscard]] unsigned int AppendMoreSentence(C_SentenceText& sentence, const NmeaRecord& record);

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_NMEA_MORE_SENTENCES_H
