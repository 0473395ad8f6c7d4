#include "apps/velagnss/record/Recorder.h"

#include <fmt/core.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "apps/velagnss/input/SourceName.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/record/FileNames.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono;

constexpr auto kClockStep = milliseconds(500);  // more than a clock is adjusted by in good order
constexpr auto kMaxAge = seconds(60);           // of bytes that have just been handed over
constexpr auto kRetryAfter = seconds(30);       // a disk that took no more
constexpr auto kDiskCheckEvery = seconds(10);
constexpr auto kSilence = seconds(1);           // then a file that is due is closed without waiting for bytes
constexpr auto kLongSilence = seconds(60);      // likewise in the midst of a frame
constexpr std::uint64_t kMaxOverdue = 1 << 16;  // bytes without a border; the longest frame has 2048
constexpr std::size_t kMaxHeld = 1 << 16;       // bytes before the first date,
constexpr auto kMaxHeldFor = seconds(10);       // or so long
constexpr std::uint64_t kReserve = 32'000'000;  // bytes of the disk that are left to others,
constexpr unsigned int kReservePart = 20;       // but no more than this part of it

const char* Advice(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "free some space";
    case EFBIG:
      return "the file is at its size limit (ulimit -f): set --max-size below it";
    case EROFS:
      return "mount the disk so that it can be written";
    case EIO:
      return "check the disk";
    default:
      return "check the directory and its permissions";
  }
}

// A full disk also stops programs that could free it.
bool IsReserveReached(const std::string& file) {
  struct statvfs disk {};
  std::filesystem::path directory = std::filesystem::path(file).parent_path();
  if (::statvfs(directory.empty() ? "." : directory.c_str(), &disk) != 0) return false;
  const std::uint64_t size = std::uint64_t{disk.f_blocks} * disk.f_frsize;
  return size > 0 && std::uint64_t{disk.f_bavail} * disk.f_frsize < std::min(kReserve, size / kReservePart);
}

void AdoptParts(const std::string& pattern, const std::string& source) {
  for (const std::filesystem::path& part : FindParts(pattern, source)) {
    const std::optional<S_Adopted> adopted = AdoptPart(part);
    if (!adopted) continue;
    if (adopted->error != 0)
      ReportWarning(fmt::format("{}: left by an earlier run, cannot be brought to an end: {}; {}", part.native(),
                                std::strerror(adopted->error), Advice(adopted->error)));
    else if (adopted->size > 0)
      ReportDetail(fmt::format("{}: {} of an earlier run", adopted->name, Counted(adopted->size, "byte")));
  }
}

// By the times of a stream, which may have late frames.
bool IsStepBack(t_RecordTime time, t_RecordTime before) { return before - time > days(1); }

void ReportFailures(C_SyncThread& sync) {
  for (const C_SyncThread::S_Failure& failure : sync.TakeFailures())
    ReportError(fmt::format("{}: may be incomplete: {}; {}", failure.file, std::strerror(failure.error),
                            Advice(failure.error)));
}

}  // namespace

t_RecordTime SpanBegin(t_RecordTime time, seconds every) {
  if (every.count() == 0) return time;
  const t_RecordTime midnight = floor<days>(time);
  return time - (time - midnight) % every;
}

C_Recorder::C_Recorder(const S_RecorderOptions& options, C_SyncThread& sync, t_RecordClock clock)
    : m_options(options),
      m_sync(sync),
      m_clock(std::move(clock)),
      m_borders(options.usesDataTime ? C_FrameBorders::eTimes::Dated : C_FrameBorders::eTimes::None),
      m_hangups(HangupsReceived()) {}

void C_Recorder::BeginInput(const std::string& name) {
  const S_RecordMoment now = m_clock();
  m_source = name;
  m_safeSource = SafeSourceName(name);
  m_borders.Restart();
  m_position = 0;
  m_held.clear();
  m_dataTime.reset();
  m_clockOffset = now.Offset();
  m_lastCame = now.steady;
  AdoptParts(m_options.pattern, m_safeSource);
}

// What does not depend on bytes: the clock, signals, the disk.
S_RecordMoment C_Recorder::Look() {
  const S_RecordMoment now = m_clock();
  NoteClock(now);
  if (const unsigned int hangups = HangupsReceived(); hangups != std::exchange(m_hangups, hangups))
    m_isCutWanted = true;
  m_isCutWanted = m_isCutWanted && m_file != nullptr;
  return now;
}

// Times in an index run on by the steady clock, so a clock that is set shows by itself.
void C_Recorder::NoteClock(const S_RecordMoment& now) {
  const microseconds offset = now.Offset();
  if (abs(offset - m_clockOffset) <= kClockStep) return;
  m_clockOffset = offset;
  if (m_file == nullptr) return;
  m_file->SetClock(now);
  m_isCutWanted = m_isCutWanted || (!IsClockSet(m_file->BeginTime()) && IsClockSet(now.utc));
}

