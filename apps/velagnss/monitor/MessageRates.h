// Which messages a stream carries, how often, and which of them are wrong.
#ifndef VELAGNSS_APPS_MESSAGE_RATES_H
#define VELAGNSS_APPS_MESSAGE_RATES_H

#include <cstdint>

#include "apps/velagnss/account/MessageRows.h"
#include "apps/velagnss/monitor/Noted.h"
#include "apps/velagnss/monitor/Rate.h"
#include "apps/velagnss/monitor/SourceView.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// The first 256 messages have rows of their own: names of sentences are without number.
class C_MessageRates {
 public:
  void Take(const S_FrameRecord& record, double now);

  void Show(S_SourceView& view, const S_AgeClock& clock) const;

 private:
  struct S_Row : S_MessageRow {
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
    std::uint64_t faults = 0;
    double lastAt = kNoAge;
    double step = 0;  // s between the last two
    C_Rate rate = {};
  };
  static void Take(S_Row& row, const S_FrameRecord& record, double now);
  static S_MessageView ViewOf(const S_Row& row, const S_AgeClock& clock);

  C_MessageRows<S_Row> m_rows{256};  // by protocol and message
  std::uint64_t m_leftOut = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_RATES_H
