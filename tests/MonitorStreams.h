// Streams for the monitor, and a model that is fed with them second by second.
#ifndef VELAGNSS_TESTS_MONITOR_STREAMS_H
#define VELAGNSS_TESTS_MONITOR_STREAMS_H

#include <fmt/core.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/monitor/SourceModel.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "tests/Streams.h"

// 12:00:00 UTC and some seconds on 16 May 2024.
inline std::string ClockOf(int second) { return fmt::format("12{:02}{:02}", second / 60, second % 60); }
inline std::string Rmc(int second) {
  return Sentence("GNRMC," + ClockOf(second) + ",A,5130.0,N,00007.5,W,10.0,84.4,160524,,,R,V");
}
inline std::string Gga(int second, int quality = 4) {
  const char* const place = quality == 0 ? ",,,,,0,00,,,M,,M,," : ",5130.0,N,00007.5,W,4,07,0.9,45.5,M,47.0,M,,";
  return Sentence("GNGGA," + ClockOf(second) + place);
}
inline std::string Gst(int second) { return Sentence("GNGST," + ClockOf(second) + ",1.0,,,,0.012,0.015,0.021"); }
inline const std::string kUsed = Sentence("GNGSA,A,3,05,12,,,,,,,,,,,1.5,0.9,1.2,1");
inline const std::string kGpsInView = Sentence("GPGSV,1,1,03,05,66,212,48,12,45,260,42,29,09,330,31,1");
inline const std::string kGlonassInView = Sentence("GLGSV,1,1,01,68,80,301,45,1");

// All that a good receiver sends each second.
inline std::string Epoch(int second) {
  return Rmc(second) + Gga(second) + Gst(second) + kUsed + kGpsInView + kGlonassInView;
}

// A model, the machine's clock that it sees, and the run that feeds it.
class C_Watched {
 public:
  explicit C_Watched(bool isLive = true) : m_isLive(isLive) { m_run.BeginInput("port"); }

  Host::C_SourceModel& Model() { return m_model; }
  void Feed(std::string_view bytes) {
    m_run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, m_now, m_isLive});
  }
  void Wait(double seconds) { m_now += std::chrono::microseconds(static_cast<long>(seconds * 1e6)); }
  void End() { m_run.EndInput(); }
  void Change(Host::S_LinkChange::eState state, unsigned int failures = 0) {
    m_run.OnLink({state, "far end", {}, failures, m_now});
  }
  Host::S_SourceView View() const { return m_model.Snapshot(); }

 private:
  using t_Clock = Host::S_Chunk::t_Clock;

  bool m_isLive;
  t_Clock::time_point m_now{std::chrono::seconds(1715860800)};
  Host::C_SourceModel m_model{"port", [this] { return m_now; }};
  Host::C_RecordRun m_run{{{C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}, std::nullopt}, {&m_model}};
};

#endif  // VELAGNSS_TESTS_MONITOR_STREAMS_H
