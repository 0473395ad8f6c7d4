// Frames of reference stations: observations of one signal, the date, the station's position.
#ifndef VELAGNSS_TESTS_OBSERVATION_FRAMES_H
#define VELAGNSS_TESTS_OBSERVATION_FRAMES_H

#include <cstdint>
#include <string>
#include <vector>

#include "tests/Rtcm3Bits.h"

inline constexpr std::uint32_t kNoon = 345600000 + 43200000;  // ms of the week: a Thursday, 16 May 2024 in week 2314

struct S_Cell {
  unsigned int satellite = 5;
  unsigned int lock = 600;  // indicator of MSM7: more than an hour
  unsigned int half = 0;
  int phase = 0;           // 2^-31 ms, beside the rough range
  int channel = 5;         // of GLONASS, as sent: plus 7
  int strength = 45 * 16;  // 1/16 dB-Hz
};

// MSM7 and MSM6 of one signal, every satellite at 75.5 light-milliseconds: 22634330.579 m, 118944210 cycles of
// 1575.42 MHz. The range grows by -1000 m/s: a Doppler of 5255.035 Hz. 45 dB-Hz.
inline std::string Msm(unsigned int number, std::uint32_t time, const std::vector<S_Cell>& cells,
                       unsigned int signal = 2, unsigned int station = 7) {
  const bool isGlonass = number / 10 == 108;
  const bool hasRate = number % 10 == 7;
  Rtcm3Bits bits{{number, 12}, {station, 12}};
  if (isGlonass) {  // Moscow time, leap seconds in
    const std::uint32_t moscow = time + 10800000 - 18000;
    bits.Put(moscow / 86400000, 3).Put(moscow % 86400000, 27);
  } else {
    bits.Put(time, 30);
  }
  std::uint64_t mask = 0;
  for (const S_Cell& cell : cells) mask |= 1ULL << (64 - cell.satellite);
  bits.Put(0, 1 + 18).Put(static_cast<std::int64_t>(mask), 64).Put(1U << (32 - signal), 32);
  bits.Put(-1, static_cast<unsigned int>(cells.size()));
  const auto column = [&](unsigned int width, auto value) {
    for (const S_Cell& cell : cells) bits.Put(value(cell), width);
  };
  column(8, [](const S_Cell&) { return 75; });
  if (hasRate) column(4, [](const S_Cell& c) { return c.channel; });
  column(10, [](const S_Cell&) { return 512; });
  if (hasRate) column(14, [](const S_Cell&) { return -1000; });
  column(20, [](const S_Cell&) { return 0; });
  column(24, [](const S_Cell& c) { return c.phase; });
  column(10, [](const S_Cell& c) { return static_cast<int>(c.lock); });
  column(1, [](const S_Cell& c) { return static_cast<int>(c.half); });
  column(10, [](const S_Cell& c) { return c.strength; });
  if (hasRate) column(15, [](const S_Cell&) { return 0; });
  return RtcmFrame(bits.Payload());
}

// 1013: 12:00:00 UTC of a day, 18 leap seconds.
inline std::string Date(unsigned int mjd = 60446) {
  return RtcmFrame(Rtcm3Bits{{1013, 12}, {7, 12}, {mjd, 16}, {43200, 17}, {0, 5}, {18, 8}}.Payload());
}
inline std::string Position(std::int64_t x = 63781370000, unsigned int station = 7) {
  Rtcm3Bits bits{{1006, 12}, {station, 12}, {0, 6 + 4}};
  return RtcmFrame(bits.Put({{x, 38}, {0, 2}, {1, 38}, {0, 2}, {-2, 38}, {15000, 16}}).Payload());
}

#endif  // VELAGNSS_TESTS_OBSERVATION_FRAMES_H
