#include "apps/velagnss/pipeline/MessageFilter.h"

#include <fmt/core.h>

#include <charconv>
#include <cmath>
#include <limits>

#include "apps/velagnss/text/Lists.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr double kTimeTolerance = 0.0005;  // s: times of day with decimals are not exact in binary
constexpr double kNever = -std::numeric_limits<double>::infinity();

bool ParsePeriod(std::string_view text, double& period) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, period, std::chars_format::fixed);
  return error == std::errc() && stop == end && std::isfinite(period) && period >= 0;
}

}  // namespace

std::optional<std::string> C_MessageFilter::AddProtocols(std::string_view list) {
  for (const std::string_view item : SplitList(list)) {
    const std::optional<C_RawDataMessage::eProtocols> protocol = velagnss::FindProtocol(item);
    if (!protocol) return fmt::format("unknown protocol '{}'; known: {}", item, ProtocolNames());
    m_protocols[*protocol] = true;
  }
  m_isEmpty = false;
  return std::nullopt;
}

std::optional<std::string> C_MessageFilter::AddMessages(std::string_view list) {
  for (const std::string_view item : SplitList(list))
    if (std::optional<std::string> error = AddMessage(item)) return error;
  m_isEmpty = false;
  return std::nullopt;
}

std::optional<std::string> C_MessageFilter::AddMessage(std::string_view item) {
  const std::size_t colon = item.find(':');
  double period = 0;
  if (colon != std::string_view::npos && !ParsePeriod(item.substr(colon + 1), period))
    return fmt::format("'{}': what follows ':' must be a number of seconds, as in GGA:10", item);
  std::vector<S_MessageKey> keys = FindMessages(item.substr(0, colon));
  const auto unlisted = m_acceptsUnlisted ? FindUnlisted(item.substr(0, colon)) : std::nullopt;
  if (unlisted) keys.push_back(*unlisted);
  if (keys.empty())
    return fmt::format("unknown message '{}'; give a name like GGA, BIN95 or HPR, or a number like 1077", item);
  for (const S_MessageKey& key : keys) m_rules.push_back({key, period, kNever});
  m_usesTime = m_usesTime || period > 0;
  return std::nullopt;
}

void C_MessageFilter::Restart() {
  for (S_Rule& rule : m_rules) rule.lastPassed = kNever;
  m_hasIgnoredPeriod = HasIgnoredPeriod();
  m_isTimeMissing = false;
}

bool C_MessageFilter::Passes(const velagnss::Frame& frame, double streamSeconds) {
  if (m_isEmpty || m_protocols[frame.protocol]) return true;
  const S_MessageKey key = KeyOf(frame);
  for (S_Rule& rule : m_rules) {
    if (!(rule.key == key)) continue;
    m_isTimeMissing = rule.period > 0 ? std::isnan(streamSeconds) : m_isTimeMissing;
    // After a step back in time the stream starts over: nothing comes too early then.
    if (streamSeconds > rule.lastPassed && streamSeconds < rule.lastPassed + rule.period - kTimeTolerance) continue;
    // Without a time no period can be kept, so nothing is held back.
    if (!std::isnan(streamSeconds)) rule.lastPassed = streamSeconds;
    return true;
  }
  return false;
}

}  // namespace Host
