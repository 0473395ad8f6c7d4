#include "apps/velagnss/pipeline/RecordRun.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// Below this, and for live sources, what is gained by several cores is lost by waiting for them.
constexpr std::size_t kLeastForBlocks = 1 << 16;
constexpr std::size_t kFeedForBlocks = 1 << 22;

}  // namespace

C_RecordRun::C_RecordRun(const S_RunOptions& options, std::vector<C_RecordConsumer*> consumers)
    : m_consumers(std::move(consumers)),
      m_needsRecords(options.selection.Window().IsSet() ||
                     std::any_of(m_consumers.begin(), m_consumers.end(), [](auto* c) { return c->NeedsRecords(); })),
      m_cores(options.cores),
      m_blockSize(options.blockSize),
      m_selection(options.selection),
      m_range(options.range),
      m_selectsAll(options.selection.IsEverything() && options.range.IsEverything()) {
  m_reader.DisableProtocol(C_RawDataMessage::eAllProtocols);
  for (const C_RawDataMessage::eProtocols protocol : options.search) m_reader.EnableProtocol(protocol);
  m_reader.AcceptUnlisted(options.acceptsUnlisted);
  m_reader.ReportEvents(std::any_of(m_consumers.begin(), m_consumers.end(), [](auto* c) { return c->NeedsEvents(); }));
  m_decoder.KeepTimeDigits(velagnss::TimeDigits::All);
  if (options.firstDay) m_decoder.AssumeFirstDay(*options.firstDay);
  if (options.seed) m_decoder.SeedTime(*options.seed);
}

void C_RecordRun::BeginInput(const std::string& name) {
  m_reader.Restart();
  m_decoder.Restart();
  m_part = {};
  m_isInWindow = m_selection.Window().Includes(m_decoder.Clock());
  m_isAfterRange = false;
  for (C_RecordConsumer* consumer : m_consumers) consumer->BeginInput(name);
  EnterRange(m_range.begin == 0);
}

void C_RecordRun::EnterRange(bool isInRange) {
  m_isInRange = isInRange;
  for (C_RecordConsumer* consumer : m_consumers) consumer->Mute(!isInRange);
  SelectActive();
}

// Consumers that want no more are not asked for every frame.
void C_RecordRun::SelectActive() {
  m_active = m_consumers;
  std::erase_if(m_active, [this](const C_RecordConsumer* consumer) {
    return !consumer->WantsMore() || (!m_isInRange && !consumer->GoesThroughRanges());
  });
  m_goesOn = WantsMore();
}

void C_RecordRun::Feed(const S_Chunk& chunk) {
  const std::span<const unsigned char> wanted = InRange(chunk.bytes);
  for (C_RecordConsumer* consumer : m_range.IsEverything() ? m_active : m_consumers)
    consumer->OnBytes(wanted, chunk.isLive ? t_Arrival(chunk.arrival) : std::nullopt);
  m_reader.Feed(chunk.bytes.data(), chunk.bytes.size());
  m_cores > 1 && !chunk.isLive && chunk.bytes.size() >= kLeastForBlocks ? PumpBlocks() : Pump();
  GiveTotals();
}

std::size_t C_RecordRun::FeedSize() const { return m_cores > 1 ? kFeedForBlocks : C_StreamJob::FeedSize(); }

std::span<const unsigned char> C_RecordRun::InRange(std::span<const unsigned char> bytes) const {
  const std::uint64_t offset = m_reader.BytesFed();
  const auto place = [&](std::uint64_t end) { return std::clamp(end, offset, offset + bytes.size()) - offset; };
  return bytes.subspan(place(m_range.begin), place(m_range.end) - place(m_range.begin));
}

// Bytes that wait for those after them may be a false start that holds frames back: when no more are to be expected
// soon, they are searched as at the end of a file.
void C_RecordRun::GiveUpWaiting() {
  if (m_reader.BytesQueued() == 0) return;
  m_reader.Finish();
  Pump();
  GiveTotals();
}

