// From the bytes of one input to its frames, without losing one that the input holds.
#ifndef VELAGNSS_APPS_FRAME_READER_H
#define VELAGNSS_APPS_FRAME_READER_H

#include <cstdint>
#include <span>
#include <vector>

#include "framing/FrameRecognizer.h"

namespace Host {

// A false start: bytes that opened a frame which then failed. Only its first byte is dropped.
struct S_Rejection {
  std::uint64_t offset;                  // of the first byte
  unsigned int result;                   // eRecChecksumError or eRecFrameRejected
  std::span<const unsigned char> bytes;  // the first bytes there, 5 at most
};

// What a reader tells, in the order of the stream; offsets count the bytes of the input from 0.
class C_FrameSink {
 public:
  virtual ~C_FrameSink() = default;
  virtual void OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) = 0;
  virtual void OnRejection(const S_Rejection&) {}

  // A whole run of bytes that belong to no frame; told when the run has ended, after the rejections in it.
  virtual void OnSkipped(std::uint64_t /*offset*/, std::uint64_t /*length*/) {}
};

// The recognizer's counters without their fold at 4 GiB. Accepted are the bytes of frames and the line ends behind
// them.
struct S_StreamTotals {
  std::uint64_t bytesAccepted = 0;
  std::uint64_t bytesDiscarded = 0;
  std::uint64_t framesGood = 0;
  std::uint64_t framesBad = 0;
};

// Feeds a recognizer the careful way: never more bytes than its queue can take, each piece pumped until nothing new
// comes, and at the end of the input what still waits behind a false start is fed again from one byte later. No byte is
// ever made up to complete a frame: a header with zeros behind it can be a valid one.
class C_FrameReader {
 public:
  // `protocols` ends with `eAllProtocols`. The sink must outlive the reader.
  C_FrameReader(const C_RawDataMessage::eProtocols* protocols, C_FrameSink& sink);

  // Any number of bytes, read before the call returns. The same frames come whatever the cutting into pieces.
  void Feed(std::span<const unsigned char> bytes);

  // The end of the input.
  void Finish();

  // Ready for another input; offsets and totals begin again at 0.
  void Restart();

  // What came in so far, and the counters over it.
  std::uint64_t BytesFed() const { return m_fed; }
  const S_StreamTotals& Totals() const { return m_totals; }

  // The same counters as they stood when the input ended, before waiting bytes were fed again. Accepted, discarded and
  // queued bytes add up to the bytes fed.
  const S_StreamTotals& TotalsAtEnd() const { return m_totalsAtEnd; }
  std::uint64_t QueuedAtEnd() const { return m_queuedAtEnd; }

 private:
  void Pump(std::span<const unsigned char> piece);
  void NoteStep(unsigned int result, std::uint64_t before);
  void NoteRejection(unsigned int result, std::uint64_t offset);
  void CloseSkippedRun(std::uint64_t end);
  void TakeCounters();
  void KeepQueuedBytes(std::span<const unsigned char> bytes);
  unsigned int Queued() const { return m_capacity - m_recognizer.GetFreeSpace(); }

  C_FrameRecognizer m_recognizer;
  C_FrameSink& m_sink;
  unsigned int m_capacity;  // of the recognizer's queue
  std::vector<unsigned char> m_buffer;
  C_RawDataMessage m_frame;

  std::uint64_t m_fed = 0;   // bytes handed over; the queue's head stands `Queued()` before it
  std::uint64_t m_head = 0;  // offset of the oldest byte queued
  bool m_inSkippedRun = false;
  std::uint64_t m_skippedFrom = 0;

  // The bytes that the queue holds at the end of a call of `Feed`, and during the call those fed behind them.
  std::vector<unsigned char> m_kept;
  std::span<const unsigned char> m_current;
  std::uint64_t m_currentFrom = 0;  // offset of the first byte of `m_current`

  S_RecognizerStatistics m_lastCounters{};
  S_StreamTotals m_totals;
  S_StreamTotals m_totalsAtEnd;
  std::uint64_t m_queuedAtEnd = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_READER_H
