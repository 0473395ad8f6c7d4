// Framing: bytes a second through the recognizer, beside what the machine does with the same bytes in the same run:
// copying them, searching them for one byte, scanning them sixteen at a time, and framing them with a bare loop.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "bench/BareFramer.h"
#include "bench/Pump.h"
#include "framing/FrameRecognizer.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace {

constexpr std::size_t kStreamBytes = std::size_t{32} << 20;

std::string Sample() {
  std::ifstream file(VELAGNSS_SAMPLE, std::ios::binary);
  if (!file)
    throw std::runtime_error("cannot read " VELAGNSS_SAMPLE);  // no number of repeats makes a stream of nothing
  return {std::istreambuf_iterator<char>(file), {}};
}

using eProtocols = C_RawDataMessage::eProtocols;

// Only the frames of these protocols of the sample, sentences with a whole line end; before each one, noise of random
// length up to `noise` bytes.
std::string OnlyOf(std::initializer_list<eProtocols> protocols, unsigned int noise = 0) {
  std::mt19937 random(1);
  const std::string all = Sample();
  std::string kept;
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, false);
  t_Bytes buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
  for (std::size_t at = 0; at < all.size(); at += 512) {
    const auto* data = reinterpret_cast<const unsigned char*>(all.data() + at);
    const auto count = static_cast<unsigned short>(std::min<std::size_t>(512, all.size() - at));
    auto result = recognizer.DoRecognition(data, count, message);
    for (; result != eRecNoNewData; result = recognizer.DoRecognition(nullptr, 0, message)) {
      const bool isKept = std::find(protocols.begin(), protocols.end(), message.protocol) != protocols.end();
      if (result != eRecFrameComplete || !isKept) continue;
      for (auto left = random() % (noise + 1); left > 0; --left) kept += static_cast<char>(random());
      kept.append(reinterpret_cast<const char*>(message.data), message.length);
      if (message.protocol == C_RawDataMessage::eNMEA0183) kept += '\n';
    }
  }
  return kept;
}

std::string Sentences() { return OnlyOf({C_RawDataMessage::eNMEA0183}); }
std::string Rtcm3() { return OnlyOf({C_RawDataMessage::eRTCM3_x}); }
// What the bare loop finds all frames of; and the same with five times as much noise.
std::string Both() { return OnlyOf({C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}); }
std::string BothInNoise() { return OnlyOf({C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}, 1000); }

// The sample with one bit in 2000 turned over.
std::string Noisy() {
  std::string bytes = Sample();
  std::mt19937 random(1);
  for (std::size_t at = random() % 500; at < bytes.size(); at += 1 + random() % 500) {
    bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8);
  }
  return bytes;
}

