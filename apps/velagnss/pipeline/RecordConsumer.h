// What records are turned into: lines of JSON, an account, a track, a RINEX file.
//
// A consumer knows nothing of where the bytes came from, nor of other consumers. C_RecordRun (RecordRun.h) feeds it.
#ifndef VELAGNSS_APPS_RECORD_CONSUMER_H
#define VELAGNSS_APPS_RECORD_CONSUMER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/pipeline/FrameBlock.h"
#include "stream/FrameReader.h"
#include "stream/RecordDecoder.h"
#include "stream/StreamClock.h"

namespace Host {

// A frame and its record.
struct S_FrameRecord {
  const velagnss::Frame& frame;
  const velagnss::DecodedFrame& decoded;  // as constructed when no consumer needs records
  const velagnss::StreamClock& clock;     // has noted this frame already
};

// When the bytes of a live source came, by the machine's clock; none for other inputs.
using t_Arrival = std::optional<S_Chunk::t_Clock::time_point>;

// What became of the selected part of an input.
struct S_InputTotals {
  std::uint64_t bytes;
  std::uint64_t queued;            // at the end of the input, before waiting bytes were searched again
  velagnss::StreamTotals atEnd;    // likewise
  velagnss::StreamTotals overall;  // after that
};

// An input that has ended.
struct S_InputEnd {
  const velagnss::FrameReader& reader;  // finished, with the totals of all of the input
  const velagnss::StreamClock& clock;
  S_InputTotals totals;
};

// The calls come in this order: for each input `BeginInput`, the items in the order of the stream, `EndInput`; after
// the last input `Finish`.
class C_RecordConsumer {
 public:
  virtual ~C_RecordConsumer() = default;

  // Whether it looks at more of a frame than protocol, message, offset and bytes; whether at rejected starts and
  // skipped ranges. The answers do not change.
  virtual bool NeedsRecords() const { return true; }
  virtual bool NeedsEvents() const { return false; }

  // When only a range of the input is wanted: whether what comes before it matters to what is made of the range. Then
  // it gets those items as well, between `Mute(true)` and `Mute(false)`, and takes from them what it has to know, but
  // makes nothing of them. It is mute again from the end of the range on, if the input goes on. So what is made of
  // ranges side by side is together what is made of the whole.
  virtual bool GoesThroughRanges() const { return false; }
  virtual void Mute(bool /*isMute*/) {}

  virtual void BeginInput(const std::string& /*name*/) {}

  // Before the items that end in these bytes: the raw bytes as they came, those of the range only, and when.
  virtual void OnBytes(std::span<const unsigned char> /*bytes*/, t_Arrival /*arrival*/) {}
  virtual void OnFrame(const S_FrameRecord& record) = 0;
  virtual void OnRejection(const velagnss::RejectedStart&) {}
  virtual void OnSkipped(const velagnss::SkippedRange&) {}
  virtual void EndInput(const S_InputEnd&) {}

  // After the items of bytes that have come: what became of the selected part of the input so far.
  virtual void OnTotals(const velagnss::StreamTotals& /*totals*/) {}

  // The state of a live source has changed. What was cut off by a loss has become items before.
  virtual void OnLink(const S_LinkChange&) {}

  // In a run on several cores each consumer gets its items on whatever thread is free, at the same time as others get
  // later ones. Whether it uses meanwhile what the one before it among the consumers has collected: then both get each
  // item in turn.
  virtual bool UsesPreceding() const { return false; }

  // There the items come in blocks. A consumer may put off what needs no order: it has `MakeBlockWork` make a place for
  // that, gets the place back for each block, and when the work has been done, in the order of the blocks.
  virtual std::unique_ptr<C_BlockWork> MakeBlockWork() { return nullptr; }
  virtual void BeginBlock(C_BlockWork* /*work*/) {}
  virtual void EndBlock() {}
  virtual void Collect(C_BlockWork& /*work*/) {}

  // False: it needs no items, or no more of them. It is asked after each item.
  virtual bool WantsMore() const { return true; }

  // The input may have to be waited for.
  virtual void BeforeWait() {}

  // The last of the output is made here.
  virtual void Finish() {}

  // After `Finish`: `eExitData`, reported to the user by then, when the data is not what was asked for.
  virtual eExitCode Judge() const { return eExitOk; }
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_CONSUMER_H