void C_RecordRun::OnLink(const S_LinkChange& change) {
  GiveUpWaiting();
  for (C_RecordConsumer* consumer : m_active) consumer->OnLink(change);
}

// After `-n` frames the rest of the queue is left alone: no consumer wants its frames.
void C_RecordRun::EndInput() {
  m_part.NoteGap(m_reader.Totals(), IsInPart());
  m_partAtEnd = m_part.Selected();
  m_endsInPart = IsInPart();
  if (WantsMore()) {
    m_reader.Finish();
    Pump();
  }
  m_part.NoteGap(m_reader.Totals(), IsInPart());
  m_bytesRead += m_reader.BytesFed();
  const velagnss::StreamClock& clock = m_decoder.Clock();
  m_hasTime = m_hasTime || (m_selection.Window().HasDates() ? clock.KnowsDate() : !std::isnan(clock.Seconds()));
  for (C_RecordConsumer* consumer : m_consumers) consumer->EndInput({m_reader, clock, Totals()});
}

S_InputTotals C_RecordRun::Totals() const {
  if (m_selectsAll)
    return {m_reader.BytesFed(), m_reader.QueuedAtFinish(), m_reader.TotalsAtFinish(), m_reader.Totals()};
  const std::uint64_t queued = m_endsInPart ? m_reader.QueuedAtFinish() : 0;
  return {m_partAtEnd.bytesAccepted + m_partAtEnd.bytesDiscarded + queued, queued, m_partAtEnd, m_part.Selected()};
}

void C_RecordRun::GiveTotals() {
  m_part.NoteGap(m_reader.Totals(), IsInPart());
  for (C_RecordConsumer* consumer : m_active) consumer->OnTotals(m_selectsAll ? m_reader.Totals() : m_part.Selected());
}

void C_RecordRun::Pump() {
  while (m_goesOn) {
    const velagnss::StreamItem& item = m_reader.Next();
    if (const auto* frame = std::get_if<velagnss::Frame>(&item))
      Take(*frame);
    else if (std::holds_alternative<std::monostate>(item))
      return;
    else if (!m_isInWindow)
      continue;
    else if (const auto* start = std::get_if<velagnss::RejectedStart>(&item))
      ForEachActive([start](C_RecordConsumer& consumer) { consumer.OnRejection(*start); });
    else if (const auto* range = std::get_if<velagnss::SkippedRange>(&item))
      ForEachActive([range](C_RecordConsumer& consumer) { consumer.OnSkipped(*range); });
  }
}

// All stages of the pipeline are idle before and after. Short files and live sources never need its memory.
void C_RecordRun::PumpBlocks() {
  if (m_blocks == nullptr) m_blocks = std::make_unique<C_BlockPipeline>(m_cores, m_blockSize, m_consumers);
  m_blocks->Run({[this](C_FrameBlock& block) { Fill(block); }, [this](C_FrameBlock& block) { Prepare(block); },
                 [this](C_FrameBlock& block) { Decode(block); }},
                m_isInRange);
  SelectActive();
}

// What is behind the range is not decoded: its first frame ends the search.
void C_RecordRun::Fill(C_FrameBlock& block) {
  while (m_goesOn && !block.IsFull()) {
    const velagnss::StreamItem& item = m_reader.Next();
    if (std::holds_alternative<std::monostate>(item)) return;
    if (const auto* frame = std::get_if<velagnss::Frame>(&item)) m_goesOn = frame->offset < m_range.end;
    block.Add(item, m_selectsAll ? velagnss::StreamTotals() : m_reader.Totals());
  }
}

void C_RecordRun::Prepare(C_FrameBlock& block) const {
  for (S_BlockItem& item : block.Items()) {
    const auto* const frame = std::get_if<velagnss::Frame>(&item.item);
    item.isPrepared = frame != nullptr && m_needsRecords && m_decoder.Prepare(*frame, item.decoded);
  }
}

