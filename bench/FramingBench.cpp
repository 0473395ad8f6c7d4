// Framing: bytes a second through the recognizer, beside memcpy of the same bytes in the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace {

constexpr std::size_t kStreamBytes = std::size_t{32} << 20;

using t_Bytes = std::vector<unsigned char>;

t_Bytes Repeated(const std::string& unit) {
  t_Bytes bytes;
  while (bytes.size() < kStreamBytes) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

std::string Sample() {
  std::ifstream file(VELAGNSS_SAMPLE, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Only the lines of the sample that are NMEA sentences of the eight decodable kinds.
std::string Sentences() {
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
      if (result != eRecFrameComplete || message.protocol != C_RawDataMessage::eNMEA0183) continue;
      kept.append(reinterpret_cast<const char*>(message.data), message.length);
      kept += '\n';
    }
  }
  return kept;
}

// Feeds the stream in pieces and hands each frame on; returns the number of frames.
template <class OnFrame>
std::size_t Pump(const t_Bytes& stream, std::size_t piece, OnFrame onFrame) {
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, true);
  recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
  recognizer.SetPatientSearch(true);
  t_Bytes buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
  std::size_t frames = 0;
  for (std::size_t at = 0; at < stream.size();) {
    const std::size_t count = std::min({piece, stream.size() - at, std::size_t{recognizer.GetFreeSpace()}});
    auto result = recognizer.DoRecognition(&stream[at], static_cast<unsigned short>(count), message);
    for (; result != eRecNoNewData; result = recognizer.DoRecognition(nullptr, 0, message)) {
      if (result != eRecFrameComplete) continue;
      ++frames;
      onFrame(message);
    }
    at += count;
  }
  return frames;
}

void Framing(benchmark::State& state, const std::string& unit) {
  const t_Bytes stream = Repeated(unit);
  std::size_t frames = 0;
  for (auto _ : state) {
    frames += Pump(stream, static_cast<std::size_t>(state.range(0)), [](const C_RawDataMessage&) {});
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
  state.counters["frames/s"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kIsRate);
}

void FramingAndDecoding(benchmark::State& state) {
  const t_Bytes stream = Repeated(Sentences());
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

void Memcpy(benchmark::State& state) {
  const t_Bytes stream = Repeated(Sample());
  t_Bytes piece(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (std::size_t at = 0; at + piece.size() <= stream.size(); at += piece.size()) {
      std::memcpy(piece.data(), &stream[at], piece.size());
      benchmark::DoNotOptimize(piece.data());
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}

BENCHMARK(Memcpy)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Mixed, Sample())->Arg(1)->Arg(32)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Nmea, Sentences())->Arg(1024);
BENCHMARK(FramingAndDecoding)->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Dollar, "$")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_DollarGreater, "$>")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Gsa, "$GPGSA,")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Raw, "$PKVN,RAW,")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Block71, std::string("$BIN\x47\x00\xC0\x01", 8))->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Rtcm, "\xD3\x03\xFF\x3E")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_Jrox, "$JROX,")->Arg(1024);
BENCHMARK_CAPTURE(Framing, Hostile_SiteRecord, "$>JSITERECORD")->Arg(1024);

}  // namespace

BENCHMARK_MAIN();
