// The limit that framing is measured against: a loop for NMEA 0183 and RTCM 3 that does nothing but find, check and
// copy frames. No queue with a policy, no counters, no results, no other protocols, and no unusual case.
#ifndef VELAGNSS_BENCH_BARE_FRAMER_H
#define VELAGNSS_BENCH_BARE_FRAMER_H

#include <cstddef>

namespace BareFramer {

// Whether the processor has what the loop is compiled for.
bool CanRun();

// Takes the stream in pieces as a host does: copies each after what is left, copies every frame out twice, as a
// recognizer with a work buffer would, and moves the unfinished rest to the front. Returns the number of frames.
std::size_t Pump(const unsigned char* stream, std::size_t count, std::size_t piece);

}  // namespace BareFramer

#endif  // VELAGNSS_BENCH_BARE_FRAMER_H