std::string Noise() {
  std::string bytes(std::size_t{1} << 20, '\0');
  std::mt19937 random(1);
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

void Framing(benchmark::State& state, const std::string& unit, bool withUnlisted = false) {
  const t_Bytes stream = Repeated(unit, kStreamBytes);
  const auto piece = static_cast<std::size_t>(state.range(0));
  const S_Search search = {.withUnlisted = withUnlisted};
  std::size_t frames = 0;
  for (auto _ : state)
    frames += Pump(
        stream, piece, [](const C_RawDataMessage&) {}, search);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
  state.counters["frames/s"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
}

// The same by the bare loop.
void BareLoop(benchmark::State& state, const std::string& unit) {
  if (!BareFramer::CanRun()) {
    state.SkipWithError("the processor lacks AVX2");
    return;
  }
  const t_Bytes stream = Repeated(unit, kStreamBytes);
  std::size_t frames = 0;
  for (auto _ : state)
    frames += BareFramer::Pump(stream.data(), stream.size(), static_cast<std::size_t>(state.range(0)));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
  state.counters["frames/s"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
}

void FramingAndDecoding(benchmark::State& state) {
  const t_Bytes stream = Repeated(Sentences(), kStreamBytes);
  C_NMEA_EncodeDecode nmea;
  U_EcdDcdData record;
  std::size_t sentences = 0;
  for (auto _ : state) {
    sentences += Pump(stream, static_cast<std::size_t>(state.range(0)), [&](C_RawDataMessage& message) {
      const auto type = static_cast<C_RawDataMessage::eNMEA0183Messages>(message.messageType);
      benchmark::DoNotOptimize(nmea.Decode(message.data, message.length, type, record));
    });
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
  state.counters["sentences/s"] = benchmark::Counter(static_cast<double>(sentences), benchmark::Counter::kIsRate);
}

// What the machine itself does with the stream, piece by piece.
template <class OnPiece>
void Limit(benchmark::State& state, OnPiece onPiece) {
  const t_Bytes stream = Repeated(Sample(), kStreamBytes);
  const auto piece = static_cast<std::size_t>(state.range(0));
  for (auto _ : state) {
    for (std::size_t at = 0; at + piece <= stream.size(); at += piece) onPiece(&stream[at], piece);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}

void Memcpy(benchmark::State& state) {
  t_Bytes copy(static_cast<std::size_t>(state.range(0)));
  Limit(state, [&](const unsigned char* bytes, std::size_t count) {
    std::memcpy(copy.data(), bytes, count);
    benchmark::DoNotOptimize(copy.data());
  });
}

// Every "$" of the stream.
void Memchr(benchmark::State& state) {
  Limit(state, [](const unsigned char* bytes, std::size_t count) {
    const unsigned char* const end = bytes + count;
    for (const void* found = bytes; found != nullptr && bytes != end; ++bytes) {
      found = std::memchr(bytes, '$', static_cast<std::size_t>(end - bytes));
      benchmark::DoNotOptimize(found);
      if (found != nullptr) bytes = static_cast<const unsigned char*>(found);
    }
  });
}

#ifdef __SSE2__
// How many bytes are below 32, sixteen at a time.
void VectorScan(benchmark::State& state) {
  const __m128i greatest = _mm_set1_epi8(31);
  Limit(state, [&](const unsigned char* bytes, std::size_t count) {
    int below = 0;
    for (std::size_t i = 0; i + sizeof(__m128i) <= count; i += sizeof(__m128i)) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
      const __m128i marks = _mm_cmpeq_epi8(_mm_subs_epu8(block, greatest), _mm_setzero_si128());
      below += __builtin_popcount(static_cast<unsigned int>(_mm_movemask_epi8(marks)));
    }
    benchmark::DoNotOptimize(below);
  });
}
BENCHMARK(VectorScan)->Arg(1024);
#endif

BENCHMARK(Memchr)->Arg(1024);
BENCHMARK(Memcpy)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Mixed, Sample())->Arg(1)->Arg(8)->Arg(32)->Arg(128)->Arg(1024)->Arg(16384);
BENCHMARK_CAPTURE(Framing, MixedUnlisted, Sample(), true)->Arg(1)->Arg(8)->Arg(32)->Arg(128)->Arg(1024)->Arg(16384);
// Rows of both, for the ratio.
BENCHMARK_CAPTURE(Framing, Nmea, Sentences())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(BareLoop, Nmea, Sentences())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Rtcm3, Rtcm3())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(BareLoop, Rtcm3, Rtcm3())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Both, Both())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(BareLoop, Both, Both())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, BothInNoise, BothInNoise())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(BareLoop, BothInNoise, BothInNoise())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Noisy, Noisy())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Noise, Noise())->Arg(1024);
BENCHMARK_CAPTURE(Framing, NoisyUnlisted, Noisy(), true)->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, NoiseUnlisted, Noise(), true)->Arg(1024);
BENCHMARK(FramingAndDecoding)->Arg(1024);
// Streams of nothing but starts, or of what must be looked at over and over unless it is remembered. Time per byte must
// not grow with the length.
struct S_HostileStream {
  const char* name;
  std::string_view unit;
  bool withAcknowledgements = false;
};

using namespace std::string_view_literals;
constexpr S_HostileStream kHostileStreams[] = {
    {"Dollar", "$"sv},
    {"Reply", "$>"sv},
    {"Acknowledgement", "$>"sv, true},
    {"Gsa", "$GPGSA,"sv},
    {"Raw", "$PKVN,RAW,"sv},
    {"RawLoneCr", "$PKVN,RAW,\r\r\r\r\r\r\r\r"sv},
    {"Router", "$PKVN,ARN_ROUTER,"sv},
    {"Block71", "$BIN\x47\x00\xC0\x01"sv},
    {"Rtcm", "\xD3\x03\xFF\x3E"sv},
    {"RtcmTwice", "\xD3\x03\xD3\x03\xFF\x3E"sv},
    {"Preamble", "\xD3"sv},
    {"Slowest", "\xD3\x03\xD3\x03\xFF\x3E\xD3\x03\xD3\x03\xFF\x3E$>$>$>$>$>$>$>$>"sv,
     true},  // found by SlowestStream.cpp
    {"Jrox", "$JROX,"sv},
    {"SiteRecord", "$>JSITERECORD"sv},
};

void Hostile(benchmark::State& state, const S_HostileStream& hostile, bool withUnlisted) {
  const t_Bytes stream = Repeated(hostile.unit, static_cast<std::size_t>(state.range(0)));
  const S_Search search = {hostile.withAcknowledgements, withUnlisted};
  for (auto _ : state)
    Pump(
        stream, static_cast<std::size_t>(state.range(1)), [](const C_RawDataMessage&) {}, search);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}

// Bytes of the stream, bytes per call.
void RegisterHostile() {
  for (const S_HostileStream& hostile : kHostileStreams) {
    for (const bool withUnlisted : {false, true}) {
      const std::string name = std::string(withUnlisted ? "HostileUnlisted/" : "Hostile/") + hostile.name;
      benchmark::RegisterBenchmark(name.c_str(), Hostile, hostile, withUnlisted)
          ->Args({2 << 20, 1024})
          ->Args({32 << 20, 1024})
          ->Args({2 << 20, 1});
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  RegisterHostile();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
