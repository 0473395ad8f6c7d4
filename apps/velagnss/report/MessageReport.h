// How often each message comes, and how much of a stream is not decoded.
#ifndef VELAGNSS_APPS_MESSAGE_REPORT_H
#define VELAGNSS_APPS_MESSAGE_REPORT_H

#include <cstdint>
#include <vector>

#include "apps/velagnss/account/EpochSteps.h"
#include "apps/velagnss/account/MessageRows.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/report/SeriesJson.h"

namespace Host {

struct S_MessageRate : S_MessageRow {
  static constexpr C_EpochSteps::S_Limits kLimits = {.lengths = 500, .kept = 0};

  std::uint64_t count = 0;
  std::uint64_t notDecoded = 0;       // of these: no decoder, or only as text or bytes
  std::uint64_t bytesNotDecoded = 0;  // of these
  C_EpochSteps steps{kLimits};        // from one epoch with the message to the next
  C_Series series;
};

// At most 256 messages, with some 50 kB for each.
class C_MessageReport {
 public:
  // `bin`: of the stream's time, which is that of the message.
  void Note(const S_FrameRecord& record, const std::optional<S_TimeBin>& bin);

  // The input has ended.
  void Finish() { m_rows.Sort(); }

  void Write(C_JsonWriter& json, const C_TimeBins& axis) const;

  // Those that are not decoded, the most bytes first. `bytes`: of all of the input.
  void WriteNotDecoded(C_JsonWriter& json, std::uint64_t bytes) const;

 private:
  static constexpr std::size_t kMaxMessages = 256;

  C_MessageRows<S_MessageRate> m_rows{kMaxMessages};
  std::uint64_t m_leftOut = 0;  // frames
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_REPORT_H
