#include <fmt/core.h>

#include <array>

#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/track/TrackFormat.h"
#include "apps/velagnss/track/XmlText.h"

namespace Host {
namespace {

// What decides how a run of points is drawn.
struct S_RunForm {
  bool isDated = false;
  bool hasAltitude = false;
  friend bool operator==(const S_RunForm&, const S_RunForm&) = default;
};

// What is known of a point beside its time and place, as an array of its track.
struct S_PointArray {
  std::string_view name;
  std::string_view type;
  std::string (*value)(const S_TrackPoint& point);  // empty when it is not known
};

template <auto Member>
std::string Decimal(const S_TrackPoint& point) {
  std::string text;
  if (IsKnown(point.*Member)) AppendDecimal(text, point.*Member);
  return text;
}
std::string Fix(const S_TrackPoint& point) { return std::string(ModeName(point.fix)); }
std::string Satellites(const S_TrackPoint& point) {
  return IsNotAvailable(point.satellites) ? "" : std::to_string(point.satellites);
}

constexpr S_PointArray kArrays[] = {
    {"fix", "string", &Fix},
    {"satellites", "int", &Satellites},
    {"hdop", "double", &Decimal<&S_TrackPoint::hdop>},
    {"speed_knots", "double", &Decimal<&S_TrackPoint::speedKnots>},
    {"course_true_deg", "double", &Decimal<&S_TrackPoint::courseTrue>},
};

// An input is a Folder. A segment is one Placemark or several: a new one begins where dates or altitudes appear or
// disappear. With dates it is a gx:Track, which lists all times, then all positions, then the rest, so it is kept until
// it is complete. A gx:Track needs a date for each position; without dates the segment is a line.
class C_KmlTrack : public C_TrackFormat {
 public:
  void Begin(std::string& text) override;
  void BeginTrack(std::string_view name, std::string& text) override {
    text.append("<Folder>\n<name>").append(XmlText(name)).append("</name>\n");
  }
  void BeginSegment(std::string&) override { ++m_segment; }
  void Add(const S_TrackPoint& point, std::string& text) override;
  void EndSegment(std::string& text) override { WriteRun(text); }
  void EndTrack(std::string& text) override { text += "</Folder>\n"; }
  void End(std::string& text) override { text += "</Document>\n</kml>\n"; }

 private:
  void WriteRun(std::string& text);
  void WriteTrack(std::string& text);
  void WriteLine(std::string& text);

  unsigned int m_segment = 0;
  S_RunForm m_form;
  std::size_t m_count = 0;
  C_SpilledText m_times;
  C_SpilledText m_positions;
  std::array<C_SpilledText, std::size(kArrays)> m_arrays;
};

void C_KmlTrack::Begin(std::string& text) {
  text +=
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<kml xmlns=\"http://www.opengis.net/kml/2.2\" xmlns:gx=\"http://www.google.com/kml/ext/2.2\">\n"
      "<Document>\n"
      "<Schema id=\"point\">\n";
  for (const S_PointArray& array : kArrays)
    AppendFormat(text, "<gx:SimpleArrayField name=\"{}\" type=\"{}\"/>\n", array.name, array.type);
  text += "</Schema>\n";
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
  m_times.Append(fmt::format("<when>{}</when>\n", point.time.Text()));
  for (std::size_t i = 0; i < m_arrays.size(); ++i)
    m_arrays[i].Append(fmt::format("<gx:value>{}</gx:value>\n", kArrays[i].value(point)));
}

void C_KmlTrack::WriteRun(std::string& text) {
  if (m_count == 0) return;
  AppendFormat(text, "<Placemark>\n<name>segment {}</name>\n", m_segment);
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
  for (std::size_t i = 0; i < m_arrays.size(); ++i) {
    AppendFormat(text, "<gx:SimpleArrayData name=\"{}\">\n", kArrays[i].name);
    AppendSpilled(m_arrays[i], text);
    text += "</gx:SimpleArrayData>\n";
  }
  text += "</SchemaData></ExtendedData>\n</gx:Track>\n";
}

// A LineString needs two positions.
void C_KmlTrack::WriteLine(std::string& text) {
  const std::string_view element = m_count == 1 ? "Point" : "LineString";
  AppendFormat(text, "<{}>\n{}<coordinates>\n", element, AltitudeMode(m_form.hasAltitude));
  AppendSpilled(m_positions, text);
  AppendFormat(text, "</coordinates>\n</{}>\n", element);
}

}  // namespace

std::unique_ptr<C_TrackFormat> MakeKmlTrack() { return std::make_unique<C_KmlTrack>(); }

}  // namespace Host
