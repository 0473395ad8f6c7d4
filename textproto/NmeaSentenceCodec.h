// Any sentence of NMEA 0183 to a record, and back: 28 sentences with all their fields, every other one as text fields.
//
//   velagnss::NmeaRecord record;
//   if (velagnss::DecodeSentence(text, record) == eResultOk)
//     if (const auto* hdt = std::get_if<velagnss::HdtRecord>(&record)) Use(hdt->headingTrue);
//
// The address in the sentence decides what it is. `C_NMEA_EncodeDecode` does the same for eight sentences by a type
// that the caller gives. Nothing here allocates memory or keeps state.
#ifndef VELAGNSS_TEXTPROTO_NMEA_SENTENCE_CODEC_H
#define VELAGNSS_TEXTPROTO_NMEA_SENTENCE_CODEC_H

#include <cstddef>
#include <string_view>

#include "textproto/NmeaMoreRecords.h"
#include "velagnss_export.h"

namespace velagnss {

// The longest sentence, with CR LF.
inline constexpr std::size_t kMaxSentenceLength = 1024;

// Decodes one sentence: "$" or "!", an address of capital letters and digits, fields led by commas, "*" and the two
// digits of the checksum. CR LF may follow. A sentence may have fewer fields than the standard lists, and more, which
// are left out. A "$P..." sentence is proprietary. After a failure the record is an empty OtherSentence. The record's
// texts are views into `sentence`.
//
//   0 decoded; 1 null; 2 no address; 4 checksum absent or wrong; 20 longer than 1024 bytes;
//   11 a field that cannot be parsed, or a unit other than that of the standard
//   For GGA, GLL, GNS, GSA, GSV, RMC, VTG and ZDA also 8 and 9, as `C_NMEA_EncodeDecode::MakeDecodable` and `Decode`.
VELAGNSS_API unsigned int DecodeSentence(std::string_view sentence, NmeaRecord& record,
                                         TimeDigits digits = TimeDigits::Hundredths);

// Encodes a record as a sentence with its checksum, CR and LF, without a NUL. A value at its marker is an empty field,
// trailing ones included; numbers have the digits that read back as the same number, times those of `digits` and
// minutes of arc eight. After a failure nothing is written.
//
//   0 done; 1 null `out`; 2 not an address
//   9 more than 1018 characters before the checksum, or more than `capacity` in all
//   8 a value out of range: a text with a control character, a comma or an asterisk (TXT may have commas), a number
//     that is not finite, a time, latitude or longitude beyond its limits, a talker that is not two capital letters or
//     digits or begins with P
//   16 GNS with mode letters whose talker's second character is not "N"
VELAGNSS_API unsigned int EncodeSentence(const NmeaRecord& record, char* out, std::size_t capacity, std::size_t& length,
                                         TimeDigits digits = TimeDigits::Hundredths);

// What a sentence is called: "GBS" for "$GPGBS,...", "VDM" for "!AIVDM,...", all of the address of a proprietary
// sentence, "PGRME". Empty if there is no address. The checksum is not looked at.
VELAGNSS_API std::string_view SentenceName(std::string_view sentence);

}  // namespace velagnss

#endif  // VELAGNSS_TEXTPROTO_NMEA_SENTENCE_CODEC_H
