// The best position that the sentences of an epoch carry.
#ifndef VELAGNSS_APPS_BEST_POSITION_H
#define VELAGNSS_APPS_BEST_POSITION_H

#include <array>
#include <optional>

#include "geo/NotAvailable.h"
#include "stream/Record.h"

namespace Host {

// A position and what else is known of it; what is not known is at its marker.
struct S_Position {
  double latitude = NA_DOUBLE;
  double longitude = NA_DOUBLE;  // -180 to 180
  double altitude = NA_DOUBLE;   // m above mean sea level
  double geoidSeparation = NA_DOUBLE;
  double hdop = NA_DOUBLE;
  double speedKnots = NA_DOUBLE;
  double courseTrue = NA_DOUBLE;
  unsigned char satellites = NA_U8;         // in use
  eNmeaModeIndicator fix = eNmeaModeEmpty;  // empty: there is a fix of an unknown kind
};

// What one sentence says.
struct S_PositionReport {
  bool hasFix;
  S_Position position;
};

// The position of an epoch comes from the first of GGA, GNS, RMC and GLL that has a fix; values that it lacks are
// filled in from the next, speed and course also from VTG. Of two sentences of a kind the first with a fix counts.
class C_BestPosition {
 public:
  enum eSource { Gga, Gns, Rmc, Gll, kNumSources };  // the best first

  // Nothing for a record that carries no position.
  static std::optional<eSource> SourceOf(const velagnss::Record& record);

  // Takes one of the five sentences and ignores every other record.
  void Take(const velagnss::Record& record);

  bool Has(eSource source) const { return m_reports[source].has_value(); }

  // Whether there was no sentence with a position, with a fix or without one.
  bool IsEmpty() const;

  // Nothing without a fix.
  std::optional<S_Position> Best() const;

 private:
  void Keep(eSource source, const S_PositionReport& report);

  std::array<std::optional<S_PositionReport>, kNumSources> m_reports;
  S_Position m_velocity;  // from VTG
};

}  // namespace Host

#endif  // VELAGNSS_APPS_BEST_POSITION_H