// A clock that was set back must not keep a file open for ever, nor may it reopen the span before.
bool C_Recorder::IsSpanOver(const S_RecordMoment& when) const {
  if (m_file == nullptr || m_options.every.count() == 0 || m_dataTime) return false;
  return SpanBegin(when.utc, m_options.every) > m_span || when.steady - m_file->BeginSteady() >= m_options.every;
}

void C_Recorder::CheckDisk(const S_RecordMoment& now) {
  if (m_file == nullptr || now.steady < m_nextDiskCheck) return;
  m_nextDiskCheck = now.steady + kDiskCheckEvery;
  if (IsReserveReached(m_file->Name())) Fail(ENOSPC, now);
}

// When the bytes came, by both clocks. They may have waited a little.
S_RecordMoment C_Recorder::MomentOf(const S_Chunk& chunk, const S_RecordMoment& now) const {
  const auto arrival = time_point_cast<microseconds>(chunk.arrival);
  const microseconds age = now.utc - arrival;
  if (age < microseconds(0) || age > kMaxAge) return now;
  return {arrival, std::max(m_lastCame, now.steady - age)};
}

void C_Recorder::Feed(const S_Chunk& chunk) {
  const S_RecordMoment now = Look();
  const S_RecordMoment when = MomentOf(chunk, now);
  m_lastCame = when.steady;
  m_isCutWanted = m_isCutWanted || IsSpanOver(when);
  CheckDisk(now);
  m_borders.Feed(chunk.bytes);
  // A frame that begins a span is held until its time is known. The first file waits for the first date.
  if (!m_options.usesDataTime) return Pass(chunk.bytes, m_borders.Fed(), when);
  if (m_held.empty()) m_heldSince = now.steady;
  m_held.insert(m_held.end(), chunk.bytes.begin(), chunk.bytes.end());
  const bool hasTime = m_dataTime || std::any_of(m_borders.Borders().begin(), m_borders.Borders().end(),
                                                 [](const S_Border& border) { return border.time.has_value(); });
  if (hasTime || m_file != nullptr || m_held.size() >= kMaxHeld) PassHeld(when);
}

void C_Recorder::PassHeld(const S_RecordMoment& when) {
  const std::uint64_t begin = m_position;
  Pass(m_held, m_borders.Resolved(), when);
  m_held.erase(m_held.begin(), m_held.begin() + static_cast<std::ptrdiff_t>(m_position - begin));
}

// Writes `bytes`, the first of which is the next one of the stream, up to the position `ready`.
void C_Recorder::Pass(std::span<const unsigned char> bytes, std::uint64_t ready, const S_RecordMoment& when) {
  const std::uint64_t begin = m_position;
  const auto writeTo = [&](std::uint64_t end) {
    Write(bytes.subspan(m_position - begin, end - m_position), when);
    m_position = end;
  };
  for (const S_Border& border : m_borders.Borders()) {
    if (border.at < m_position || border.at > ready) continue;
    if (border.time && !m_dataTime) m_dataTime = border.time;
    if (m_retryAt && when.steady >= *m_retryAt) {
      writeTo(border.at);
      m_retryAt.reset();
    } else if (IsCutDue(border)) {
      writeTo(border.at);
      Close(when);
    }
    if (border.time && (*border.time > *m_dataTime || IsStepBack(*border.time, *m_dataTime))) m_dataTime = border.time;
  }
  writeTo(ready);
  if (m_overdue > kMaxOverdue) Close(when);
}

bool C_Recorder::IsCutDue(const S_Border& border) const {
  if (m_file == nullptr && border.at == m_position) return false;
  if (m_isCutWanted) return true;
  const std::uint64_t size = (m_file == nullptr ? 0 : m_file->Size()) + (border.at - m_position);
  if (m_options.maxSize > 0 && size >= m_options.maxSize) return true;
  if (!border.time || m_options.every.count() == 0) return false;
  const t_RecordTime span = SpanBegin(*border.time, m_options.every);
  const t_RecordTime current = m_file != nullptr ? m_span : SpanBegin(*m_dataTime, m_options.every);
  return span > current || IsStepBack(span, current);
}

bool C_Recorder::IsTooLarge() const { return m_options.maxSize > 0 && m_file->Size() >= m_options.maxSize; }

void C_Recorder::Write(std::span<const unsigned char> bytes, const S_RecordMoment& when) {
  if (bytes.empty()) return;
  if (m_file == nullptr && !m_retryAt) Open(when);
  if (m_file == nullptr) return Lose(bytes.size());
  const std::uint64_t lost = m_file->Write(bytes, when.steady);
  if (m_isCutWanted || IsTooLarge()) m_overdue += bytes.size();
  Lose(lost);
  if (lost > 0) Fail(m_file->Error(), when);
}

