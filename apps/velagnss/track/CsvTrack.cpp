#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/track/TrackFormat.h"

namespace Host {
namespace {

constexpr std::string_view kLineEnd = "\r\n";  // RFC 4180

void AppendField(std::string& text, double value) {
  text += ',';
  if (IsKnown(value)) AppendDecimal(text, value);
}

// No value holds a comma, a quote or a line end, so none needs quotes.
class C_CsvTrack : public C_TrackFormat {
 public:
  void Begin(std::string& text) override {
    text += "segment,time_utc,latitude_deg,longitude_deg,altitude_m,geoid_separation_m,fix,satellites,hdop,";
    text.append("speed_knots,course_true_deg").append(kLineEnd);
  }
  void BeginSegment(std::string&) override { ++m_segment; }
  void Add(const S_TrackPoint& point, std::string& text) override;

 private:
  unsigned int m_segment = 0;
};

void C_CsvTrack::Add(const S_TrackPoint& point, std::string& text) {
  AppendFormat(text, "{},{},", m_segment, point.time.Text());
  AppendDegrees(text, point.latitude);
  text += ',';
  AppendDegrees(text, point.longitude);
  AppendField(text, point.altitude);
  AppendField(text, point.geoidSeparation);
  text.append(",").append(ModeName(point.fix)).append(",");
  if (!IsNotAvailable(point.satellites)) text += std::to_string(point.satellites);
  AppendField(text, point.hdop);
  AppendField(text, point.speedKnots);
  AppendField(text, point.courseTrue);
  text += kLineEnd;
}

}  // namespace

std::unique_ptr<C_TrackFormat> MakeCsvTrack() { return std::make_unique<C_CsvTrack>(); }

}  // namespace Host
