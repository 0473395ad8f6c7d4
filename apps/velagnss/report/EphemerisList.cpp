#include "apps/velagnss/report/EphemerisList.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "apps/velagnss/account/ObservationSummary.h"
#include "apps/velagnss/account/PointNames.h"
#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"
#include "positioning/SatelliteOrbit.h"
#include "stream/Names.h"

namespace Host {
namespace {

std::uint32_t IssueOf(const S_IFKeplerEphRec& ephemeris) { return ephemeris.Iode; }
std::uint32_t IssueOf(const S_IFPvaEphRec& ephemeris) { return ephemeris.Iod; }
double ReferenceSeconds(const S_IFKeplerEphRec& ephemeris) { return ephemeris.Toe; }
double ReferenceSeconds(const S_IFPvaEphRec& ephemeris) { return ephemeris.RefTime; }

// Empty for a week that cannot be: the seed may be wrong.
C_TimeText UtcText(double gpsSeconds) {
  const double week = std::floor(gpsSeconds / kSecondsPerWeek);
  if (!(week >= 0 && week < NA_U16)) return {};
  const velagnss::UtcTime utc =
      velagnss::UtcOfGps({static_cast<unsigned short>(week), gpsSeconds - week * kSecondsPerWeek, ALGO::GNSS_GPS});
  return C_TimeText::Utc(utc.mjd, utc.secondsOfDay);
}

// GPS time of the last time of a stream, s since 6 January 1980; nothing without a date.
std::optional<double> GpsSeconds(const velagnss::StreamClock& clock) {
  const velagnss::StreamClock::Utc utc = clock.UtcOf(clock.Seconds());
  if (!utc.mjd || std::isnan(utc.secondsOfDay)) return std::nullopt;
  const C_GnssTime time = velagnss::GpsOfUtc({*utc.mjd, utc.secondsOfDay});
  return time.m_week * kSecondsPerWeek + time.m_secOfWeek;
}

}  // namespace

void S_SatelliteEphemerides::NoteIssue(const t_Issue& latest) {
  const auto known = last.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(issues, last.size()));
  if (std::find(last.begin(), known, latest) == known) last[issues++ % last.size()] = latest;
}

void C_EphemerisList::Note(const S_FrameRecord& record) {
  const auto note = [&](const auto& kind) {
    if constexpr (requires { kind.ephemeris; }) Add(kind.ephemeris, record);
    if constexpr (requires { IssueOf(kind); }) Add(kind, record);
  };
  std::visit(note, record.decoded.record);
}

template <class Ephemeris>
void C_EphemerisList::Add(const Ephemeris& ephemeris, const S_FrameRecord& record) {
  const velagnss::MessageName message(record.frame.protocol, record.frame.message);
  S_SatelliteEphemerides* const row = RowOf(ephemeris.System, ephemeris.SvId, message.Text());
  if (row == nullptr) return void(++m_leftOut);
  row->lastTime = record.clock.Seconds();
  if (row->count++ == 0) row->firstTime = row->lastTime;
  row->issue = IssueOf(ephemeris);
  row->NoteIssue({row->issue, ReferenceSeconds(ephemeris)});
  row->reference.reset();
  if (record.decoded.week != velagnss::WeekSource::None) row->reference = ReferenceOf(ephemeris);
  row->health = IsNotAvailable(ephemeris.Health) ? std::nullopt : std::optional(ephemeris.Health);
  row->isHealthy = velagnss::IsHealthy(ephemeris);
}

// A linear search: a stream has some hundred rows, and an ephemeris comes now and then.
S_SatelliteEphemerides* C_EphemerisList::RowOf(unsigned int system, unsigned int number, std::string_view message) {
  if (system >= ALGO::GNSS_UNKNOWN || IsNotAvailable(static_cast<unsigned char>(number))) return nullptr;
  const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const S_SatelliteEphemerides& row) {
    return row.system == system && row.number == number && row.message == message;
  });
  if (found != m_rows.end()) return &*found;
  if (m_rows.size() == kMaxRows) return nullptr;
  S_SatelliteEphemerides& row = m_rows.emplace_back();
  row.system = system;
  row.number = number;
  row.message = message;
  return &row;
}

void C_EphemerisList::Write(C_JsonWriter& json, const velagnss::StreamClock& clock) const {
  const std::optional<double> end = GpsSeconds(clock);
  const auto time = [&](double seconds) { json.StringOrNull(C_TimeText::StreamTime(clock, seconds).Text()); };
  std::vector<S_SatelliteEphemerides> rows = m_rows;
  std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
    return std::tie(a.system, a.number, a.message) < std::tie(b.system, b.number, b.message);
  });
  json.Key("ephemerides").BeginArray();
  for (const S_SatelliteEphemerides& row : rows) {
    json.BeginObject();
    json.Key("system").String(velagnss::SystemName(ALGO::eGNSSSystem{row.system}));
    json.Key("number").Integer(row.number);
    json.Key("name").String(PointSatelliteName(row.system, row.number));
    json.Key("message").String(row.message);
    json.Key("count").Integer(row.count);
    json.Key("issues").Integer(row.issues);
    json.Key("issue").Integer(row.issue);
    json.Key("reference_time").StringOrNull(row.reference ? UtcText(*row.reference).Text() : std::string_view());
    json.Key("health").IntegerOrNull(row.health);
    json.Key("healthy").Boolean(row.isHealthy);
    json.Key("first"), time(row.firstTime);
    json.Key("last"), time(row.lastTime);
    json.Key("age_s").Number(row.reference && end ? *end - *row.reference : kNotKnown);
    json.EndObject();
  }
  json.EndArray();
  json.Key("ephemerides_left_out").Integer(m_leftOut);
}

}  // namespace Host
