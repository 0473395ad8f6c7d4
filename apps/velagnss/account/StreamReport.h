// The account of one input: counts, integrity, times, positions.
#ifndef VELAGNSS_APPS_STREAM_REPORT_H
#define VELAGNSS_APPS_STREAM_REPORT_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/pipeline/FrameDecoder.h"
#include "apps/velagnss/pipeline/FrameReader.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "apps/velagnss/text/MessageNames.h"

namespace Host {

// A list that keeps its first entries and goes on counting: noise without end must not fill the memory.
template <class Entry>
class C_BoundedList {
 public:
  static constexpr std::size_t kCapacity = 1000;

  void Add(const Entry& entry) {
    if (m_entries.size() < kCapacity) m_entries.push_back(entry);
    ++m_count;
  }
  const std::vector<Entry>& Entries() const { return m_entries; }
  std::uint64_t Count() const { return m_count; }

 private:
  std::vector<Entry> m_entries;
  std::uint64_t m_count = 0;
};

struct S_MessageCount {
  S_MessageKey key;
  std::uint64_t count = 0;
  std::uint64_t faults = 0;  // right checksum, but its contents do not decode
};

struct S_FalseStart {
  std::uint64_t offset;
  unsigned int result;
};

struct S_SkippedRange {
  std::uint64_t offset;
  std::uint64_t length;
};

struct S_TimeGap {
  std::uint64_t offset;  // of the frame that ended it
  double from;           // s, on the scale of C_StreamClock
  double to;
};

// The steps from one epoch of the stream to the next. A sentence that is late by up to 10 s is no step.
class C_EpochSteps {
 public:
  void Note(std::uint64_t offset, double seconds);

  std::optional<double> First() const { return m_first; }
  std::optional<double> Last() const { return m_last; }

  // The step that occurs most often, s, the shortest of several; 0 with fewer than two epochs.
  double UsualStep() const { return static_cast<double>(m_usual) / 1000; }

  // Steps of more than one and a half times the usual one: how many, and of them the first 1000.
  std::uint64_t GapCount() const;
  std::vector<S_TimeGap> Gaps() const;

 private:
  void Count(long step);
  void Keep(const S_TimeGap& step);
  bool IsGap(long step) const;

  std::optional<double> m_first;
  std::optional<double> m_last;
  std::map<long, std::uint64_t> m_counts;  // by step in ms
  long m_usual = 0;                        // of them the most frequent
  std::vector<S_TimeGap> m_steps;          // that may be gaps: which step is the usual one is known at the end
};

// Fills itself as the sink of a reader. One per input.
class C_StreamReport : public C_FrameSink {
 public:
  explicit C_StreamReport(std::string input) : m_input(std::move(input)) {}

  void OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) override;
  void OnRejection(const S_Rejection& rejection) override;
  void OnSkipped(std::uint64_t offset, std::uint64_t length) override;

  // Closes the account with the reader's totals.
  void Close(const C_FrameReader& reader);

  // Per cent of the frames found whose body was damaged; 0 when there were none.
  double BadPercent() const;
  const std::string& Input() const { return m_input; }
  std::uint64_t FramesGood() const { return m_framesGood; }
  std::uint64_t BytesRead() const { return m_bytes; }

  void WriteJson(C_JsonWriter& json) const;

  // For people, in aligned columns. `isLong`: all entries of the lists, not only the first few.
  std::string Table(bool isLong) const;

 private:
  S_MessageCount& CountOf(const C_RawDataMessage& frame);
  double Duration() const;
  double RateOf(std::uint64_t count) const;
  void WriteJsonMessages(C_JsonWriter& json) const;
  void WriteJsonTime(C_JsonWriter& json) const;
  void WriteJsonPosition(C_JsonWriter& json) const;
  void WriteJsonIntegrity(C_JsonWriter& json) const;
  void AppendMessages(std::string& table) const;
  void AppendTime(std::string& table, std::size_t maxRows) const;
  void AppendPosition(std::string& table) const;
  void AppendIntegrity(std::string& table, std::size_t maxRows) const;

  std::string m_input;
  C_FrameDecoder m_decoder{std::nullopt};
  std::vector<S_MessageCount> m_messages;
  C_EpochSteps m_epochs;
  C_PositionSummary m_position;
  C_BoundedList<S_FalseStart> m_falseStarts;
  C_BoundedList<S_SkippedRange> m_skipped;
  std::uint64_t m_checksumErrors = 0;
  std::uint64_t m_rejectedStarts = 0;

  std::uint64_t m_bytes = 0;
  std::uint64_t m_queued = 0;
  S_StreamTotals m_atEnd;
  std::uint64_t m_framesGood = 0;
  std::uint64_t m_framesBad = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_REPORT_H
