// From the sentences and observations of a stream to its epochs.
#ifndef VELAGNSS_APPS_EPOCH_BUILDER_H
#define VELAGNSS_APPS_EPOCH_BUILDER_H

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/epoch/ObservationEpochs.h"
#include "stream/Record.h"
#include "stream/StreamClock.h"

namespace Host {

// Sentences with the same time of day form one epoch: GGA, GNS, RMC, GLL, ZDA and GST. GSA, GSV and VTG have no time
// and belong to the epoch before them. If that has the same sentence already, they begin the next one, and so do all
// that follow up to its time: some receivers send the sky first. The end of an input ends its last epoch.
//
// Sentences before the first time of an input belong to its first epoch if the input begins with them. If it begins
// within a sentence or a group of GSV, they are what is left of an epoch without a time.
//
// A sentence that is up to 10 s late belongs to no epoch, as in tracks. A ZDA within 0.5 s of the epoch does not begin
// another one.
//
// Observations form epochs by station, see C_ObservationEpochs. If they are those of the receiver that sends the
// sentences, they and the sentences of the same time are one epoch. They are not if their time is that of no sentence,
// if a sentence names the station as the source of its corrections, or if the station's coordinates are farther than
// 100 m from the position, height aside. That is decided when the epoch of sentences ends: until then, observations of
// its time that have ended are held.
class C_EpochBuilder {
 public:
  using t_Sink = std::function<void(S_Epoch&& epoch)>;

  explicit C_EpochBuilder(t_Sink sink) : m_sink(std::move(sink)) {}

  // The sink is called first if the frame ends an epoch.
  void Take(const S_FrameRecord& record);

  // The end of an input.
  void Finish(const velagnss::StreamClock& clock);

 private:
  // A sentence without a time.
  using t_Untimed = std::variant<S_GSA_Data, S_GSV_Data, S_VTG_Data>;
  struct S_Pending {
    std::uint64_t offset;
    t_Untimed record;
  };

  void TakeSentence(const velagnss::Frame& frame, const velagnss::Record& record, const velagnss::StreamClock& clock);
  void TakeTimed(const velagnss::Frame& frame, const velagnss::Record& record, const velagnss::StreamClock& clock);
  void TakeUntimed(std::uint64_t offset, const t_Untimed& record, const velagnss::StreamClock& clock);
  bool Repeats(const std::string& key, std::string_view formatter) const;
  bool IsOfThisEpoch(const std::string& key, double timeOfDay) const;
  void Apply(std::uint64_t offset, const t_Untimed& record);
  void Begin(std::uint64_t offset);
  void AddPending();
  void Add(const S_GSA_Data& gsa);
  void Add(const S_GSV_Data& gsv);
  void Add(const S_VTG_Data& vtg);
  static void AddSignal(S_EpochSatellite& satellite, unsigned char signalId, double cn0);
  S_EpochSatellite* Satellite(ALGO::eGNSSSystem system, unsigned char id);
  void TakeObserved(S_Epoch&& observed);
  bool HaveTimeOfThisEpoch(const S_Epoch& observed) const;
  bool AreOfThisEpoch(const S_Epoch& observed) const;
  bool AreOfAnotherReceiver(const S_EpochStation& station) const;
  void AddObserved(const velagnss::StreamClock& clock);
  void Close(const velagnss::StreamClock& clock);

  t_Sink m_sink;
  S_Epoch m_epoch;
  double m_midnight = NA_DOUBLE;     // before the epoch: s on the scale of velagnss::StreamClock
  C_BestPosition m_position;         // of the epoch
  std::vector<std::string> m_keys;   // the sentences that the epoch has
  std::string m_last;                // formatter of the last of them
  bool m_isOpen = false;             // it has a sentence
  bool m_hasTimed = false;           // one of those that carry a time
  bool m_isRest = false;             // of an epoch that began before the input
  bool m_saysWhatIsUsed = false;     // there was a GSA
  bool m_isFirstFrame = true;        // of the input
  std::vector<S_Pending> m_pending;  // the beginning of the next epoch

  std::optional<unsigned short> m_corrections;  // station that a sentence of the epoch names as their source
  std::vector<S_Epoch> m_held;                  // observations with the time of the epoch, ended before it
  C_ObservationEpochs m_observations{[this](S_Epoch&& observed) { TakeObserved(std::move(observed)); }};
};

}  // namespace Host

#endif  // VELAGNSS_APPS_EPOCH_BUILDER_H
