#include "apps/velagnss/input/live/PositionFeed.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <vector>

#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::size_t kMaxSentence = 120;  // NMEA 0183 allows 82; receivers with many decimals write more

unsigned int XorSum(std::string_view text) {
  unsigned int sum = 0;
  for (const char c : text) sum ^= static_cast<unsigned char>(c);
  return sum;
}

// `body` is what the checksum is of: between '$' and '*'.
std::string Sentence(std::string_view body) { return fmt::format("${}*{:02X}", body, XorSum(body)); }

bool IsIn(std::string_view text, double least, double greatest) {
  double number = 0;
  return ParseWhole(text, number) && number >= least && number <= greatest;
}

// The fields of GGA that a caster looks at: the ranges that make sense. Time, latitude, longitude, quality (0: none),
// satellites, height in m.
struct S_FieldRange {
  std::size_t field;
  double least;
  double greatest;
};
constexpr S_FieldRange kRanges[] = {
    {1, 0, 235960.999}, {2, 0, 9000}, {4, 0, 18000}, {6, 1, 8}, {7, 1, 99}, {9, -1000, 20000},
};
constexpr std::size_t kNumFields = 15;

// "4807.0380,N".
std::string DegreesMinutes(double degrees, int width, std::string_view hemispheres) {
  const double minutes = std::round(std::abs(degrees) * 60 * 1e5) / 1e5;  // rounded once: 59.999999 carries
  const int whole = static_cast<int>(minutes / 60);
  return fmt::format("{:0{}}{:08.5f},{}", whole, width, minutes - whole * 60.0, hemispheres[degrees < 0 ? 1 : 0]);
}

}  // namespace

std::optional<std::string> AsGpsGga(std::string_view sentence) {
  const std::size_t star = sentence.find('*');
  if (sentence.size() < 7 || sentence[0] != '$' || sentence.substr(3, 4) != "GGA," || star == std::string_view::npos)
    return std::nullopt;
  const std::string_view body = sentence.substr(1, star - 1);
  unsigned int sum = 0;
  const std::string_view digits = sentence.substr(star + 1, 2);
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), sum, 16);
  if (digits.size() != 2 || read.ptr != digits.data() + 2 || sum != XorSum(body)) return std::nullopt;
  const std::vector<std::string_view> fields = SplitList(body);
  if (fields.size() < kNumFields) return std::nullopt;
  for (const S_FieldRange& range : kRanges)
    if (!IsIn(fields[range.field], range.least, range.greatest)) return std::nullopt;
  return Sentence(fmt::format("GP{}", body.substr(2)));
}

std::optional<S_FixedPosition> ReadFixedPosition(std::string_view text) {
  const std::vector<std::string_view> parts = SplitList(text);
  std::array<double, 3> numbers{};
  if (parts.size() != numbers.size()) return std::nullopt;
  for (std::size_t i = 0; i < numbers.size(); ++i)
    if (!ParseWhole(parts[i], numbers[i])) return std::nullopt;
  const bool isGood = std::abs(numbers[0]) <= 90 && std::abs(numbers[1]) <= 180 && std::abs(numbers[2]) <= 20'000;
  return isGood ? std::optional(S_FixedPosition{numbers[0], numbers[1], numbers[2]}) : std::nullopt;
}

// As of a receiver with a fix of 12 satellites. The height above the ellipsoid is given as that above the geoid with a
// separation of 0: their sum is what counts.
std::string FixedGga(const S_FixedPosition& position, std::chrono::system_clock::time_point now) {
  const auto ofDay = now - std::chrono::floor<std::chrono::days>(now);
  const std::chrono::hh_mm_ss time(std::chrono::duration_cast<std::chrono::seconds>(ofDay));
  return Sentence(fmt::format("GPGGA,{:02}{:02}{:02}.00,{},{},1,12,1.0,{:.3f},M,0.0,M,,", time.hours().count(),
                              time.minutes().count(), time.seconds().count(),
                              DegreesMinutes(position.latitude, 2, "NS"), DegreesMinutes(position.longitude, 3, "EW"),
                              position.height));
}

void C_PositionFeed::Note(const std::string& source, std::string gga, t_Clock::time_point now) {
  const std::lock_guard lock(m_mutex);
  m_notes[source] = {std::move(gga), now};
}

std::optional<std::string> C_PositionFeed::Latest(const std::string& asking, t_Clock::time_point now) const {
  constexpr auto kMaxAge = std::chrono::minutes(1);
  const std::lock_guard lock(m_mutex);
  const S_Note* latest = nullptr;
  for (const auto& [source, note] : m_notes)
    if (source != asking && now - note.at <= kMaxAge && (latest == nullptr || note.at > latest->at)) latest = &note;
  return latest == nullptr ? std::nullopt : std::optional(latest->gga);
}

void C_PositionScanner::Take(std::span<const unsigned char> bytes) {
  if (m_feed == nullptr) return;
  for (const unsigned char byte : bytes) TakeByte(static_cast<char>(byte));
}

void C_PositionScanner::TakeByte(char byte) {
  if (byte == '$') {
    m_sentence = byte;
  } else if (m_sentence.empty()) {
    return;
  } else if (byte != '\r' && byte != '\n' && m_sentence.size() < kMaxSentence) {
    m_sentence += byte;
  } else {
    if (std::optional<std::string> gga = AsGpsGga(m_sentence))
      m_feed->Note(m_source, std::move(*gga), C_PositionFeed::t_Clock::now());
    m_sentence.clear();
  }
}

}  // namespace Host
