// The one way from bytes to consumers: inputs, frames, records.
#ifndef VELAGNSS_APPS_RECORD_RUN_H
#define VELAGNSS_APPS_RECORD_RUN_H

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "apps/velagnss/input/StreamJob.h"
#include "apps/velagnss/pipeline/BlockPipeline.h"
#include "apps/velagnss/pipeline/FrameSelection.h"
#include "apps/velagnss/pipeline/PartTotals.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// A part of a stream, by offsets: a frame belongs to the range that its first byte is in.
struct S_ByteRange {
  std::uint64_t begin = 0;
  std::uint64_t end = std::numeric_limits<std::uint64_t>::max();

  bool IsEverything() const { return begin == 0 && end == S_ByteRange().end; }
  bool Includes(std::uint64_t offset) const { return offset >= begin && offset < end; }
};

// How a stream is read.
struct S_RunOptions {
  std::vector<C_RawDataMessage::eProtocols> search;  // protocols to look for
  std::optional<C_GnssTime> seed;                    // the user's
  bool acceptsUnlisted = true;                       // checked frames that are not listed, too
  C_FrameSelection selection = {};                   // of what is found
  std::optional<unsigned int> firstDay = {};         // MJD of the first time of each input, the user's
  S_ByteRange range = {};                            // of each input
  unsigned int cores = 1;                            // for inputs that need not be waited for; the result is the same
  std::size_t blockSize = 128;                       // frames that go from core to core at once; likewise
};

// Each input is searched for frames, each frame is decoded once, and the consumers get both in their order. What the
// selection leaves out reaches none of them, but the time and the date in it are known all the same.
//
// Of a range of an input, everything before it is read as well, for what decoding needs of it; behind it, no more than
// up to the next frame. What belongs to no frame goes with the frame before it, or with the beginning of the input.
class C_RecordRun : public C_StreamJob {
 public:
  // The consumers must outlive the run.
  C_RecordRun(const S_RunOptions& options, std::vector<C_RecordConsumer*> consumers);

  void BeginInput(const std::string& name) override;
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;
  bool WantsMore() const override { return !m_isAfterRange && WantsMoreInputs(); }
  bool WantsMoreInputs() const override;  // as long as one of the consumers does
  void BeforeWait() override;
  void OnQuiet() override { GiveUpWaiting(); }
  void OnLink(const S_LinkChange& change) override;
  std::size_t FeedSize() const override;
  void Finish() override;

  // The worst verdict of the consumers.
  eExitCode Judge() const;

  // Of all inputs so far.
  std::uint64_t BytesRead() const { return m_bytesRead; }
  std::uint64_t FramesFound() const { return m_framesFound; }
  std::uint64_t FramesSelected() const { return m_framesSelected; }

 private:
  void Pump();
  void PumpBlocks();
  void Fill(C_FrameBlock& block);
  void Prepare(C_FrameBlock& block) const;
  void Decode(C_FrameBlock& block);
  void GiveTotals();
  void GiveUpWaiting();
  void Take(const velagnss::Frame& frame);
  bool Select(const velagnss::Frame& frame, const velagnss::StreamTotals& totals);
  bool Admit(const velagnss::Frame& frame, const velagnss::StreamTotals& totals);
  void EnterRange(bool isInRange);
  bool IsInPart() const { return m_isInRange && m_isInWindow; }
  std::span<const unsigned char> InRange(std::span<const unsigned char> bytes) const;
  std::string_view Selectors() const;
  void ReportSelection() const;
  S_InputTotals Totals() const;
  template <class Give>
  void ForEachActive(const Give& give);
  void SelectActive();

  std::vector<C_RecordConsumer*> m_consumers;
  std::vector<C_RecordConsumer*> m_active;  // those that want more, of what comes here
  bool m_needsRecords;
  const unsigned int m_cores;
  const std::size_t m_blockSize;
  std::unique_ptr<C_BlockPipeline> m_blocks;  // on several cores, from the first use on
  velagnss::FrameReader m_reader;
  velagnss::RecordDecoder m_decoder;
  const velagnss::DecodedFrame m_notDecoded;
  std::uint64_t m_bytesRead = 0;
  std::uint64_t m_framesFound = 0;

  const C_FrameSelection m_selection;
  const S_ByteRange m_range;
  const bool m_selectsAll;
  std::uint64_t m_framesSelected = 0;
  bool m_isInRange = true;  // the stream is, at this point
  bool m_isAfterRange = false;
  bool m_goesOn = true;      // the search
  bool m_isInWindow = true;  // likewise
  bool m_hasTime = false;    // an input had one, with a date if the window has dates
  C_PartTotals m_part;
  velagnss::StreamTotals m_partAtEnd;
  bool m_endsInPart = true;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_RUN_H