void C_Recorder::Open(const S_RecordMoment& when) {
  m_span = SpanBegin(m_dataTime.value_or(when.utc), m_options.every);
  std::string name = ExpandPattern(m_options.pattern, m_safeSource, m_span);
  if (!m_dataTime && !IsClockSet(when.utc)) name = UndatedName(name);
  if (IsReserveReached(name)) return Fail(ENOSPC, when);
  m_file = C_RecordFile::Create(name, m_options.isCompressed, when);
  if (m_file == nullptr) return Fail(errno, when);
  ReportDetail(fmt::format("{}: recorded in {}", m_source, m_file->Name()));
  m_sync.Watch(m_file);
  m_nextDiskCheck = when.steady + kDiskCheckEvery;
  if (m_gap > 0) {
    ReportWarning(fmt::format("{}: recorded again; {} could not be written", m_source, Counted(m_gap, "byte")));
    m_file->Mark(S_IndexRecord::eKind::Gap, m_gap, when.steady);
  }
  m_gap = 0;
  m_isFailing = false;
}

void C_Recorder::Close(const S_RecordMoment& when) {
  m_isCutWanted = false;
  m_overdue = 0;
  if (m_file == nullptr) return;
  const std::shared_ptr<C_RecordFile> file = std::exchange(m_file, nullptr);
  const std::uint64_t lost = file->Complete(when.steady);
  Lose(lost);
  if (lost > 0) Fail(file->Error(), when);
  if (file->Size() > 0) ReportDetail(fmt::format("{}: {} recorded", file->Name(), Counted(file->Size(), "byte")));
  if (!file->HasWholeIndex())
    ReportWarning(fmt::format("{}: the index of its times could not be written to its end", file->Name()));
  m_sync.Settle(file);
}

// The source is kept: other users of its bytes go on, and the recording when it can.
void C_Recorder::Fail(int error, const S_RecordMoment& when) {
  if (!std::exchange(m_isFailing, true))
    ReportError(fmt::format("{}: recording stops: {}; {}; it is tried again every {} s",
                            m_file == nullptr ? m_options.pattern : m_file->Name(), std::strerror(error), Advice(error),
                            kRetryAfter.count()));
  m_retryAt = when.steady + kRetryAfter;
  Close(when);
}

void C_Recorder::Lose(std::uint64_t bytes) {
  m_gap += bytes;
  m_lost += bytes;
}

// Time also passes without bytes. Line ends may still follow a frame, so nothing is closed before a little silence.
void C_Recorder::BeforeWait() {
  const S_RecordMoment now = Look();
  CheckDisk(now);
  ReportFailures(m_sync);
  if (m_file == nullptr && !m_held.empty() && now.steady - m_heldSince > kMaxHeldFor) PassHeld(now);
  if (m_file == nullptr) return;
  if (const std::uint64_t lost = m_file->Flush(now.steady); lost > 0) {
    Lose(lost);
    return Fail(m_file->Error(), now);
  }
  const bool isCutWanted = m_isCutWanted || IsSpanOver(now);
  const auto silence = now.steady - m_lastCame;
  if (isCutWanted && (silence >= kLongSilence || (silence >= kSilence && m_borders.IsBetweenFrames()))) Close(now);
}

void C_Recorder::OnLink(const S_LinkChange& change) {
  const S_RecordMoment now = Look();
  if (change.state == S_LinkChange::eState::Lost) {
    m_borders.Finish();
    PassHeld(now);
  }
  if (change.state == S_LinkChange::eState::Connected && m_file != nullptr)
    m_file->Mark(S_IndexRecord::eKind::Reconnect, 0, now.steady);
}

void C_Recorder::EndInput() {
  const S_RecordMoment now = Look();
  m_borders.Finish();
  PassHeld(now);
  Close(now);
}

C_StreamJob& C_Recorders::Next() {
  if (m_sync == nullptr) m_sync = std::make_unique<C_SyncThread>();
  return m_recorders.emplace_back(m_options, *m_sync);
}

eExitCode C_Recorders::Judge() {
  if (m_sync == nullptr) return eExitOk;
  m_sync->Drain();
  std::uint64_t lost = 0;
  for (const C_Recorder& recorder : m_recorders) lost += recorder.BytesLost();
  if (lost > 0) ReportError(fmt::format("{} could not be recorded", Counted(lost, "byte")));
  ReportFailures(*m_sync);
  return lost > 0 || m_sync->HasFailed() ? eExitOutput : eExitOk;
}

}  // namespace Host
