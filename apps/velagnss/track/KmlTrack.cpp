#include <fmt/format.h>

#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/track/TrackFormat.h"

namespace Host {
namespace {

// What decides how a run of points is drawn.
struct S_RunForm {
  bool isDated = false;
  bool hasAltitude = false;
  friend bool operator==(const S_RunForm&, const S_RunForm&) = default;
};

// A segment is one Placemark or several: a new one begins where dates or altitudes appear or disappear. With dates it
// is a gx:Track, which lists all times, then all positions, then the rest, so it is kept until it is complete. A
// gx:Track needs a date for each position; without dates the segment is a line.
class C_KmlTrack : public C_TrackFormat {
 public:
  void Begin(std::string& text) override;
  void Add(const S_TrackPoint& point, std::string& text) override;
  void EndSegment(std::string& text) override { WriteRun(text); }
  void End(std::string& text) override { text += "</Document>\n</kml>\n"; }

 private:
  void WriteRun(std::string& text);
  void WriteTrack(std::string& text);
  void WriteLine(std::string& text);

  S_RunForm m_form;
  std::size_t m_count = 0;
  C_SpilledText m_times;
  C_SpilledText m_positions;
  C_SpilledText m_fixes;
  C_SpilledText m_satellites;
  C_SpilledText m_hdops;
};

void C_KmlTrack::Begin(std::string& text) {
  text +=
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<kml xmlns=\"http://www.opengis.net/kml/2.2\" xmlns:gx=\"http://www.google.com/kml/ext/2.2\">\n"
      "<Document>\n"
      "<Schema id=\"point\">\n"
      "<gx:SimpleArrayField name=\"fix\" type=\"string\"/>\n"
      "<gx:SimpleArrayField name=\"satellites\" type=\"int\"/>\n"
      "<gx:SimpleArrayField name=\"hdop\" type=\"double\"/>\n"
      "</Schema>\n";
}

void C_KmlTrack::Add(const S_TrackPoint& point, std::string& text) {
  const S_RunForm form = {point.isDated, IsKnown(point.altitude)};
  if (form != m_form) WriteRun(text);
  m_form = form;
  ++m_count;
  const char separator = form.isDated ? ' ' : ',';
  std::string position(form.isDated ? "<gx:coord>" : "");
  AppendDegrees(position, point.longitude);
  position += separator;
  AppendDegrees(position, point.latitude);
  position += separator;
  AppendDecimal(position, form.hasAltitude ? point.altitude : 0);
  m_positions.Append(position + (form.isDated ? "</gx:coord>\n" : "\n"));
  if (!form.isDated) return;
  const auto append = [](C_SpilledText& to, std::string_view value) {
    to.Append(fmt::format("<gx:value>{}</gx:value>\n", value));
  };
  m_times.Append(fmt::format("<when>{}</when>\n", point.time.Text()));
  append(m_fixes, ModeName(point.fix));
  append(m_satellites, IsNotAvailable(point.satellites) ? "" : std::to_string(point.satellites));
  std::string hdop;
  if (IsKnown(point.hdop)) AppendDecimal(hdop, point.hdop);
  append(m_hdops, hdop);
}

void C_KmlTrack::WriteRun(std::string& text) {
  if (m_count == 0) return;
  text += "<Placemark>\n";
  if (m_form.isDated)
    WriteTrack(text);
  else
    WriteLine(text);
  text += "</Placemark>\n";
  m_count = 0;
}

// Altitudes of KML are those above mean sea level.
std::string_view AltitudeMode(bool hasAltitude) {
  return hasAltitude ? "<altitudeMode>absolute</altitudeMode>\n" : "<altitudeMode>clampToGround</altitudeMode>\n";
}

void C_KmlTrack::WriteTrack(std::string& text) {
  text.append("<gx:Track>\n").append(AltitudeMode(m_form.hasAltitude));
  AppendSpilled(m_times, text);
  AppendSpilled(m_positions, text);
  text += "<ExtendedData><SchemaData schemaUrl=\"#point\">\n";
  const auto appendArray = [&](std::string_view name, C_SpilledText& values) {
    fmt::format_to(std::back_inserter(text), "<gx:SimpleArrayData name=\"{}\">\n", name);
    AppendSpilled(values, text);
    text += "</gx:SimpleArrayData>\n";
  };
  appendArray("fix", m_fixes);
  appendArray("satellites", m_satellites);
  appendArray("hdop", m_hdops);
  text += "</SchemaData></ExtendedData>\n</gx:Track>\n";
}

// A LineString needs two positions.
void C_KmlTrack::WriteLine(std::string& text) {
  const std::string_view element = m_count == 1 ? "Point" : "LineString";
  fmt::format_to(std::back_inserter(text), "<{}>\n{}<coordinates>\n", element, AltitudeMode(m_form.hasAltitude));
  AppendSpilled(m_positions, text);
  fmt::format_to(std::back_inserter(text), "</coordinates>\n</{}>\n", element);
}

}  // namespace

std::unique_ptr<C_TrackFormat> MakeKmlTrack() { return std::make_unique<C_KmlTrack>(); }

}  // namespace Host
