#include <fmt/core.h>

#include "apps/velagnss/track/TrackFormat.h"
#include "apps/velagnss/track/XmlText.h"

namespace Host {
namespace {

// An element around a number; nothing when it is not known.
void AppendElement(std::string& text, std::string_view name, double value) {
  if (!IsKnown(value)) return;
  text.append("<").append(name).append(">");
  AppendDecimal(text, value);
  text.append("</").append(name).append(">");
}
void AppendElement(std::string& text, std::string_view name, std::string_view content) {
  if (content.empty()) return;
  text.append("<").append(name).append(">").append(content).append("</").append(name).append(">");
}

// GPX 1.1, fixType: "2d", "3d", "dgps" for everything that uses corrections, "pps" for the precise code. Positions that
// do not come from satellites have none.
std::string_view FixText(const S_TrackPoint& point) {
  switch (point.fix) {
    case eNmeaModeAutonomous:
      return IsKnown(point.altitude) ? "3d" : "2d";
    case eNmeaModeDifferential:
    case eNmeaModeRtk:
    case eNmeaModeRtkFloat:
      return "dgps";
    case eNmeaModePrecise:
      return "pps";
    default:
      return "";
  }
}

// GPX 1.1, longitudeType: 180 itself is excluded, also after rounding to the digits that are written.
double LongitudeBelow180(double longitude) {
  constexpr double kHalfDigit = 0.5e-9;
  return longitude >= 180 - kHalfDigit ? -180 : longitude;
}

class C_GpxTrack : public C_TrackFormat {
 public:
  void Begin(std::string& text) override {
    text +=
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<gpx version=\"1.1\" creator=\"velagnss\" xmlns=\"http://www.topografix.com/GPX/1/1\""
        " xmlns:gpxtpx=\"http://www.garmin.com/xmlschemas/TrackPointExtension/v2\""
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xsi:schemaLocation=\"http://www.topografix.com/GPX/1/1 http://www.topografix.com/GPX/1/1/gpx.xsd\">\n";
  }
  void BeginTrack(std::string_view name, std::string& text) override {
    text.append("<trk>\n<name>").append(XmlText(name)).append("</name>\n");
  }
  void BeginSegment(std::string& text) override { text += "<trkseg>\n"; }
  void Add(const S_TrackPoint& point, std::string& text) override;
  void EndSegment(std::string& text) override { text += "</trkseg>\n"; }
  void EndTrack(std::string& text) override { text += "</trk>\n"; }
  void End(std::string& text) override { text += "</gpx>\n"; }
};

// GPX 1.1 has no speed of its own; this extension is the one that programs know. Speeds are in m/s, courses from 0 to
// 360 degrees.
void AppendMotion(const S_TrackPoint& point, std::string& text) {
  constexpr double kMetersPerSecond = 1852.0 / 3600;  // of a knot
  const bool hasSpeed = IsKnown(point.speedKnots) && point.speedKnots >= 0;
  const bool hasCourse = IsKnown(point.courseTrue) && point.courseTrue >= 0 && point.courseTrue <= 360;
  if (!hasSpeed && !hasCourse) return;
  text += "<extensions><gpxtpx:TrackPointExtension>";
  if (hasSpeed)
    AppendElement(text, "gpxtpx:speed", std::string_view(fmt::format("{:.3f}", point.speedKnots * kMetersPerSecond)));
  AppendElement(text, "gpxtpx:course", hasCourse ? point.courseTrue : NA_DOUBLE);
  text += "</gpxtpx:TrackPointExtension></extensions>";
}

// The order of the elements is part of the format.
void C_GpxTrack::Add(const S_TrackPoint& point, std::string& text) {
  text += "<trkpt lat=\"";
  AppendDegrees(text, point.latitude);
  text += "\" lon=\"";
  AppendDegrees(text, LongitudeBelow180(point.longitude));
  text += "\">";
  AppendElement(text, "ele", point.altitude);
  if (point.isDated) AppendElement(text, "time", point.time.Text());
  AppendElement(text, "geoidheight", point.geoidSeparation);
  AppendElement(text, "fix", FixText(point));
  if (!IsNotAvailable(point.satellites)) AppendElement(text, "sat", std::to_string(point.satellites));
  AppendElement(text, "hdop", point.hdop);
  AppendMotion(point, text);
  text += "</trkpt>\n";
}

}  // namespace

std::unique_ptr<C_TrackFormat> MakeGpxTrack() { return std::make_unique<C_GpxTrack>(); }

}  // namespace Host
