// Records the raw bytes of a source in files, from the first byte to the last, whatever happens to the disk.
#ifndef VELAGNSS_APPS_RECORDER_H
#define VELAGNSS_APPS_RECORDER_H

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/velagnss/input/TeeJob.h"
#include "apps/velagnss/record/FrameBorders.h"
#include "apps/velagnss/record/RecordFile.h"
#include "apps/velagnss/record/SyncThread.h"

namespace Host {

struct S_RecorderOptions {
  std::string pattern;           // of the names (FileNames.h)
  std::chrono::seconds every{};  // a new file at each multiple of this time since midnight; 0: none
  std::uint64_t maxSize = 0;     // bytes, a new file after the frame that reaches it; 0: none
  bool usesDataTime = false;     // the stream's own time instead of the machine's
  bool isCompressed = false;
};

// The beginning of the span that a time is in: spans are half-open and begin at midnight.
t_RecordTime SpanBegin(t_RecordTime time, std::chrono::seconds every);

// One source after the other. Files are cut between frames, and begin with their first byte. A disk that takes no more
// is reported and tried again from time to time; what came meanwhile is lost, and the index says so.
class C_Recorder : public C_StreamJob {
 public:
  C_Recorder(const S_RecorderOptions& options, C_SyncThread& sync, t_RecordClock clock = &NowForRecords);

  void BeginInput(const std::string& name) override;
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;
  void BeforeWait() override;
  void OnLink(const S_LinkChange& change) override;
  std::optional<std::chrono::milliseconds> LongestWait() const override { return std::chrono::seconds(1); }

  // Bytes that came and are in no file.
  std::uint64_t BytesLost() const { return m_lost; }

 private:
  S_RecordMoment Look();
  S_RecordMoment MomentOf(const S_Chunk& chunk, const S_RecordMoment& now) const;
  void NoteClock(const S_RecordMoment& now);
  bool IsSpanOver(const S_RecordMoment& when) const;
  void CheckDisk(const S_RecordMoment& now);

  void Pass(std::span<const unsigned char> bytes, std::uint64_t ready, const S_RecordMoment& when);
  void PassHeld(const S_RecordMoment& when);
  bool IsCutDue(const S_Border& border) const;
  bool IsTooLarge() const;
  void Write(std::span<const unsigned char> bytes, const S_RecordMoment& when);

  void Open(const S_RecordMoment& when);
  void Close(const S_RecordMoment& when);
  void Fail(int error, const S_RecordMoment& when);
  void Lose(std::uint64_t bytes);

  const S_RecorderOptions m_options;
  C_SyncThread& m_sync;
  const t_RecordClock m_clock;
  std::string m_source;
  std::string m_safeSource;
  C_FrameBorders m_borders;
  std::shared_ptr<C_RecordFile> m_file;  // none: nothing to write yet, or the disk takes nothing
  std::uint64_t m_position = 0;          // in the stream, of the next byte to write
  std::vector<unsigned char> m_held;     // from there on: bytes of a frame whose time is not known yet
  t_SteadyTime m_heldSince;
  t_RecordTime m_span;                     // of the file
  std::optional<t_RecordTime> m_dataTime;  // the last of the stream
  std::chrono::microseconds m_clockOffset{};
  bool m_isCutWanted = false;
  std::uint64_t m_overdue = 0;  // bytes that were written although a cut was due
  unsigned int m_hangups;
  t_SteadyTime m_lastCame;
  t_SteadyTime m_nextDiskCheck;
  std::optional<t_SteadyTime> m_retryAt;  // the disk took no more
  bool m_isFailing = false;               // reported
  std::uint64_t m_gap = 0;                // bytes lost since the last file
  std::uint64_t m_lost = 0;
};

// A recorder for each source that is read at the same time.
class C_Recorders : public C_TeeJobs {
 public:
  explicit C_Recorders(S_RecorderOptions options) : m_options(std::move(options)) {}

  C_StreamJob& Next() override;

  // Waits until the files are safe. eExitOutput, reported, when something was lost.
  eExitCode Judge() override;

 private:
  const S_RecorderOptions m_options;
  std::unique_ptr<C_SyncThread> m_sync;
  std::deque<C_Recorder> m_recorders;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORDER_H
