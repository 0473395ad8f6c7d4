#include "apps/velagnss/pipeline/MessageFilter.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

namespace Host {
namespace {

constexpr double kTimeTolerance = 0.0005;  // s: times of day with decimals are not exact in binary
constexpr double kNever = -std::numeric_limits<double>::infinity();

std::string_view Trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

bool ParsePeriod(std::string_view text, double& period) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, period, std::chars_format::fixed);
  return error == std::errc() && stop == end && std::isfinite(period) && period >= 0;
}

}  // namespace

std::vector<std::string_view> SplitList(std::string_view list) {
  std::vector<std::string_view> items;
  while (true) {
    const std::size_t comma = list.find(',');
    items.push_back(Trim(list.substr(0, comma)));
    if (comma == std::string_view::npos) return items;
    list.remove_prefix(comma + 1);
  }
}

std::optional<std::string> C_MessageFilter::AddProtocols(std::string_view list) {
  for (const std::string_view item : SplitList(list)) {
    const std::optional<C_RawDataMessage::eProtocols> protocol = FindProtocol(item);
    if (!protocol) return fmt::format("there is no protocol '{}'; known are: {}", item, ProtocolNames());
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
    return fmt::format("'{}': the period behind ':' is a number of seconds, as in GGA:10", item);
  const std::vector<S_MessageKey> keys = FindMessages(item.substr(0, colon));
  if (keys.empty())
    return fmt::format("there is no message '{}'; name it like GGA, BIN95, HPR or by number like 1077", item);
  for (const S_MessageKey& key : keys) m_rules.push_back({key, period, kNever});
  m_usesTime = m_usesTime || period > 0;
  return std::nullopt;
}

void C_MessageFilter::Restart() {
  for (S_Rule& rule : m_rules) rule.lastPassed = kNever;
}

bool C_MessageFilter::Passes(C_RawDataMessage::eProtocols protocol, unsigned int messageType, double streamSeconds) {
  if (m_isEmpty || m_protocols[protocol]) return true;
  const unsigned int type = messageType == kNoMessageType ? 0 : messageType;
  for (S_Rule& rule : m_rules) {
    if (!(rule.key == S_MessageKey{protocol, type})) continue;
    // A step back is a stream that starts over, not a message that came too early.
    if (streamSeconds > rule.lastPassed && streamSeconds < rule.lastPassed + rule.period - kTimeTolerance) continue;
    if (!std::isnan(streamSeconds)) rule.lastPassed = streamSeconds;
    return true;
  }
  return false;
}

}  // namespace Host
