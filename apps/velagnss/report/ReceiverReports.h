// What a report says of the receivers of a stream.
#ifndef VELAGNSS_APPS_RECEIVER_REPORTS_H
#define VELAGNSS_APPS_RECEIVER_REPORTS_H

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

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

// The epochs of a stream, for a consumer that has them in its own stage: to build them takes as long as to report them.
class C_EpochMaker : public C_RecordConsumer {
 public:
  struct S_Made {
    S_Epoch epoch;
    double seconds;  // its time, on the scale of velagnss::StreamClock; NaN when it has none
  };
  using t_Sink = C_Handover<S_Made>;

  explicit C_EpochMaker(t_Sink& sink) : m_sink(sink) {}

  void OnFrame(const S_FrameRecord& record) override;
  void EndBlock() override { m_sink.EndMaking(); }
  void EndInput(const S_InputEnd& end) override;

 private:
  void Make(S_Epoch&& epoch);

  t_Sink& m_sink;
  std::uint64_t m_offset = 0;                      // of the frame, or the end, that is taken
  const velagnss::StreamClock* m_clock = nullptr;  // likewise
  C_EpochBuilder m_epochs{[this](S_Epoch&& epoch) { Make(std::move(epoch)); }};
};

// Single-point positions less the coordinates that the station sends.
struct S_ComputedReport {
  C_Series north;  // m
  C_Series east;   // m
  C_Series up;     // m
};

class C_ComputedReport : public C_RecordConsumer {
 public:
  C_ComputedReport(const C_TimeBins& axis, C_PointReport& points) : m_axis(axis) { points.SetErrorSink(m_errors); }

  void BeginInput(const std::string&) override { m_report = {}; }
  void BeginBlock(C_BlockWork*) override { m_errors.BeginTaking(); }
  void OnFrame(const S_FrameRecord& record) override { TakeUpTo(record.frame.offset); }
  void EndBlock() override { m_errors.EndTaking(); }
  void EndInput(const S_InputEnd&) override { TakeUpTo(m_errors.kEnd); }

  const S_ComputedReport& Report() const { return m_report; }

 private:
  void TakeUpTo(std::uint64_t offset);
  void Note(const S_PointError& error);

  const C_TimeBins& m_axis;
  C_PointReport::t_ErrorSink m_errors;
  S_ComputedReport m_report;
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

  // `axis` must be empty when an input begins. `account` and `points` are consumers of the same run before this one,
  // and so must be `Epochs` and, before any other that uses the axis, `Errors`. All of them outlive it.
  C_ReceiverReports(C_TimeBins& axis, const C_StreamAccount& account, C_PointReport& points);
  C_ReceiverReports(const C_ReceiverReports&) = delete;
  C_ReceiverReports& operator=(const C_ReceiverReports&) = delete;

  C_RecordConsumer& Epochs() { return m_maker; }
  C_RecordConsumer& Errors() { return m_computed; }

  bool UsesPreceding() const override { return true; }
  void BeginInput(const std::string&) override { m_contents = {}; }
  void BeginBlock(C_BlockWork*) override { m_epochs.BeginTaking(); }
  void OnFrame(const S_FrameRecord& record) override { TakeUpTo(record.frame.offset); }
  void EndBlock() override { m_epochs.EndTaking(); }
  void EndInput(const S_InputEnd&) override { TakeUpTo(m_epochs.kEnd); }

  const C_TimeBins& Axis() const { return m_axis; }
  const C_StreamAccount& Account() const { return m_account; }
  const C_PointReport& Points() const { return m_points; }

  const std::map<t_Station, S_ReceiverReport>& Receivers() const {
    return m_contents.receivers;
  }  // the sentences first
  std::size_t ReceiversLeftOut() const { return m_contents.leftOut.count(); }

  // The receiver whose positions are computed; false if none are.
  bool IsComputed(const t_Station& receiver) const;
  const S_ComputedReport& Computed() const { return m_computed.Report(); }

 private:
  static constexpr std::size_t kMaxSignals = 1500;

  struct S_Contents {
    std::map<t_Station, S_ReceiverReport> receivers;
    std::bitset<4096> leftOut;   // stations
    t_Station own;               // the station that is the receiver of the sentences
    double seconds = NA_DOUBLE;  // of the last epoch with a time
    std::size_t signalsLeft = kMaxSignals;
  };

  void TakeUpTo(std::uint64_t offset);
  void Take(const C_EpochMaker::S_Made& made);
  t_Station ReceiverOf(const S_Epoch& epoch);
  void NoteOwn(const S_EpochStation& station);
  S_ReceiverReport* ReportOf(const t_Station& receiver);
  S_Moment MomentAt(double seconds);

  C_TimeBins& m_axis;
  const C_StreamAccount& m_account;
  const C_PointReport& m_points;
  C_EpochMaker::t_Sink m_epochs;
  C_EpochMaker m_maker{m_epochs};
  C_ComputedReport m_computed;
  S_Contents m_contents;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECEIVER_REPORTS_H
