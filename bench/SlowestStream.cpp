// Searches for the stream of 1 MiB that takes the recognizer the longest: a short mix of starts, line ends and parts of
// frames, repeated. What it finds belongs among the hostile streams of FramingBench.cpp.
//
//   slowest_stream [SECONDS [PIECE [SEED]]]     default: 20 seconds, pieces of 1024 bytes, seed 1
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Pump.h"

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kParts[] = {
    "$"sv,
    "$>"sv,
    "!"sv,
    "\xD3"sv,
    "\r"sv,
    "\n"sv,
    "\r\n"sv,
    ","sv,
    "*00\r"sv,
    "\x80"sv,
    "\0"sv,
    "A"sv,
    "$GPGSA,"sv,
    "$GPGGA,"sv,
    "$GPROT,"sv,
    "$AB,"sv,
    "$A,*41\r"sv,
    "$PKVN,RAW,"sv,
    "$PKVN,RAW,1,2,"sv,
    "$PKVN,ARN_ROUTER,"sv,
    "$PKVN,HPR,"sv,
    "$BIN\x47\x00\xC0\x01"sv,
    "$BIN\x67\x00\x40\x00"sv,
    "\xD3\x03\xFF\x3E"sv,
    "\xD3\x03\xD3\x03\xFF\x3E"sv,
    "\xD3\x00\x00\x3E\xD0"sv,
    "\xD3\x00\x06\x3E\xD0"sv,
    "\xD3\x03\xFF\x00\x10"sv,
    "$JROX,"sv,
    "$JROX,\x80\x80\x80\r\n"sv,
    "$RD1,"sv,
    "$>JI,"sv,
    "$>JQUERY,"sv,
    "$>JGEO,"sv,
    "$>JSITERECORD"sv,
};

struct S_Part {
  std::string_view text;
  unsigned int times;
};
using t_Mix = std::vector<S_Part>;

std::string Text(const t_Mix& mix) {
  std::string text;
  for (const S_Part& part : mix) {
    for (unsigned int i = 0; i < part.times; ++i) text += part.text;
  }
  return text;
}

// One part more, fewer or other; or another number of times.
t_Mix Changed(t_Mix mix, std::mt19937& random) {
  const std::size_t at = random() % mix.size();
  const S_Part part = {kParts[random() % std::size(kParts)], 1 + static_cast<unsigned int>(random() % 3)};
  switch (random() % 4) {
    case 0:
      mix.insert(mix.begin() + static_cast<std::ptrdiff_t>(at), part);
      break;
    case 1:
      if (mix.size() > 1) mix.erase(mix.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    case 2:
      mix[at] = part;
      break;
    default:
      mix[at].times = 1U << random() % 8;
  }
  return mix;
}

// Processor time of the stream, in seconds: the least of some passes, for other programs only add to it.
double Seconds(const t_Mix& mix, std::size_t piece, const S_Search& search, int passes) {
  const t_Bytes stream = Repeated(Text(mix), std::size_t{1} << 20);
  double least = std::numeric_limits<double>::max();
  for (; passes > 0; --passes) {
    const std::clock_t begin = std::clock();
    Pump(
        stream, piece, [](const C_RawDataMessage&) {}, search);
    least = std::min(least, static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
  }
  return least / static_cast<double>(stream.size()) * (1 << 20);
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    char code[8];
    const auto byte = static_cast<unsigned char>(c);
    std::snprintf(code, sizeof code, byte > 32 && byte < 127 ? "%c" : "\\x%02X", byte);
    escaped += code;
  }
  return escaped;
}

// Climbs from a random mix until nothing slower has been found for a while; returns the mix it ends with.
t_Mix Climb(std::mt19937& random, std::size_t piece, const S_Search& search) {
  constexpr int kPatience = 60;
  t_Mix best = Changed({{kParts[random() % std::size(kParts)], 1}}, random);
  double slowest = Seconds(best, piece, search, 3);
  for (int failed = 0; failed < kPatience; ++failed) {
    const t_Mix mix = Changed(best, random);
    if (mix.size() > 12 || Seconds(mix, piece, search, 1) < slowest * 1.02) continue;
    const double seconds = Seconds(mix, piece, search, 3);
    if (seconds < slowest * 1.02) continue;
    best = mix;
    slowest = seconds;
    failed = 0;
  }
  return best;
}

}  // namespace

int main(int argc, char** argv) {
  const double limit = argc > 1 ? std::atof(argv[1]) : 20;
  const auto piece = static_cast<std::size_t>(argc > 2 ? std::atoi(argv[2]) : 1024);
  std::mt19937 random(static_cast<unsigned int>(argc > 3 ? std::atoi(argv[3]) : 1));
  double slowest = 0;
  while (static_cast<double>(std::clock()) / CLOCKS_PER_SEC < limit) {
    const S_Search search = {random() % 2 == 0, random() % 2 == 0};
    const t_Mix mix = Climb(random, piece, search);
    const double seconds = Seconds(mix, piece, search, 5);
    if (seconds < slowest) continue;
    slowest = seconds;
    std::printf("%6.1f MB/s, acknowledgements %d, unlisted %d:", (1 << 20) / seconds / 1e6, search.withAcknowledgements,
                search.withUnlisted);
    for (const S_Part& part : mix) std::printf(" %u x %s", part.times, Escaped(part.text).c_str());
    std::puts("");
    std::fflush(stdout);
  }
}
