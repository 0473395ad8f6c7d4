#include "apps/velagnss/rinex/StationLines.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

// Of up to three texts, 20 columns each.
std::string Columns(std::string_view a, std::string_view b, std::string_view c = {}) {
  return fmt::format("{:<20.20}{:<20.20}{:<20.20}", a, b, c);
}

std::string Meters(double a, double b, double c) { return fmt::format("{:14.4f}{:14.4f}{:14.4f}", a, b, c); }

std::string ColumnsOf(const std::string& list) {
  std::vector<std::string_view> items = SplitList(list);
  items.resize(3);
  return Columns(items[0], items[1], items[2]);
}

// Headers are ASCII, the texts ISO 8859-1 with blanks at their ends.
std::string Plain(const velagnss::Rtcm3Text& text) {
  std::string plain(text.View());
  std::replace_if(
      plain.begin(), plain.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  plain.erase(plain.find_last_not_of(' ') + 1);
  plain.erase(0, std::min(plain.find_first_not_of(' '), plain.size()));
  return plain;
}

// A text that a message does not carry says nothing.
void Take(const velagnss::Rtcm3Text& text, std::string& to) {
  if (std::string plain = Plain(text); !plain.empty()) to = std::move(plain);
}

}  // namespace

C_StationLines::C_StationLines(const S_RinexOptions& options) : m_marker(options.marker) {
  Set(kReceiverLabel, ColumnsOf(options.receiver));
  Set(kAntennaLabel, ColumnsOf(options.antenna));
  if (const auto xyz = ReadPosition(options.position)) Set(kPositionLabel, Meters((*xyz)[0], (*xyz)[1], (*xyz)[2]));
  Set(kAntennaDeltaLabel, Meters(0, 0, 0));
  m_isFixed = {{std::string(kReceiverLabel), !options.receiver.empty()},
               {std::string(kAntennaLabel), !options.antenna.empty()},
               {std::string(kPositionLabel), !options.position.empty()}};
  m_now.clear();
}

void C_StationLines::Note(const velagnss::Record& record, const t_OnChange& onChange) {
  m_onChange = &onChange;
  if (const auto* const station = std::get_if<velagnss::Rtcm3Station>(&record)) Note(*station);
  if (const auto* const antenna = std::get_if<velagnss::Rtcm3Antenna>(&record)) Note(*antenna);
  m_onChange = nullptr;
}

void C_StationLines::Note(const velagnss::Rtcm3Station& station) {
  if (IsNotAvailable(station.x)) return;
  if (IsAtNewSite(station) && m_onChange != nullptr) (*m_onChange)(kMarkerLabel, MarkerName(m_marker, station.station));
  Set(kPositionLabel, Meters(station.x, station.y, station.z));
  if (!IsNotAvailable(station.antennaHeight)) Set(kAntennaDeltaLabel, Meters(station.antennaHeight, 0, 0));
}

// Better coordinates of the same place, or those of another datum, are less far away.
bool C_StationLines::IsAtNewSite(const velagnss::Rtcm3Station& station) {
  constexpr double kSite = 100;  // m
  const std::array<double, 3> place = {station.x, station.y, station.z};
  const std::array<double, 3> before = std::exchange(m_place, place).value_or(place);
  if (m_isFixed[std::string(kPositionLabel)]) return false;
  return std::hypot(place[0] - before[0], place[1] - before[1], place[2] - before[2]) > kSite;
}

// The number of another antenna is not that of the one before.
void C_StationLines::Note(const velagnss::Rtcm3Antenna& antenna) {
  const std::string before = m_antenna;
  Take(antenna.antenna, m_antenna);
  if (m_antenna != before) m_antennaNumber.clear();
  Take(antenna.antennaSerial, m_antennaNumber);
  Take(antenna.receiver, m_receiver);
  Take(antenna.receiverSerial, m_receiverNumber);
  Take(antenna.firmware, m_firmware);
  Set(kAntennaLabel, Columns(m_antennaNumber, m_antenna));
  if (!m_receiver.empty()) Set(kReceiverLabel, Columns(m_receiverNumber, m_receiver, m_firmware));
}

void C_StationLines::Set(std::string_view label, const std::string& content) {
  const std::string key(label);
  if (m_isFixed[key]) return;
  const auto [place, isFirst] = m_now.try_emplace(key, content);
  if (isFirst) {
    m_first[key] = content;
  } else if (place->second != content) {
    place->second = content;
    if (m_onChange != nullptr) (*m_onChange)(label, content);
  }
}

std::string MarkerName(const std::string& given, unsigned short station) {
  return given.empty() ? fmt::format("{:04}", station) : given;
}

std::optional<unsigned short> StationOf(const velagnss::Record& record) {
  std::optional<unsigned short> number;
  std::visit(
      [&number](const auto& message) {
        using T = std::decay_t<decltype(message)>;
        if constexpr (std::is_same_v<T, velagnss::Rtcm3Station> || std::is_same_v<T, velagnss::Rtcm3Antenna> ||
                      std::is_same_v<T, velagnss::Rtcm3GlonassBiases> || std::is_same_v<T, velagnss::Rtcm3Observations>)
          number = message.station;
      },
      record);
  return number;
}

}  // namespace Host
