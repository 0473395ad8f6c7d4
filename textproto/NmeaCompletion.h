// Short sentences and those of earlier NMEA versions, made whole, so that the decoders read them without loss.
// Internal.
#ifndef VELAGNSS_TEXTPROTO_NMEA_COMPLETION_H
#define VELAGNSS_TEXTPROTO_NMEA_COMPLETION_H

#include <string_view>

#include "textproto/NmeaSentences.h"

namespace velagnss::textproto {

// A sentence of one of the eight types whose checksum is right.
struct S_CheckedText {
  std::string_view text;  // up to the "*" of its checksum
  t_SentenceType type;
  const S_Completion* completion;
};

// Looks the sentence up and sums it. 0, 2 (none of the eight types) or 4 (checksum absent or wrong).
[[nodiscard]] unsigned int CheckSentence(std::string_view sentence, S_CheckedText& checked);

// Makes the fields of the text those of a whole sentence. `rest` gets what follows them, if there are more than any
// sentence has. 0, or 9 when the whole sentence would be longer than a decoder reads (1023 characters).
[[nodiscard]] unsigned int CompleteFields(const S_CheckedText& checked, t_NmeaFields& fields, std::string_view& rest);

// What single types need, for their tables.
// GSV may end after its last satellite, with the signal id next to it: that is moved to its place.
void ArrangeGsv(t_NmeaFields& fields);
// The signal id is a hexadecimal digit since NMEA 0183 4.11; the decoder reads decimal.
void AmendGsv(t_NmeaFields& fields);
// An empty direction of the magnetic variation becomes "E": left empty it would make the longitude not available.
void AmendRmc(t_NmeaFields& fields);
// VTG of old receivers has four numbers and no units.
void ArrangeVtg(t_NmeaFields& fields);

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_NMEA_COMPLETION_H
