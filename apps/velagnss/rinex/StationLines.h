// The header lines that say who observed where with what: from the messages of the station, or from the user.
#ifndef VELAGNSS_APPS_STATION_LINES_H
#define VELAGNSS_APPS_STATION_LINES_H

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/rinex/RinexOptions.h"
#include "stream/Record.h"

namespace Host {

class C_StationLines {
 public:
  explicit C_StationLines(const S_RinexOptions& options);

  // Takes what a message of the station says. Each line that it changes is handed over; the first contents of a line
  // do not count as a change: they hold from the beginning. The name of the marker is handed over when the station has
  // gone to another site.
  using t_OnChange = std::function<void(std::string_view label, std::string_view content)>;
  void Note(const velagnss::Record& record, const t_OnChange& onChange);

  // Of the beginning, by label.
  const std::map<std::string, std::string>& First() const { return m_first; }

 private:
  void Note(const velagnss::Rtcm3Station& station);
  bool IsAtNewSite(const velagnss::Rtcm3Station& station);
  void Note(const velagnss::Rtcm3Antenna& antenna);
  void Set(std::string_view label, const std::string& content);

  std::map<std::string, std::string> m_first;
  std::map<std::string, std::string> m_now;
  std::map<std::string, bool> m_isFixed;  // by the user
  const t_OnChange* m_onChange = nullptr;
  std::string m_marker;                          // the user's
  std::optional<std::array<double, 3>> m_place;  // m
  std::string m_antenna, m_antennaNumber;
  std::string m_receiver, m_receiverNumber, m_firmware;
};

inline constexpr std::string_view kMarkerLabel = "MARKER NAME";

// The marker's name: `given` by the user, or else the number of the station.
std::string MarkerName(const std::string& given, unsigned short station);

// In the order of the header.
inline constexpr std::string_view kReceiverLabel = "REC # / TYPE / VERS";
inline constexpr std::string_view kAntennaLabel = "ANT # / TYPE";
inline constexpr std::string_view kPositionLabel = "APPROX POSITION XYZ";
inline constexpr std::string_view kAntennaDeltaLabel = "ANTENNA: DELTA H/E/N";

// The number of the station that sent a message about itself; nothing for other records.
std::optional<unsigned short> StationOf(const velagnss::Record& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_STATION_LINES_H
