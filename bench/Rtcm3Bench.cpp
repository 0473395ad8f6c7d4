// Decoding RTCM 3 messages: an MSM7 of 30 satellites, as many cells as a message can have, and each ephemeris.
#include <benchmark/benchmark.h>

#include <string>

#include "rtcm3/Rtcm3Decoder.h"
#include "tests/Rtcm3Bits.h"

namespace {

// Bits that are neither all alike nor a marker.
void PutNoise(Rtcm3Bits& bits, unsigned int count) {
  unsigned int noise = count;
  for (; count > 0; --count) {
    noise = noise * 1664525 + 1013904223;
    bits.Put(noise >> 31, 1);
  }
}

std::string Msm7(unsigned int number, unsigned int satellites, unsigned int signals) {
  Rtcm3Bits bits{{number, 12}, {1, 12}, {345600000, 30}, {0, 19}};
  bits.Put(-1, satellites).Put(0, 64 - satellites);
  bits.Put(0, 1).Put(-1, signals).Put(0, 31 - signals);
  bits.Put(-1, satellites * signals);
  PutNoise(bits, satellites * 36 + satellites * signals * 80);
  return RtcmFrame(bits.Payload());
}

std::string Ephemeris(unsigned int number, unsigned int payloadBytes) {
  Rtcm3Bits bits{{number, 12}, {5, number == 1044 ? 4U : 6U}};
  PutNoise(bits, 8 * payloadBytes - static_cast<unsigned int>(bits.Size()));
  return RtcmFrame(bits.Payload());
}

void Decode(benchmark::State& state, const std::string& frame) {
  velagnss::Rtcm3Decoder decoder;
  decoder.SeedTime(C_GnssTime(2314, 345600.0, ALGO::GNSS_GPS));
  const auto* const bytes = reinterpret_cast<const unsigned char*>(frame.data());
  for (auto _ : state) {
    const velagnss::Rtcm3Decoded& decoded = decoder.Decode(bytes, frame.size());
    if (decoded.result != 0) state.SkipWithError("refused");
    benchmark::DoNotOptimize(&decoded);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(frame.size()));
}

BENCHMARK_CAPTURE(Decode, Msm7Gps30x2, Msm7(1077, 30, 2));
BENCHMARK_CAPTURE(Decode, Msm7Glonass24x2, Msm7(1087, 24, 2));
BENCHMARK_CAPTURE(Decode, Msm7Beidou16x4, Msm7(1127, 16, 4));
BENCHMARK_CAPTURE(Decode, Gps1019, Ephemeris(1019, 61));
BENCHMARK_CAPTURE(Decode, Glonass1020, Ephemeris(1020, 45));
BENCHMARK_CAPTURE(Decode, Navic1041, Ephemeris(1041, 61));
BENCHMARK_CAPTURE(Decode, Beidou1042, Ephemeris(1042, 64));
BENCHMARK_CAPTURE(Decode, Qzss1044, Ephemeris(1044, 61));
BENCHMARK_CAPTURE(Decode, GalileoFnav1045, Ephemeris(1045, 62));
BENCHMARK_CAPTURE(Decode, GalileoInav1046, Ephemeris(1046, 63));
BENCHMARK_CAPTURE(Decode, Station1005, Ephemeris(1005, 19));
BENCHMARK_CAPTURE(Decode, NotDecoded4072, Ephemeris(4072, 64));

}  // namespace

BENCHMARK_MAIN();
