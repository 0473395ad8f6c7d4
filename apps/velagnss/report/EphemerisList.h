// The ephemerides that a stream brings.
#ifndef VELAGNSS_APPS_EPHEMERIS_LIST_H
#define VELAGNSS_APPS_EPHEMERIS_LIST_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// The ephemerides of one satellite that came in one message.
struct S_SatelliteEphemerides {
  using t_Issue = std::pair<std::uint32_t, double>;  // issue of data and reference time, s of the week

  void NoteIssue(const t_Issue& latest);

  unsigned int system = 0;  // ALGO::eGNSSSystem
  unsigned int number = 0;  // of its system: PRN, GLONASS slot
  std::string message;

  std::uint64_t count = 0;
  std::uint64_t issues = 0;  // that differ in issue or reference time from the four before them
  std::array<t_Issue, 4> last{};
  double firstTime = 0;  // s, of the stream; NaN before its first time
  double lastTime = 0;   // likewise

  // Of the last one.
  std::uint32_t issue = 0;
  std::optional<double> reference;      // GPS time, s since 6 January 1980; none when its week is not known
  std::optional<std::uint32_t> health;  // as sent
  bool isHealthy = false;
};

// At most 512 of them.
class C_EphemerisList {
 public:
  // Ignores every record that is not an ephemeris.
  void Note(const S_FrameRecord& record);

  // `clock` is that of the end of the stream.
  void Write(C_JsonWriter& json, const velagnss::StreamClock& clock) const;

 private:
  static constexpr std::size_t kMaxRows = 512;

  template <class Ephemeris>
  void Add(const Ephemeris& ephemeris, const S_FrameRecord& record);
  S_SatelliteEphemerides* RowOf(unsigned int system, unsigned int number, std::string_view message);

  std::vector<S_SatelliteEphemerides> m_rows;
  std::uint64_t m_leftOut = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_EPHEMERIS_LIST_H
