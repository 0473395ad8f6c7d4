#include "apps/velagnss/text/Quantities.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

struct S_Unit {
  std::string_view name;
  std::uint64_t size;
};
constexpr S_Unit kTimes[] = {{"ms", 1'000},        {"s", 1'000'000},      {"m", 60'000'000},
                             {"h", 3'600'000'000}, {"d", 86'400'000'000}, {"", 1'000'000}};  // microseconds
constexpr S_Unit kSizes[] = {{"k", 1'000}, {"M", 1'000'000}, {"G", 1'000'000'000}, {"", 1}};

constexpr double kMaxTime = 1000 * 86'400e6;  // microseconds
constexpr std::uint64_t kMaxSize = std::uint64_t{1} << 53;

// Cuts the unit off.
std::uint64_t TakeUnit(std::string_view& text, std::span<const S_Unit> units) {
  const auto unit =
      std::find_if(units.begin(), units.end(), [text](const S_Unit& row) { return text.ends_with(row.name); });
  text.remove_suffix(unit->name.size());
  return unit->size;
}

}  // namespace

std::optional<std::chrono::microseconds> ParseDuration(std::string_view text) {
  const auto unit = static_cast<double>(TakeUnit(text, kTimes));
  double number = 0;
  if (!ParseWhole(text, number) || !(number >= 0 && number * unit <= kMaxTime)) return std::nullopt;
  return std::chrono::microseconds(std::llround(number * unit));
}

std::optional<std::uint64_t> ParseDataSize(std::string_view text) {
  const std::uint64_t unit = TakeUnit(text, kSizes);
  std::uint64_t number = 0;
  if (!ParseWhole(text, number) || number > kMaxSize / unit) return std::nullopt;
  return number * unit;
}

}  // namespace Host
