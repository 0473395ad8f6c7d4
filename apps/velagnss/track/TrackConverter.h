// Positions out of a receiver's sentences, and the sentences themselves: formats of `velagnss convert`.
#ifndef VELAGNSS_APPS_TRACK_CONVERTER_H
#define VELAGNSS_APPS_TRACK_CONVERTER_H

#include <memory>

#include "apps/velagnss/pipeline/Converter.h"
#include "apps/velagnss/track/TrackFormat.h"

namespace Host {

// The track of the inputs, each a segment of its own at least, in `format`. Without a single position the document is
// valid and empty.
std::unique_ptr<C_Converter> MakeTrackConverter(std::unique_ptr<C_TrackFormat> format);

// The checked NMEA 0183 sentences as they are, whether they can be decoded or not, each ended by CR LF.
std::unique_ptr<C_Converter> MakeSentenceConverter();

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_CONVERTER_H
