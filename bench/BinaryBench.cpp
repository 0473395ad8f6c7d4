// Decoding binary messages: each ephemeris, one message that is handed out raw, and beside them the clearing of the
// record that every decode begins with.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "binproto/VelaBin_Decode.h"

namespace {

// A frame whose data begin with `start` and go on with noise.
std::vector<unsigned char> Frame(unsigned int number, std::size_t dataLength, const std::string& start) {
  std::vector<unsigned char> frame = {'$', 'B', 'I', 'N'};
  for (const std::size_t value : {std::size_t{number}, dataLength}) {
    frame.push_back(static_cast<unsigned char>(value));
    frame.push_back(static_cast<unsigned char>(value >> 8));
  }
  unsigned int noise = number, sum = 0;
  for (std::size_t i = 0; i < dataLength; ++i) {
    noise = noise * 1664525 + 1013904223;
    frame.push_back(static_cast<unsigned char>(i < start.size() ? start[i] : noise >> 24));
    sum += frame.back();
  }
  frame.push_back(static_cast<unsigned char>(sum));
  frame.push_back(static_cast<unsigned char>(sum >> 8));
  return frame;
}

void Decode(benchmark::State& state, std::vector<unsigned char> frame) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(2300, 345600.0, ALGO::GNSS_GPS);
  const auto out = std::make_unique<U_VelaBIN_EcdDcdData>();
  const auto length = static_cast<unsigned short>(frame.size());
  unsigned short number = 0;
  for (auto _ : state) {
    if (decoder.Decode(frame.data(), length, number, *out) != 0) state.SkipWithError("refused");
    benchmark::DoNotOptimize(out.get());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(state.iterations() * length);
}

void ClearingTheRecord(benchmark::State& state) {
  const auto out = std::make_unique<U_VelaBIN_EcdDcdData>();
  for (auto _ : state) {
    std::memset(out.get(), 0, sizeof *out);
    benchmark::DoNotOptimize(out.get());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}

// The same message without the frame's check, the clearing and the count: what the conversion itself takes.
void DirectGps(benchmark::State& state) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(2300, 345600.0, ALGO::GNSS_GPS);
  std::vector<unsigned char> frame = Frame(95, 128, std::string("\x05\0", 2));
  const auto length = static_cast<unsigned short>(frame.size());
  S_IFKeplerEphRec record;
  for (auto _ : state) {
    benchmark::DoNotOptimize(decoder.Decode_Bin95(frame.data(), length, record, false));
    benchmark::DoNotOptimize(record);
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(ClearingTheRecord);
BENCHMARK_CAPTURE(Decode, Qzss25, Frame(25, 128, std::string("\xC1\0", 2)));
BENCHMARK_CAPTURE(Decode, Gps95, Frame(95, 128, std::string("\x05\0", 2)));
BENCHMARK_CAPTURE(Decode, Glonass65, Frame(65, 68, "\x05\x09"));
BENCHMARK_CAPTURE(Decode, Sbas93, Frame(93, 56, ""));
BENCHMARK_CAPTURE(Decode, Raw1, Frame(1, 52, ""));
BENCHMARK_CAPTURE(Decode, Raw180, Frame(180, 232, ""));
BENCHMARK(DirectGps);

}  // namespace

BENCHMARK_MAIN();