void C_RecordRun::Decode(C_FrameBlock& block) {
  for (S_BlockItem& item : block.Items()) {
    const auto* const frame = std::get_if<velagnss::Frame>(&item.item);
    if (item.isPrepared) m_decoder.Follow(*frame, item.decoded);
    if (frame != nullptr && m_needsRecords && !item.isPrepared) m_decoder.Decode(*frame, item.decoded);
    item.isWanted = frame != nullptr ? Admit(*frame, item.totals) : m_isInWindow;
    item.isInRange = m_isInRange;
    item.clock = m_decoder.Clock();
  }
}

// Frames that are left out are decoded as well: they may carry the time of those that are not.
void C_RecordRun::Take(const velagnss::Frame& frame) {
  const S_FrameRecord record = {frame, m_needsRecords ? m_decoder.Decode(frame) : m_notDecoded, m_decoder.Clock()};
  const bool wasInRange = m_isInRange;
  const bool isWanted = Admit(frame, m_selectsAll ? velagnss::StreamTotals() : m_reader.Totals());
  if (m_isInRange != wasInRange || m_isAfterRange) EnterRange(m_isInRange);
  if (!isWanted) return;
  ForEachActive([&record](C_RecordConsumer& consumer) { consumer.OnFrame(record); });
}

// Whether a frame, which has been decoded, is wanted.
bool C_RecordRun::Admit(const velagnss::Frame& frame, const velagnss::StreamTotals& totals) {
  ++m_framesFound;
  const bool isWanted = m_selectsAll || Select(frame, totals);
  if (isWanted && m_isInRange) ++m_framesSelected;
  return isWanted;
}

bool C_RecordRun::Select(const velagnss::Frame& frame, const velagnss::StreamTotals& totals) {
  const bool wasInPart = IsInPart();
  m_isInWindow = m_selection.Window().Includes(m_decoder.Clock());
  m_isAfterRange = frame.offset >= m_range.end;
  m_isInRange = m_range.Includes(frame.offset);
  const bool isSelected = m_isInWindow && !m_isAfterRange && m_selection.HasTalker(frame);
  m_part.NoteFrame(totals, wasInPart, frame.length, isSelected && m_isInRange);
  return isSelected;
}

// The list of active consumers changes only after the loop over it.
template <class Give>
void C_RecordRun::ForEachActive(const Give& give) {
  bool isAnyDone = false;
  for (C_RecordConsumer* consumer : m_active) {
    give(*consumer);
    isAnyDone = isAnyDone || !consumer->WantsMore();
  }
  if (isAnyDone) SelectActive();
}

bool C_RecordRun::WantsMoreInputs() const {
  return std::any_of(m_consumers.begin(), m_consumers.end(), [](auto* consumer) { return consumer->WantsMore(); });
}

void C_RecordRun::BeforeWait() {
  for (C_RecordConsumer* consumer : m_consumers) consumer->BeforeWait();
}

void C_RecordRun::Finish() {
  for (C_RecordConsumer* consumer : m_consumers) consumer->Finish();
  if (m_framesFound > 0 && !m_selectsAll) ReportSelection();
}

std::string_view C_RecordRun::Selectors() const {
  if (m_selection.IsEverything()) return "--range";
  return m_range.IsEverything() ? "--from, --until and --talker" : "--range, --from, --until and --talker";
}

void C_RecordRun::ReportSelection() const {
  if (m_selection.Window().IsSet() && !m_hasTime)
    ReportWarning(fmt::format("--from and --until cannot be applied: the input carries no {}",
                              m_selection.Window().HasDates() ? "date" : "time"));
  else if (m_framesSelected == 0)
    ReportWarning(fmt::format("{} found, none within {}", Counted(m_framesFound, "frame"), Selectors()));
}

eExitCode C_RecordRun::Judge() const {
  eExitCode worst = m_framesFound > 0 && m_framesSelected == 0 ? eExitData : eExitOk;
  for (C_RecordConsumer* consumer : m_consumers) worst = std::max(worst, consumer->Judge());
  return worst;
}

}  // namespace Host
