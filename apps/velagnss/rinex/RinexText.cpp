#include "apps/velagnss/rinex/RinexText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"

namespace Host {

double RinexSeconds(unsigned short week, double secOfWeek) { return week * kSecondsPerWeek + secOfWeek; }

double WeekStart(double seconds) { return std::floor(seconds / kSecondsPerWeek) * kSecondsPerWeek; }

std::string EpochText(double seconds) {
  const auto week = static_cast<unsigned short>(static_cast<unsigned int>(seconds / kSecondsPerWeek));
  std::string text(C_TimeText::WeekTime(week, seconds - WeekStart(seconds), ALGO::GNSS_GPS).Text());
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; }, ' ');
  return text;
}

// The exponent has two digits: what is smaller is as good as 0.
void AppendRinexNumber(std::string& text, double value) {
  constexpr std::size_t kWidth = 19;
  constexpr double kLeast = 1e-99;
  const std::size_t start = text.size();
  if (!(std::fabs(value) < 1 / kLeast)) return text.resize(start + kWidth, ' ');
  text += fmt::format("{:{}.12E}", std::fabs(value) < kLeast ? 0.0 : value, kWidth);
  text[text.find('E', start)] = 'D';
}

void EndRinexLine(std::string& text) {
  text.erase(text.find_last_not_of(' ') + 1);
  text += '\n';
}

void AppendHeaderLine(std::string& text, std::string_view content, std::string_view label) {
  text += fmt::format("{:<{}}{:<20}\n", content, kHeaderWidth, label);
}

}  // namespace Host
