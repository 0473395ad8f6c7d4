// The records beyond the eight as tests handle them: one list of their members serves all.
#ifndef VELAGNSS_TESTS_NMEA_MORE_RECORDS_H
#define VELAGNSS_TESTS_NMEA_MORE_RECORDS_H

#include <string>
#include <variant>

#include "tests/NmeaSentences.h"
#include "textproto/NmeaSentenceCodec.h"

namespace MoreRecords {

using namespace velagnss;

// Calls `use` with all members but the talker.
// clang-format off
template <class R, class Use>
auto Members(R& r, const Use& use) {
  if constexpr (requires { r.rangeRms; }) return use(r.timeOfDay, r.rangeRms, r.semiMajor, r.semiMinor, r.orientation, r.latitudeDeviation, r.longitudeDeviation, r.altitudeDeviation);
  else if constexpr (requires { r.biasDeviation; }) return use(r.timeOfDay, r.latitudeError, r.longitudeError, r.altitudeError, r.satelliteId, r.probability, r.bias, r.biasDeviation, r.systemId, r.signalId);
  else if constexpr (requires { r.residual; }) return use(r.timeOfDay, r.mode, r.residual, r.systemId, r.signalId);
  else if constexpr (requires { r.headingSensor; }) return use(r.headingSensor, r.deviation, r.deviationDirection, r.variation, r.variationDirection);
  else if constexpr (requires { r.rate; }) return use(r.rate, r.status);
  else if constexpr (requires { r.localDatum; }) return use(r.localDatum, r.subdivision, r.latitudeOffset, r.latitudeDirection, r.longitudeOffset, r.longitudeDirection, r.altitudeOffset, r.referenceDatum);
  else if constexpr (requires { r.identifier; }) return use(r.totalSentences, r.sentenceNumber, r.identifier, r.text);
  else if constexpr (requires { r.headingMagnetic; }) return use(r.headingTrue, r.headingMagnetic, r.speedKnots, r.speedKmh);
  else if constexpr (requires { r.depthFeet; }) return use(r.depthFeet, r.depthMeters, r.depthFathoms);
  else if constexpr (requires { r.maxRange; }) return use(r.depth, r.offset, r.maxRange);
  else if constexpr (requires { r.temperature; }) return use(r.temperature);
  else if constexpr (requires { r.speedUnit; }) return use(r.angle, r.reference, r.speed, r.speedUnit, r.status);
  else if constexpr (requires { r.totalWater; }) return use(r.totalWater, r.tripWater, r.totalGround, r.tripGround);
  else if constexpr (requires { r.closingSpeed; }) return use(r.status, r.crossTrackError, r.steer, r.origin, r.destination, r.latitude, r.longitude, r.range, r.bearingTrue, r.closingSpeed, r.arrival, r.mode);
  else if constexpr (requires { r.perpendicular; }) return use(r.status, r.lockStatus, r.crossTrackError, r.steer, r.arrival, r.perpendicular, r.bearingOrigin, r.bearingOriginReference, r.destination, r.bearing, r.bearingReference, r.headingToSteer, r.headingReference, r.mode);
  else if constexpr (requires { r.lockStatus; }) return use(r.status, r.lockStatus, r.crossTrackError, r.steer, r.mode);
  else if constexpr (requires { r.distance; }) return use(r.timeOfDay, r.latitude, r.longitude, r.bearingTrue, r.bearingMagnetic, r.distance, r.waypoint, r.mode);
  else if constexpr (requires { r.waypoint; }) return use(r.latitude, r.longitude, r.waypoint);
  else if constexpr (requires { r.mode; }) return use(r.headingTrue, r.mode);
  else return use(r.headingTrue);
}
// clang-format on

struct S_Line {
  template <class R>
  std::string operator()(const R& record) const {
    if constexpr (requires { NmeaLine(record); }) {
      return NmeaLine(record);
    } else {
      const auto line = [&record](const auto&... members) {
        return RecordLine(TalkerText(record.talker), Shown(members)...);
      };
      return Members(record, line);
    }
  }
  std::string operator()(const OtherSentence& record) const {
    std::string line = record.start + std::string(record.address);
    for (const std::string_view field : record.fields) line += "|" + std::string(field);
    return line;
  }

  template <class Value>
  static const Value& Shown(const Value& value) {
    return value;
  }
  static std::string Shown(std::string_view text) { return '"' + std::string(text) + '"'; }
  static unsigned int Shown(eNmeaModeIndicator mode) { return mode; }
};

// Formatter or address, and the members: "-" for not available, "." for a letter that is missing.
inline std::string Line(const NmeaRecord& record) { return std::visit(S_Line(), record); }

}  // namespace MoreRecords

#endif  // VELAGNSS_TESTS_NMEA_MORE_RECORDS_H
