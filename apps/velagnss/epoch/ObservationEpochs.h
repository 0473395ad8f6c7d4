// From the observations of reference stations to epochs.
#ifndef VELAGNSS_APPS_OBSERVATION_EPOCHS_H
#define VELAGNSS_APPS_OBSERVATION_EPOCHS_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "geo/PointCoordinate.h"
#include "positioning/EphemerisStore.h"

namespace Host {

// Each station has its own epochs: observations of several stations are never in one. An epoch ends with the first
// message of another time (see pipeline/Observations.h), or when the station has fallen silent: since its last one 20
// epochs of others have ended, or twice as many as there are stations if that is more. A message that is up to 10 s
// late belongs to no epoch. Of a signal that comes in several messages of an epoch the first counts.
//
// An epoch has the coordinates that its station has sent by its end, and the elevation and azimuth of the satellites
// whose ephemeris has come by then. Memory is bounded: 64 epochs at a time, the coordinates of 4096 stations, four
// ephemerides of each satellite. A station beyond the 64 ends the epoch that began first.
class C_ObservationEpochs {
 public:
  using t_Sink = std::function<void(S_Epoch&& epoch)>;
  using t_Fits = std::function<bool(const S_Epoch& epoch)>;

  // The sink is called with each epoch that has ended.
  explicit C_ObservationEpochs(t_Sink sink) : m_sink(std::move(sink)) {}

  // Takes observations, station coordinates and ephemerides, and ignores other records.
  void Take(const S_FrameRecord& record);

  // To be called when an epoch of sentences ends. Ends the first epoch that fits and hands it out in place of the sink.
  // Messages of its time that still come are left out, unless 64 other stations have begun epochs since.
  std::optional<S_Epoch> TakeOut(const t_Fits& fits, const velagnss::StreamClock& clock);

  // The end of an input: forgets its stations and ephemerides.
  void Finish(const velagnss::StreamClock& clock);

 private:
  struct S_Open {
    unsigned short station;
    unsigned short week;       // GPS time
    double seconds;            // s of that week
    double time;               // s, on the scale of velagnss::StreamClock
    unsigned int leapSeconds;  // with which that scale was computed
    unsigned int others = 0;   // epochs that have ended since the last message
    bool isTaken = false;      // handed out already
    S_Epoch epoch = {};
  };

  void Take(const S_FrameRecord& record, const velagnss::Rtcm3Observations& observations);
  bool IsTimely(const velagnss::Rtcm3Observations& observations, const velagnss::StreamClock& clock);
  void Begin(const S_FrameRecord& record, const velagnss::Rtcm3Observations& observations);
  static void Add(S_Epoch& epoch, const velagnss::Rtcm3Observations& observations);
  std::vector<S_Open>::iterator OpenOf(unsigned short station);
  void End(std::vector<S_Open>::iterator open, const velagnss::StreamClock& clock);
  void EndSilent(const velagnss::StreamClock& clock);
  void SetTimeAndPlace(S_Open& open, const velagnss::StreamClock& clock) const;
  void SetSky(S_Open& open) const;

  t_Sink m_sink;
  std::vector<S_Open> m_open;  // one for each station
  std::map<unsigned short, C_PointCoordinate> m_antennas;
  std::unique_ptr<velagnss::EphemerisStore> m_ephemerides;  // large: none for sentences alone
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OBSERVATION_EPOCHS_H
