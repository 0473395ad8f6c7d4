#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/track/TrackFormat.h"

namespace Host {
namespace {

// A position in the order of RFC 7946: longitude, latitude, and the altitude if there is one.
void AppendPosition(std::string& text, double longitude, double latitude, double altitude) {
  text += '[';
  AppendDegrees(text, longitude);
  text += ',';
  AppendDegrees(text, latitude);
  if (IsKnown(altitude)) {
    text += ',';
    AppendDecimal(text, altitude);
  }
  text += ']';
}

void AppendMember(std::string& text, std::string_view name, double value) {
  text.append(",\"").append(name).append("\":");
  if (!IsKnown(value)) return void(text += "null");
  AppendDecimal(text, value);
}
void AppendMember(std::string& text, std::string_view name, std::string_view value) {
  text.append(",\"").append(name).append("\":");
  if (value.empty()) return void(text += "null");
  text.append("\"").append(value).append("\"");
}

// Each point is a feature with what is known of it. A segment of two or more points is another feature after them: a
// line, cut where it crosses the antimeridian (RFC 7946, 3.1.9).
class C_GeoJsonTrack : public C_TrackFormat {
 public:
  void Begin(std::string& text) override { text += "{\"type\":\"FeatureCollection\",\"features\":[\n"; }
  void BeginSegment(std::string& text) override;
  void Add(const S_TrackPoint& point, std::string& text) override;
  void EndSegment(std::string& text) override;
  void End(std::string& text) override { text += "]}\n"; }

 private:
  void BeginFeature(std::string_view geometry, std::string& text);
  void EndFeature(std::string& text) { text += "}}\n"; }
  void AppendToLine(const S_TrackPoint& point);
  void CutLine(const S_TrackPoint& point);

  unsigned int m_segment = 0;
  bool m_isFirstFeature = true;
  std::size_t m_count = 0;  // points of the segment
  S_TrackPoint m_last;      // of them
  C_SpilledText m_line;     // the segment's positions
  bool m_isCut = false;
};

void C_GeoJsonTrack::BeginFeature(std::string_view geometry, std::string& text) {
  AppendFormat(text,
               "{}{{\"type\":\"Feature\",\"geometry\":{{\"type\":\"{}\",\"coordinates\":", m_isFirstFeature ? "" : ",",
               geometry);
  m_isFirstFeature = false;
}

void C_GeoJsonTrack::BeginSegment(std::string&) {
  ++m_segment;
  m_count = 0;
  m_line = C_SpilledText();
  m_isCut = false;
}

void C_GeoJsonTrack::Add(const S_TrackPoint& point, std::string& text) {
  BeginFeature("Point", text);
  AppendPosition(text, point.longitude, point.latitude, point.altitude);
  AppendFormat(text, "}},\"properties\":{{\"segment\":{}", m_segment);
  AppendMember(text, "time_utc", point.time.Text());
  AppendMember(text, "fix", ModeName(point.fix));
  AppendMember(text, "satellites", IsNotAvailable(point.satellites) ? NA_DOUBLE : point.satellites);
  AppendMember(text, "hdop", point.hdop);
  AppendMember(text, "geoid_separation_m", point.geoidSeparation);
  AppendMember(text, "speed_knots", point.speedKnots);
  AppendMember(text, "course_true_deg", point.courseTrue);
  EndFeature(text);
  AppendToLine(point);
}

void C_GeoJsonTrack::AppendToLine(const S_TrackPoint& point) {
  if (m_count > 0 && std::abs(point.longitude - m_last.longitude) > 180) CutLine(point);
  std::string position(!m_line.IsEmpty() && m_line.Last() == ']' ? "," : "");
  AppendPosition(position, point.longitude, point.latitude, point.altitude);
  m_line.Append(position);
  m_last = point;
  ++m_count;
}

// Ends one part of the line on the antimeridian and begins the next on its other side.
void C_GeoJsonTrack::CutLine(const S_TrackPoint& point) {
  const double side = m_last.longitude > 0 ? 180 : -180;
  const double whole = point.longitude + 2 * side - m_last.longitude;
  const double share = whole == 0 ? 0 : (side - m_last.longitude) / whole;
  const double latitude = m_last.latitude + share * (point.latitude - m_last.latitude);
  const bool hasAltitude = IsKnown(point.altitude) && IsKnown(m_last.altitude);
  const double altitude = hasAltitude ? m_last.altitude + share * (point.altitude - m_last.altitude) : NA_DOUBLE;
  std::string cut(",");
  AppendPosition(cut, side, latitude, altitude);
  cut += "],[";
  AppendPosition(cut, -side, latitude, altitude);
  m_line.Append(cut);
  m_isCut = true;
}

void C_GeoJsonTrack::EndSegment(std::string& text) {
  if (m_count < 2) return;
  BeginFeature(m_isCut ? "MultiLineString" : "LineString", text);
  text += m_isCut ? "[[" : "[";
  AppendSpilled(m_line, text);
  AppendFormat(text, "{}}},\"properties\":{{\"segment\":{}", m_isCut ? "]]" : "]", m_segment);
  EndFeature(text);
}

}  // namespace

std::unique_ptr<C_TrackFormat> MakeGeoJsonTrack() { return std::make_unique<C_GeoJsonTrack>(); }

}  // namespace Host
