#include "apps/velagnss/rinex/RinexHeader.h"

#include <fmt/chrono.h>
#include <fmt/core.h>

#include <algorithm>
#include <ctime>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"

namespace Host {

void C_StreamFacts::Note(const velagnss::Record& record) {
  const auto* const parameters = std::get_if<velagnss::Rtcm3SystemParameters>(&record);
  if (parameters != nullptr && !IsNotAvailable(parameters->leapSeconds)) m_leapSeconds = parameters->leapSeconds;
}

// ISO 8601 dates sort like their times. Without a date the text is only a time of day.
void C_StreamFacts::EndInput(const S_InputEnd& end) {
  const C_TimeText time = C_TimeText::StreamTime(end.clock, end.clock.Seconds());
  if (time.Text().ends_with('Z')) m_lastDate = std::max(m_lastDate, std::string(time.Text()));
}

std::string C_StreamFacts::RunDate(const S_RinexOptions& options, double lastEpoch) const {
  if (options.runDate == "now") return fmt::format("{:%Y%m%d %H%M%S} UTC", fmt::gmtime(std::time(nullptr)));
  std::string date = m_lastDate.empty() ? EpochText(lastEpoch) : m_lastDate;
  std::erase_if(date, [](char c) { return c < '0' || c > '9'; });
  return fmt::format("{} {} UTC", date.substr(0, 8), date.substr(8, 6));
}

// By the day of GPS time, which begins some seconds before that of UTC.
unsigned int C_StreamFacts::LeapSeconds(double epoch) const {
  if (m_leapSeconds) return *m_leapSeconds;
  return velagnss::LeapSecondsOn(kMjdOfGpsEpoch + static_cast<unsigned int>(epoch / kSecondsPerDay));
}

void C_LeftOut::Add(std::string_view where, const std::string& reason) {
  ReportDetail(fmt::format("{} left out: {}", where, reason));
  ++m_counts[reason];
}

void C_LeftOut::Report(std::string_view what) const {
  for (const auto& [reason, count] : m_counts) ReportError(fmt::format("{} left out: {}; {}", what, count, reason));
}

void AppendFirstLines(std::string& text, const S_RinexKind& kind, const S_RinexOptions& options,
                      const std::string& runDate) {
  AppendHeaderLine(text, fmt::format("{:9.2f}{:11}{:<20}{}", kind.version, "", kind.type, kind.system),
                   "RINEX VERSION / TYPE");
  AppendHeaderLine(text, fmt::format("{:<20}{:<20}{}", "velagnss " VELAGNSS_VERSION, options.runBy, runDate),
                   "PGM / RUN BY / DATE");
}

void AppendLeapSeconds(std::string& text, unsigned int seconds) {
  AppendHeaderLine(text, fmt::format("{:6}", seconds), "LEAP SECONDS");
}

}  // namespace Host
