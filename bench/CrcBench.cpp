// CRC-24Q by size: as the library chooses, each of its two ways, one table look-up per byte, and a plain copy.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "framing/CRC24.h"
#include "framing/Crc24Sums.h"

namespace {

std::vector<unsigned char> Bytes(benchmark::State& state) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)));
  unsigned int noise = 1;
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>((noise = noise * 1664525 + 1013904223) >> 24);
  return bytes;
}

// Runs `work` over the same bytes again and again; one byte changes, so that no sum is computed once for all.
template <class Work>
void Run(benchmark::State& state, Work work) {
  std::vector<unsigned char> bytes = Bytes(state);
  for (auto _ : state) {
    ++bytes[0];
    benchmark::DoNotOptimize(work(bytes));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Crc24(benchmark::State& state) {
  Run(state, [](const std::vector<unsigned char>& bytes) {
    return C_CRC24::ComputeCRC(bytes.data(), static_cast<unsigned short>(bytes.size()));
  });
}

template <unsigned int (*kSum)(const unsigned char*, std::size_t)>
void Crc24By(benchmark::State& state) {
  Run(state, [](const std::vector<unsigned char>& bytes) { return kSum(bytes.data(), bytes.size()); });
}

void Crc24Bytewise(benchmark::State& state) {
  Run(state, [](const std::vector<unsigned char>& bytes) {
    unsigned int crc = 0;
    for (const unsigned char byte : bytes)
      crc = ((crc << 8) ^ C_CRC24::mu32CRC_Table[((crc >> 16) ^ byte) & 0xFF]) & 0xFFFFFF;
    return crc;
  });
}

void Memcpy(benchmark::State& state) {
  std::vector<unsigned char> copy(static_cast<std::size_t>(state.range(0)));
  Run(state, [&copy](const std::vector<unsigned char>& bytes) {
    std::memcpy(copy.data(), bytes.data(), bytes.size());
    benchmark::ClobberMemory();
    return copy[0];
  });
}

// 16 bytes to the longest run there is, 64 KB less one.
void Sizes(benchmark::internal::Benchmark* bench) {
  for (const int size : {16, 64, 256, 1024, 4096, 16384, 65535}) bench->Arg(size);
}

BENCHMARK(Crc24)->Apply(Sizes);
BENCHMARK(Crc24By<velagnss::framing::SumBySlices>)->Name("Crc24Slices")->Apply(Sizes);
BENCHMARK(Crc24By<velagnss::framing::SumByProducts>)->Name("Crc24Products")->Apply(Sizes);  // slices where it must
BENCHMARK(Crc24Bytewise)->Apply(Sizes);
BENCHMARK(Memcpy)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
