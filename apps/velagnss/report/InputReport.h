// What the report says of one input, collected in one pass and in bounded memory.
#ifndef VELAGNSS_APPS_INPUT_REPORT_H
#define VELAGNSS_APPS_INPUT_REPORT_H

#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/account/PointReport.h"
#include "apps/velagnss/account/StreamAccount.h"
#include "apps/velagnss/report/ArrivalTimes.h"
#include "apps/velagnss/report/Damage.h"
#include "apps/velagnss/report/EphemerisList.h"
#include "apps/velagnss/report/Latency.h"
#include "apps/velagnss/report/MessageReport.h"
#include "apps/velagnss/report/ReceiverReports.h"

namespace Host {

// Complete when the input has ended; the next one begins a new report.
class C_InputReport : public C_RecordConsumer {
 public:
  // All that a C_RecordRun must feed, in this order.
  std::vector<C_RecordConsumer*> Consumers() {
    return {&m_account, &m_points, &m_receivers.Epochs(), &m_receivers.Errors(), this, &m_receivers};
  }

  bool NeedsEvents() const override { return true; }
  bool UsesPreceding() const override { return true; }
  void BeginInput(const std::string& name) override;
  void OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) override;
  void OnFrame(const S_FrameRecord& record) override;
  void OnRejection(const velagnss::RejectedStart& start) override { m_contents.damage.Note(start); }
  void OnSkipped(const velagnss::SkippedRange& range) override { m_contents.damage.Note(range); }
  void EndInput(const S_InputEnd& end) override;

  // An object.
  void Write(C_JsonWriter& json) const;

  const C_StreamAccount& Account() const { return m_account; }

 private:
  struct S_Contents {
    C_TimeBins axis;
    C_MessageReport messages;
    C_Latency latency;
    C_EphemerisList ephemerides;
    C_Damage damage;
  };

  void WriteGaps(C_JsonWriter& json) const;

  C_StreamAccount m_account;
  C_PointReport m_points;
  S_Contents m_contents;
  C_ReceiverReports m_receivers{m_contents.axis, m_account, m_points};
  std::optional<C_ArrivalTimes> m_arrivals;  // of an input that has begun
  velagnss::StreamClock m_clock;             // at the end
};

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUT_REPORT_H
