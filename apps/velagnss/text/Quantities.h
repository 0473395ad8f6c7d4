// Lengths of time and amounts of data as users write them: "15m", "100M".
#ifndef VELAGNSS_APPS_QUANTITIES_H
#define VELAGNSS_APPS_QUANTITIES_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Host {

// A number and a unit: ms, s (also without a unit), m, h, d. Nothing for any other text, and for a negative time or one
// above 1000 days.
std::optional<std::chrono::microseconds> ParseDuration(std::string_view text);

// A whole number of bytes, or with k, M or G (decimal, 1000 bytes and so on).
std::optional<std::uint64_t> ParseDataSize(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_QUANTITIES_H
