// The layer for embedding programs: bytes a second through the frame reader alone and with the decoder after it.
// framing_bench has the same streams through the recognizer itself.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
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

std::string Contents(const char* name) {
  std::ifstream file(name, std::ios::binary);
  // No number of repeats makes a stream of nothing.
  if (!file) throw std::runtime_error(std::string("cannot read ") + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Sample() { return Contents(VELAGNSS_SAMPLE); }

// What receivers in use send: one position a second with all that belongs to it, by NMEA 0183 2.3 (no system and signal
// ids, no navigation status, no more satellite fields than satellites) or by 4.11. The numbers change from second to
// second, so that the branches of a decoder cannot be learned.
class C_ReceiverSentences {
 public:
  std::string Make(unsigned int seconds) {
    for (unsigned int second = 0; second < seconds; ++second) AddEpoch(second, second % 2 == 0);
    return m_text;
  }

 private:
  void AddEpoch(unsigned int second, bool isOld) {
    const unsigned int time = 10000 * (second / 3600 % 24) + 100 * (second / 60 % 60) + second % 60;
    const double speed = Below(2000) / 100.0;
    const double course = Below(36000) / 100.0;
    char place[64];
    std::snprintf(place, sizeof place, isOld ? "4807.%04u,N,01131.%04u,E" : "4807.%05u,N,01131.%05u,E", Below(10000),
                  Below(10000));
    Add("GGA,%06u.00,%s,1,%02u,%.1f,%.1f,M,46.9,M,,", time, place, 4 + Below(9), 0.7 + Below(20) / 10.0,
        500 + Below(1000) / 10.0);
    Add(isOld ? "GLL,%s,%06u.00,A" : "GLL,%s,%06u.00,A,A", place, time);
    AddSatellites(isOld ? "" : ",1");
    Add("RMC,%06u.00,A,%s,%.3f,%.2f,180524,,%s", time, place, speed, course, isOld ? "" : ",A,V");
    Add("VTG,%.2f,T,,M,%.3f,N,%.3f,K%s", course, speed, 1.852 * speed, isOld ? "" : ",A");
    Add("ZDA,%06u.00,18,05,2024,00,00", time);
  }

  // GSA and GSV of the satellites in view; `id`: the last field, with its comma.
  void AddSatellites(const char* id) {
    const unsigned int inView = 8 + Below(6);
    std::string used;
    for (unsigned int i = 0; i < 12; ++i) used += i < inView - 4 ? "," + std::to_string(10 + Below(22)) : ",";
    Add("GSA,A,3%s,1.%u,0.%u,1.%u%s", used.c_str(), Below(10), 5 + Below(5), Below(10), id);
    for (unsigned int first = 0; first < inView; first += 4) {
      std::string satellites;
      for (unsigned int i = first; i < std::min(first + 4, inView); ++i) {
        char fields[32];
        const char* const form = Below(8) == 0 ? ",%02u,%02u,%03u," : ",%02u,%02u,%03u,%02u";
        std::snprintf(fields, sizeof fields, form, 1 + Below(32), Below(90), Below(360), 20 + Below(30));
        satellites += fields;
      }
      Add("GSV,%u,%u,%02u%s%s", (inView + 3) / 4, first / 4 + 1, inView, satellites.c_str(), id);
    }
  }

  [[gnu::format(printf, 2, 3)]] void Add(const char* format, ...) {
    char body[128];
    std::va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(body, sizeof body, format, values);
    va_end(values);
    unsigned int sum = 'G' ^ 'N';
    for (int i = 0; i < length; ++i) sum ^= static_cast<unsigned char>(body[i]);
    char end[8];
    std::snprintf(end, sizeof end, "*%02X\r\n", sum);
    m_text.append("$GN").append(body).append(end);
  }

  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

  std::mt19937 m_random;
  std::string m_text;
};

// VELAGNSS_CAPTURE names a file with the output of another receiver, to be measured in its place.
std::string ReceiverSentences() {
  const char* const capture = std::getenv("VELAGNSS_CAPTURE");
  return capture != nullptr ? Contents(capture) : C_ReceiverSentences().Make(1000);
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
  const std::string receiver = ReceiverSentences();
  benchmark::RegisterBenchmark("ReadMixed", Reading, mixed, false)->Arg(1)->Arg(32)->Arg(1024)->Arg(1 << 18);
  benchmark::RegisterBenchmark("ReadMixedAndEvents", Reading, mixed, true)->Arg(1 << 18);
  benchmark::RegisterBenchmark("ReadSentences", Reading, sentences, false)->Arg(1024);
  benchmark::RegisterBenchmark("ReadReceiver", Reading, receiver, false)->Arg(1024);
  benchmark::RegisterBenchmark("DecodeMixed", Decoding, mixed)->Arg(1 << 18);
  benchmark::RegisterBenchmark("DecodeSentences", Decoding, sentences)->Arg(1024);
  benchmark::RegisterBenchmark("DecodeReceiver", Decoding, receiver)->Arg(1024);
  benchmark::RegisterBenchmark("DecodeMsm7", Decoding, observations)->Arg(1 << 18);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
