// What is in one input: counts, integrity, times, positions.
//
// It collects only. AccountJson.h and AccountTable.h write it.
#ifndef VELAGNSS_APPS_STREAM_ACCOUNT_H
#define VELAGNSS_APPS_STREAM_ACCOUNT_H

#include <cstdint>
#include <string>
#include <vector>

#include "apps/velagnss/account/BoundedList.h"
#include "apps/velagnss/account/EpochSteps.h"
#include "apps/velagnss/account/MessageRows.h"
#include "apps/velagnss/account/ObservationSummary.h"
#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/text/TimeText.h"

namespace Host {

struct S_MessageCount : S_MessageRow {
  std::uint64_t count = 0;
  std::uint64_t decoded = 0;  // of these
  std::uint64_t faults = 0;   // the checksum is right, but the contents cannot be decoded
};

struct S_FalseStart {
  std::uint64_t offset;
  velagnss::RejectedStart::Reason reason;
};

struct S_SkippedBytes {
  std::uint64_t offset;
  std::uint64_t length;
};

// In full or in part: more than its text or bytes.
inline bool IsDecoded(const velagnss::DecodedFrame& decoded) {
  return decoded.depth == velagnss::Depth::Full || decoded.depth == velagnss::Depth::Partial;
}

// Complete when the input has ended; the next one begins a new account.
class C_StreamAccount : public C_RecordConsumer {
 public:
  bool NeedsEvents() const override { return true; }
  void BeginInput(const std::string& name) override;
  void OnFrame(const S_FrameRecord& record) override;
  void OnRejection(const velagnss::RejectedStart& start) override;
  void OnSkipped(const velagnss::SkippedRange& range) override;
  void EndInput(const S_InputEnd& end) override;

  // Takes the counts of another complete account: this one becomes a total. Times, positions and places are left out,
  // because those of different inputs have nothing in common.
  void AddCounts(const C_StreamAccount& other);

  const std::string& Input() const { return m_input; }

  std::uint64_t Bytes() const { return m_bytes; }
  std::uint64_t FramesGood() const { return m_framesGood; }
  std::uint64_t FramesDecoded() const { return m_framesDecoded; }  // of the good ones; the others are only checked
  std::uint64_t FramesBad() const { return m_framesBad; }          // starts whose body failed

  // When the input ended, before waiting bytes were searched again. Accepted, discarded and queued bytes add up to all.
  const velagnss::StreamTotals& AtEnd() const { return m_atEnd; }
  std::uint64_t Queued() const { return m_queued; }

  // Bytes in no frame, those included that were searched again at the end.
  std::uint64_t BytesDamaged() const { return m_bytesDamaged; }

  // Per cent of the frames found whose body was damaged; 0 when there were none.
  double BadPercent() const;

  // By protocol and message.
  const std::vector<S_MessageCount>& Messages() const { return m_messages.All(); }

  const C_EpochSteps& Epochs() const { return m_epochs; }
  C_TimeText TimeText(double seconds) const { return C_TimeText::StreamTime(m_clock, seconds); }

  // Seconds, with one interval for each epoch: ten epochs a second apart last ten seconds. Of a total the sum; NaN when
  // one of the inputs has no duration.
  double Duration() const;

  // Per second; NaN where the stream has no duration.
  double RateOf(std::uint64_t count) const;

  std::optional<S_PositionSummary> Position() const { return m_position.Summary(); }
  const C_PositionSummary& Positions() const { return m_position; }
  const C_ObservationSummary& Observations() const { return m_observations; }
  eNoPosition WhyNoPosition() const { return m_position.Reason(); }

  const C_BoundedList<S_FalseStart>& FalseStarts() const { return m_falseStarts; }
  const C_BoundedList<S_SkippedBytes>& Skipped() const { return m_skipped; }
  std::uint64_t ChecksumErrors() const { return m_checksumErrors; }
  std::uint64_t RejectedStarts() const { return m_rejectedStarts; }  // for other reasons

 private:
  std::string m_input;
  velagnss::StreamClock m_clock;  // at the end
  C_MessageRows<S_MessageCount> m_messages;
  C_EpochSteps m_epochs;
  C_PositionSummary m_position;
  C_ObservationSummary m_observations;
  C_BoundedList<S_FalseStart> m_falseStarts;
  C_BoundedList<S_SkippedBytes> m_skipped;
  std::uint64_t m_checksumErrors = 0;
  std::uint64_t m_rejectedStarts = 0;
  std::uint64_t m_bytes = 0;
  std::uint64_t m_queued = 0;
  velagnss::StreamTotals m_atEnd;
  std::uint64_t m_framesGood = 0;
  std::uint64_t m_framesBad = 0;
  std::uint64_t m_framesDecoded = 0;
  std::uint64_t m_bytesDamaged = 0;
  double m_durationOfOthers = 0;  // s
  std::uint64_t m_bytesOfTags = 0;
};

// 100 * part / whole; 0 of nothing.
double Percent(std::uint64_t part, std::uint64_t whole);

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_ACCOUNT_H
