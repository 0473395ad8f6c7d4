// A sentence from the recognizer to its record in one go, for the layer above. Internal.
#ifndef VELAGNSS_TEXTPROTO_CHECKED_SENTENCE_H
#define VELAGNSS_TEXTPROTO_CHECKED_SENTENCE_H

#include "framing/RawDataMessage.h"
#include "textproto/NMEA_Records.h"
#include "textproto/NmeaMoreRecords.h"

namespace velagnss::textproto {

// Decodes one sentence of the eight types as `C_NMEA_EncodeDecode::MakeDecodable` and then `Decode` would, with the
// same results and, unless `digits` says otherwise, the same bytes in `record`, but without printing the whole sentence
// in between: the text is summed, looked up and split once. `type` is what the recognizer found; with any other than
// the sentence's own the result is that of `Decode`.
//
// `record` is zero-filled first; after a failure of `MakeDecodable` it stays so. `variationLetter` gets the direction
// of the magnetic variation as sent, which the record of RMC does not keep: 'E' or 'W' of an RMC that is decoded and
// has one of them, otherwise NUL.
//
//   0 decoded; 1 null sentence; 2 none of the eight types, or not of the type given; 4 checksum absent or wrong;
//   5 a `type` that is not decoded; 8, 11 as `Decode`; 9 more than 1023 characters when whole
[[nodiscard]] unsigned int DecodeCheckedSentence(const unsigned char* sentence, unsigned short length,
                                                 C_RawDataMessage::eNMEA0183Messages type, U_EcdDcdData& record,
                                                 char& variationLetter, TimeDigits digits = TimeDigits::Hundredths);

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_CHECKED_SENTENCE_H
