// The number by which JSON objects name the reason of a false start.
#ifndef VELAGNSS_APPS_REJECTION_NUMBER_H
#define VELAGNSS_APPS_REJECTION_NUMBER_H

#include "framing/FrameRecognizer.h"
#include "stream/FrameReader.h"

namespace Host {

// That of the frame search.
constexpr unsigned int RejectionNumber(velagnss::RejectedStart::Reason reason) {
  return reason == velagnss::RejectedStart::Reason::Checksum ? eRecChecksumError : eRecFrameRejected;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_REJECTION_NUMBER_H
