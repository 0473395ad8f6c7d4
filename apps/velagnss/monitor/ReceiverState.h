// The receivers of a stream: the one that sends sentences, and reference stations.
#ifndef VELAGNSS_APPS_RECEIVER_STATE_H
#define VELAGNSS_APPS_RECEIVER_STATE_H

#include <optional>
#include <vector>

#include "apps/velagnss/epoch/EpochBuilder.h"
#include "apps/velagnss/monitor/Noted.h"
#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

// Keeps the last of each value, because an epoch need not have all of them: receivers send GSV and GSA now and then.
// Memory is bounded: 64 stations, the satellites of the last seconds.
class C_ReceiverState {
 public:
  // `now`: when the frame came; NaN while the stream has no time.
  void Take(const S_FrameRecord& record, double now);
  void Finish(const velagnss::StreamClock& clock);

  // The usual time between epochs, s; 0 when it is not known.
  double EpochInterval() const { return m_interval; }

  void Show(S_SourceView& view, const S_AgeClock& clock) const;

 private:
  struct S_Station {
    S_StationView view = {};
    double lastAt = 0;
    std::optional<S_Noted<t_Sky>> sky = {};
  };
  struct S_Seen {
    S_EpochSatellite satellite;
    double at;
    double usedAt = kNoAge;
  };

  void Take(const S_Epoch& epoch);
  void TakeSentences(const S_Epoch& epoch);
  void TakeFix(const S_Epoch& epoch);
  void TakeCounts(const S_Epoch& epoch);
  void TakeSatellites(const S_Epoch& epoch);
  void TakeUse(const S_Epoch& epoch, double kept);
  S_Seen& SeenOf(const S_EpochSatellite& satellite);
  t_Sky SkyOfSeen() const;
  void Take(const velagnss::Rtcm3Station& record);
  void Take(const velagnss::Rtcm3Antenna& record);
  S_Station& StationOf(unsigned short number);
  void DropOldestStation();
  template <class Value>
  void Note(std::optional<S_Noted<Value>>& noted, const Value& value) const {
    noted = {value, m_lastAt};
  }

  double m_now = 0;      // s; 0 while there is no time
  double m_lastAt = 0;   // when the frame before came: an epoch ends with the first one of the next
  double m_epochAt = 0;  // when the last epoch of any receiver came; 0 before
  double m_interval = 0;
  std::optional<S_Noted<S_Position>> m_position;
  std::optional<S_Noted<S_Motion>> m_motion;
  std::optional<S_Noted<S_Fix>> m_fix;
  std::optional<S_Noted<S_Dops>> m_dops;
  std::optional<S_Noted<S_SatelliteCounts>> m_counts;
  std::optional<S_Noted<velagnss::GstRecord>> m_accuracy;
  std::optional<S_Noted<t_Sky>> m_sky;
  std::vector<S_Seen> m_seen;         // by system and number
  std::vector<S_Station> m_stations;  // by number
  C_EpochBuilder m_epochs{[this](const S_Epoch& epoch) { Take(epoch); }};
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECEIVER_STATE_H
