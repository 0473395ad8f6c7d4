#include "apps/velagnss/pipeline/FrameSelection.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

constexpr std::size_t kTalkerSize = 2;

t_Microseconds Whole(const S_UtcTime& time) { return time.mjd.value_or(0) * kMicrosecondsPerDay + time.ofDay; }

// A date alone is its beginning.
std::optional<S_UtcTime> ReadBound(std::string_view text) {
  if (const std::optional<unsigned int> mjd = ParseDate(text)) return S_UtcTime{mjd, 0};
  return ParseUtc(text);
}

std::string NotATime(std::string_view option, std::string_view text) {
  return fmt::format("{}: '{}' is not a time; write 2024-05-18T12:00:00, 2024-05-18 or 12:00:00", option, text);
}

bool IsOfAnAddress(char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

}  // namespace

std::optional<std::string> C_TimeWindow::Set(std::string_view from, std::string_view until) {
  const std::optional<S_UtcTime> begin = ReadBound(from);
  const std::optional<S_UtcTime> end = ReadBound(until);
  if (!from.empty() && !begin) return NotATime("--from", from);
  if (!until.empty() && !end) return NotATime("--until", until);
  if (begin && end && begin->mjd.has_value() != end->mjd.has_value())
    return "--from and --until must both have a date, or neither";
  if (begin) m_from = Whole(*begin);
  if (end) m_to = Whole(*end);
  m_hasDates = (begin && begin->mjd) || (end && end->mjd);
  if (begin && end && (m_hasDates ? *m_from >= *m_to : *m_from == *m_to))
    return std::string("--until must be later than --from") +
           (ParseDate(until) ? "; a date alone is its 00:00:00" : "");
  return std::nullopt;
}

bool C_TimeWindow::Includes(const velagnss::StreamClock& clock) const {
  if (!IsSet()) return true;
  const velagnss::StreamClock::Utc utc = clock.UtcOf(clock.Seconds());
  if (std::isnan(utc.secondsOfDay) || (m_hasDates && !utc.mjd)) return !m_from;
  const t_Microseconds time = Whole({m_hasDates ? utc.mjd : std::nullopt, std::llround(utc.secondsOfDay * 1e6)});
  const bool hasBegun = !m_from || time >= *m_from;
  const bool isNotOver = !m_to || time < *m_to;
  const bool spansMidnight = m_from && m_to && *m_to < *m_from;
  return spansMidnight ? hasBegun || isNotOver : hasBegun && isNotOver;
}

std::optional<std::string> C_FrameSelection::AddTalkers(std::string_view list) {
  for (const std::string_view item : SplitList(list)) {
    std::string talker = InCapitals(item);
    if (talker != "P" && (talker.size() != kTalkerSize || !std::all_of(talker.begin(), talker.end(), &IsOfAnAddress)))
      return fmt::format("--talker: '{}' is not a talker; write two characters like GP, or P for proprietary sentences",
                         item);
    m_talkers.push_back(std::move(talker));
  }
  return std::nullopt;
}

bool C_FrameSelection::HasTalker(const velagnss::Frame& frame) const {
  if (m_talkers.empty() || frame.protocol != C_RawDataMessage::eNMEA0183) return true;
  const std::string_view address(reinterpret_cast<const char*>(frame.data) + 1, frame.length - std::size_t{1});
  // NMEA 0183 reserves the letter P for proprietary addresses.
  const std::string_view talker = address.substr(0, address.starts_with('P') ? 1 : kTalkerSize);
  return std::find(m_talkers.begin(), m_talkers.end(), talker) != m_talkers.end();
}

}  // namespace Host
