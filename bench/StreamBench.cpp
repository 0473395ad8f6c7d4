// The layer for embedding programs: bytes a second through the frame reader alone and with the decoder after it.
// framing_bench has the same streams through the recognizer itself.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "stream/RecordDecoder.h"

namespace {

using velagnss::Frame;
using velagnss::FrameReader;

std::string Repeated(const std::string& unit) {
  constexpr std::size_t kStreamBytes = std::size_t{8} << 20;
  std::string bytes;
  while (bytes.size() < kStreamBytes) bytes += unit;
  return bytes;
}

// Hands every frame of the stream to `take`, or every item where events are asked for.
template <class Take>
void ReadAll(FrameReader& reader, const std::string& stream, std::size_t piece, const Take& take) {
  for (std::size_t at = 0; at < stream.size(); at += piece) {
    reader.Feed(reinterpret_cast<const unsigned char*>(&stream[at]), std::min(piece, stream.size() - at));
    take(reader);
  }
  reader.Finish();
  take(reader);
  reader.Restart();
}

std::string Sample() {
  std::ifstream file(VELAGNSS_SAMPLE, std::ios::binary);
  if (!file)
    throw std::runtime_error("cannot read " VELAGNSS_SAMPLE);  // no number of repeats makes a stream of nothing
  return {std::istreambuf_iterator<char>(file), {}};
}

bool IsMsm7(const Frame& frame) {
  return frame.protocol == C_RawDataMessage::eRTCM3_x && frame.message % 10 == 7 && frame.message >= 1077 &&
         frame.message <= 1137;
}

// The sample's frames for which `isWanted` holds, each with a whole line end.
template <class Wanted>
std::string OnlyThose(const Wanted& isWanted) {
  std::string kept;
  FrameReader reader;
  ReadAll(reader, Sample(), 4096, [&](FrameReader& source) {
    while (const Frame* frame = source.NextFrame())
      if (isWanted(*frame)) kept.append(frame->data, frame->data + frame->length) += '\n';
  });
  return kept;
}

void Reading(benchmark::State& state, const std::string& unit, bool withEvents) {
  const std::string stream = Repeated(unit);
  FrameReader reader;
  reader.ReportEvents(withEvents);
  for (auto _ : state) {
    ReadAll(reader, stream, static_cast<std::size_t>(state.range(0)), [](FrameReader& source) {
      while (!std::holds_alternative<std::monostate>(source.Next())) {
      }
    });
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}

void Decoding(benchmark::State& state, const std::string& unit) {
  const std::string stream = Repeated(unit);
  FrameReader reader;
  velagnss::RecordDecoder decoder;
  std::size_t frames = 0;
  for (auto _ : state) {
    ReadAll(reader, stream, static_cast<std::size_t>(state.range(0)), [&](FrameReader& source) {
      while (const Frame* frame = source.NextFrame()) {
        benchmark::DoNotOptimize(decoder.Decode(*frame));
        ++frames;
      }
    });
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
  state.counters["frames/s"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mixed = Sample();
  const std::string sentences =
      OnlyThose([](const Frame& frame) { return frame.protocol == C_RawDataMessage::eNMEA0183; });
  const std::string observations = OnlyThose(&IsMsm7);
  benchmark::RegisterBenchmark("ReadMixed", Reading, mixed, false)->Arg(1)->Arg(32)->Arg(1024)->Arg(1 << 18);
  benchmark::RegisterBenchmark("ReadMixedAndEvents", Reading, mixed, true)->Arg(1 << 18);
  benchmark::RegisterBenchmark("ReadSentences", Reading, sentences, false)->Arg(1024);
  benchmark::RegisterBenchmark("DecodeMixed", Decoding, mixed)->Arg(1 << 18);
  benchmark::RegisterBenchmark("DecodeSentences", Decoding, sentences)->Arg(1024);
  benchmark::RegisterBenchmark("DecodeMsm7", Decoding, observations)->Arg(1 << 18);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
