// What a stream carries of reference stations, observations and ephemerides.
#ifndef VELAGNSS_APPS_OBSERVATION_SUMMARY_H
#define VELAGNSS_APPS_OBSERVATION_SUMMARY_H

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/account/EpochSteps.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "geo/NotAvailable.h"

namespace Host {

using t_Satellites = std::bitset<256>;  // by number

// The last of each value that the stream has carried.
struct S_StationSummary {
  explicit S_StationSummary(unsigned short number) : id(number) {}

  unsigned short id;
  double x = NA_DOUBLE;              // m, ECEF: antenna reference point
  double y = NA_DOUBLE;              // m
  double z = NA_DOUBLE;              // m
  double antennaHeight = NA_DOUBLE;  // m, reference point above the marker
  std::string antenna;               // texts are empty where none was sent, and without the blanks at their end
  std::string antennaSerial;
  std::string receiver;
  std::string firmware;
  std::string receiverSerial;
};

struct S_SignalSummary {
  explicit S_SignalSummary(std::string_view name) { name.copy(code.data(), code.size()); }
  std::string_view Code() const { return {code.data(), code.size()}; }

  std::array<char, 2> code{};      // RINEX band and attribute
  std::uint64_t observations = 0;  // with a pseudorange or a phase
  t_Satellites satellites{};
};

struct S_SystemSummary {
  explicit S_SystemSummary(ALGO::eGNSSSystem number) : system(number) {}

  ALGO::eGNSSSystem system;
  t_Satellites satellites{};             // observed; without the GLONASS satellites whose slot is not known
  std::vector<S_SignalSummary> signals;  // by code
};

struct S_EphemerisSummary {
  explicit S_EphemerisSummary(ALGO::eGNSSSystem number) : system(number) {}

  ALGO::eGNSSSystem system;
  std::uint64_t count = 0;
  t_Satellites satellites{};
  std::optional<double> latest;  // latest reference time: GPS time, s since 6 January 1980; none without a date
};

// Reference time of an ephemeris whose week is resolved: GPS time, s since 6 January 1980.
double ReferenceOf(const S_IFKeplerEphRec& record);
double ReferenceOf(const S_IFPvaEphRec& record);

// Takes RTCM 3 messages and ephemerides of any protocol and ignores every other record. What the wire can name is
// finite, and so is the memory: 4096 stations, the systems, their signals.
class C_ObservationSummary {
 public:
  void Note(const S_FrameRecord& record);

  const std::vector<S_StationSummary>& Stations() const { return m_stations; }          // by number
  const std::vector<S_SystemSummary>& Systems() const { return m_systems; }             // by number of the system
  const std::vector<S_EphemerisSummary>& Ephemerides() const { return m_ephemerides; }  // likewise

  // The epochs of the observations of all stations, on the scale of velagnss::StreamClock.
  const C_EpochSteps& Epochs() const { return m_epochs; }

  // Seconds from the latest reference time to the last observation; missing if the date of either is not known.
  std::optional<double> AgeOf(const S_EphemerisSummary& ephemerides) const;

  std::optional<unsigned int> LeapSeconds() const { return m_leapSeconds; }  // GPS time - UTC, as last sent
  std::uint64_t TextMessages() const { return m_textMessages; }

 private:
  void Add(const velagnss::Rtcm3Station& record);
  void Add(const velagnss::Rtcm3Antenna& record);
  void Add(const velagnss::Rtcm3SystemParameters& record);
  void Add(const velagnss::Rtcm3Message&) { ++m_textMessages; }
  void Add(const velagnss::Rtcm3Observations& record);
  template <class Ephemeris>
  void AddEphemeris(const Ephemeris& record, bool isDated);
  S_StationSummary& StationOf(unsigned short id);
  S_SystemSummary& SystemOf(ALGO::eGNSSSystem system);

  std::vector<S_StationSummary> m_stations;
  std::vector<S_SystemSummary> m_systems;
  std::vector<S_EphemerisSummary> m_ephemerides;
  C_EpochSteps m_epochs;
  std::optional<double> m_lastEpoch;  // GPS time, s since 6 January 1980
  std::optional<unsigned int> m_leapSeconds;
  std::uint64_t m_textMessages = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OBSERVATION_SUMMARY_H
