// What the headers of all RINEX files have in common, and what of it the stream says.
#ifndef VELAGNSS_APPS_RINEX_HEADER_H
#define VELAGNSS_APPS_RINEX_HEADER_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/rinex/RinexOptions.h"

namespace Host {

// Facts about the stream that the headers need.
class C_StreamFacts {
 public:
  void Note(const velagnss::Record& record);
  void EndInput(const S_InputEnd& end);

  // "20240518 220000 UTC": the current time, or the last one that the stream's sentences gave, or `lastEpoch`, in
  // seconds since 6 January 1980.
  std::string RunDate(const S_RinexOptions& options, double lastEpoch) const;

  // GPS time - UTC at a time in seconds since 6 January 1980.
  unsigned int LeapSeconds(double epoch) const;

 private:
  std::string m_lastDate;  // ISO 8601
  std::optional<unsigned char> m_leapSeconds;
};

// What could not be written, by the reason.
class C_LeftOut {
 public:
  // `where` is for users who want every detail.
  void Add(std::string_view where, const std::string& reason);
  bool IsEmpty() const { return m_counts.empty(); }
  void Report(std::string_view what) const;  // "ephemerides"

 private:
  std::map<std::string, unsigned int> m_counts;
};

// The first two lines.
struct S_RinexKind {
  double version;
  std::string_view type;    // "OBSERVATION DATA"
  std::string_view system;  // "G: GPS"
};
void AppendFirstLines(std::string& text, const S_RinexKind& kind, const S_RinexOptions& options,
                      const std::string& runDate);

void AppendLeapSeconds(std::string& text, unsigned int seconds);

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_HEADER_H
