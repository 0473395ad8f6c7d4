// Positions from a receiver's sentences as a track.
#ifndef VELAGNSS_APPS_TRACK_CONVERTER_H
#define VELAGNSS_APPS_TRACK_CONVERTER_H

#include <memory>

#include "apps/velagnss/pipeline/TextConsumer.h"
#include "apps/velagnss/track/TrackFormat.h"

namespace Host {

// The track of the inputs, each at least one segment, in `format`. Without a single position the document is valid and
// empty.
std::unique_ptr<C_TextConsumer> MakeTrackConverter(std::unique_ptr<C_TrackFormat> format);

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_CONVERTER_H
