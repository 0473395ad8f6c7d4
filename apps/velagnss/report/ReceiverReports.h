// What a report says of the receivers of a stream.
#ifndef VELAGNSS_APPS_RECEIVER_REPORTS_H
#define VELAGNSS_APPS_RECEIVER_REPORTS_H

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>

#include "apps/velagnss/account/PointReport.h"
#include "apps/velagnss/account/StreamAccount.h"
#include "apps/velagnss/epoch/EpochBuilder.h"
#include "apps/velagnss/report/PlaceReport.h"
#include "apps/velagnss/report/QualityReport.h"
#include "apps/velagnss/report/SkyReport.h"

namespace Host {

struct S_ReceiverReport {
  std::uint64_t epochs = 0;
  C_SkyReport sky;
  C_QualityReport quality;
  C_PlaceReport place;
};

// Single-point positions less the coordinates that the station sends.
struct S_ComputedReport {
  C_Series north;  // m
  C_Series east;   // m
  C_Series up;     // m
};

// The epochs of a stream by receiver: one that sends the sentences, and reference stations. A station whose
// observations have once been in one epoch with sentences is the receiver of the sentences from then on, with those of
// its epochs, too, to which no sentence belongs. Each epoch is at its own time; one without a time is where the last
// one was.
//
// Memory is bounded: a receiver of sentences, the first seven stations (others are counted), 1500 signals of
// satellites, which cost up to 35 MB if each is received from the first bin of the axis to the last.
class C_ReceiverReports : public C_RecordConsumer {
 public:
  using t_Station = std::optional<unsigned short>;  // nothing: the sentences

  // `axis` must be empty when an input begins. `account` and `points` are consumers of the same run; the latter hands
  // out its errors to this one. All of them outlive it.
  C_ReceiverReports(C_TimeBins& axis, const C_StreamAccount& account, C_PointReport& points);
  C_ReceiverReports(const C_ReceiverReports&) = delete;
  C_ReceiverReports& operator=(const C_ReceiverReports&) = delete;

  bool UsesPreceding() const override { return true; }
  void BeginInput(const std::string& name) override;
  void OnFrame(const S_FrameRecord& record) override;
  void EndInput(const S_InputEnd& end) override;

  const C_TimeBins& Axis() const { return m_axis; }
  const C_StreamAccount& Account() const { return m_account; }
  const C_PointReport& Points() const { return m_points; }

  const std::map<t_Station, S_ReceiverReport>& Receivers() const {
    return m_contents.receivers;
  }  // the sentences first
  std::size_t ReceiversLeftOut() const { return m_contents.leftOut.count(); }

  // The receiver whose positions are computed; false if none are.
  bool IsComputed(const t_Station& receiver) const;
  const S_ComputedReport& Computed() const { return m_contents.computed; }

 private:
  static constexpr std::size_t kMaxSignals = 1500;

  struct S_Contents {
    std::map<t_Station, S_ReceiverReport> receivers;
    std::bitset<4096> leftOut;   // stations
    t_Station own;               // the station that is the receiver of the sentences
    double seconds = NA_DOUBLE;  // of the last epoch with a time
    std::size_t signalsLeft = kMaxSignals;
    S_ComputedReport computed;
  };

  void Take(const S_Epoch& epoch);
  t_Station ReceiverOf(const S_Epoch& epoch);
  void NoteOwn(const S_EpochStation& station);
  S_ReceiverReport* ReportOf(const t_Station& receiver);
  S_Moment MomentOf(const S_Epoch& epoch);
  void NoteError(const C_GnssTime& time, const C_Vector3& error, const velagnss::StreamClock& clock);

  C_TimeBins& m_axis;
  const C_StreamAccount& m_account;
  const C_PointReport& m_points;
  const velagnss::StreamClock* m_clock = nullptr;  // of the frame that is taken
  C_EpochBuilder m_epochs{[this](const S_Epoch& epoch) { Take(epoch); }};
  S_Contents m_contents;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECEIVER_REPORTS_H
