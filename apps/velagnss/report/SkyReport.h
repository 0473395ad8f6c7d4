// The satellites that a receiver saw: where they were, how strong, how many.
#ifndef VELAGNSS_APPS_SKY_REPORT_H
#define VELAGNSS_APPS_SKY_REPORT_H

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/report/Moment.h"
#include "apps/velagnss/report/Series.h"
#include "apps/velagnss/report/ThinnedLine.h"

namespace Host {

enum eUse : std::int8_t { eUseNotKnown = -1, eTracked = 0, eUsed = 1 };

// In the plane of a sky plot, which has the zenith in its middle and the horizon at 90.
struct S_SkyPoint : S_LinePoint {
  unsigned short azimuth;   // degrees
  unsigned char elevation;  // degrees
};

// A signal, of a satellite or of a system. Sentences give it a name, observations a code, most of which have a name as
// well; sentences before NMEA 0183 4.11 give neither.
struct S_SignalName {
  bool Is(const S_EpochSignal& signal) const;
  void Complete(const S_EpochSignal& signal);

  std::string name;  // "L1 C/A"
  std::string code;  // RINEX band and attribute
};

struct S_SkySignal : S_SignalName {
  S_ValueRange cn0;      // dB-Hz, of all epochs
  C_Series series;       // the same over time
  std::size_t kind = 0;  // its place in `C_SkyReport::Kinds`
};

struct S_SkySatellite {
  std::uint64_t epochs = 0;
  std::uint64_t used = 0;    // of these
  std::uint64_t usedAt = 0;  // the last epoch that used it, among those that name satellites of its system in use
  bool saysUse = false;      // an epoch said whether it was used
  double seen = NA_DOUBLE;   // s, when it had a place in the sky last
  C_ThinnedLine<S_SkyPoint, 120> track;
  std::vector<S_SkySignal> signals;
};

// C/N0 by elevation of all satellites of a system.
struct S_SignalKind : S_SignalName {
  static constexpr unsigned int kBandWidth = 10;  // degrees

  ALGO::eGNSSSystem system;
  std::array<S_ValueRange, 90 / kBandWidth> bands;
};

// Satellites per epoch. An epoch may speak of some systems only: of all together there are then as many as it says and
// was last said of the others.
class C_SatelliteCounts {
 public:
  using t_Numbers = std::map<ALGO::eGNSSSystem, unsigned int>;

  void Add(const t_Numbers& numbers, const S_Moment& moment);
  void AddAll(unsigned int number, const S_Moment& moment) { m_all.Add(moment.bin, number); }

  // Whether satellites of a system were counted, and so lately that there still are as many.
  bool Holds(ALGO::eGNSSSystem system, const S_Moment& moment) const;
  // How many epochs have counted a system.
  std::uint64_t TimesOf(ALGO::eGNSSSystem system) const;

  const C_Series& All() const { return m_all; }
  const std::map<ALGO::eGNSSSystem, C_Series>& Systems() const { return m_systems; }

 private:
  struct S_Last {
    double seconds;
    unsigned int number;
    std::uint64_t times;
  };

  C_Series m_all;
  std::map<ALGO::eGNSSSystem, C_Series> m_systems;
  std::map<ALGO::eGNSSSystem, S_Last> m_last;
};

// Memory is bounded: 200 satellites, 12 signals of each, and as many signals of all receivers together as the caller
// allows. A satellite costs up to 7 kB, a signal up to 23 kB.
//
// Satellites are in view in an epoch that says where one of them is or how strong: many receivers send GSA with each
// epoch, but GSV only with some. A satellite that is not seen for more than ten minutes begins another piece of its
// track; as long as no epoch says otherwise, it counts there as used or not as before.
class C_SkyReport {
 public:
  using t_Satellites = std::map<std::pair<ALGO::eGNSSSystem, unsigned int>, S_SkySatellite>;  // by system and number

  // `signalsLeft` is counted down with each new signal.
  void Add(const S_Epoch& epoch, const S_Moment& moment, std::size_t& signalsLeft);

  const t_Satellites& Satellites() const { return m_satellites; }
  const std::vector<S_SignalKind>& Kinds() const { return m_kinds; }
  const C_SatelliteCounts& InView() const { return m_inView; }
  const C_SatelliteCounts& Used() const { return m_used; }
  std::size_t SatellitesLeftOut() const { return m_leftOut.count(); }
  std::uint64_t SignalsLeftOut() const { return m_signalsLeftOut; }

 private:
  S_SkySatellite* SatelliteOf(const S_EpochSatellite& seen);
  eUse UseOf(const S_SkySatellite& satellite, ALGO::eGNSSSystem system) const;
  void AddPlace(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_Moment& moment);
  void AddSignal(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_EpochSignal& signal,
                 const S_Moment& moment, std::size_t& signalsLeft);
  S_SkySignal* SignalOf(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_EpochSignal& signal,
                        std::size_t& signalsLeft);
  std::size_t KindOf(ALGO::eGNSSSystem system, const S_EpochSignal& signal);
  void AddCounts(const S_Epoch& epoch, const S_Moment& moment);

  t_Satellites m_satellites;
  std::vector<S_SignalKind> m_kinds;
  C_SatelliteCounts m_inView;
  C_SatelliteCounts m_used;
  std::bitset<(ALGO::GNSS_UNKNOWN + 1) * 256UL> m_leftOut;
  std::uint64_t m_signalsLeftOut = 0;  // C/N0 values of signals that are left out
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SKY_REPORT_H
