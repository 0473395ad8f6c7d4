// From a stream of bytes to its frames, one at a time: what an embedding program needs first.
//
//   velagnss::FrameReader reader;
//   while (Read(bytes, count)) {
//     reader.Feed(bytes, count);
//     while (const auto frame = reader.NextFrame()) Handle(frame);
//   }
//   reader.Finish();
//   while (const auto frame = reader.NextFrame()) Handle(frame);
//
// The reader drives a `C_FrameRecognizer` so that no checked frame of the stream is lost and none is invented: the
// search is patient, the queue is never given more bytes than fit, every piece is pumped until nothing new comes, and
// at the end of the input whatever still waits after a false start is searched again from one byte later. No byte is
// ever made up to complete a frame: a binary header followed by zeros can be a valid one. Only a line end may be
// missing: the end of the stream serves as that of its last sentence, if it has a checksum and the checksum is right.
// The frames do not depend on how the stream was cut into pieces, unless acknowledgements are searched for.
#ifndef VELAGNSS_STREAM_FRAME_READER_H
#define VELAGNSS_STREAM_FRAME_READER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <variant>

#include "framing/RawDataMessage.h"
#include "velagnss_export.h"

namespace velagnss {

// One checked frame. Offsets count the bytes of the stream from 0. The bytes are the reader's: they stay until the next
// call of the reader that handed them out.
struct Frame {
  const unsigned char* data = nullptr;  // from the first start byte to the last byte of the frame
  unsigned short length = 0;            // bytes; up to 2048
  C_RawDataMessage::eProtocols protocol = C_RawDataMessage::eNoProtocol;  // whose frame it is
  unsigned int message = 0xFFFFFFFF;                                      // as `C_RawDataMessage::messageType`
  std::uint64_t offset = 0;                                               // of the first byte in the stream
};

// A false start: bytes that opened a frame which then failed. Only its first byte is given up; the search goes on with
// the next one, so the same bytes may still hold a good frame.
struct RejectedStart {
  // Why it was given up; numbered as `eRecognitionResult`.
  enum class Reason : unsigned char {
    Checksum = 4,   // the frame was whole, but its checksum or its packing was wrong
    NotAFrame = 5,  // unknown message, or a length or character that the message cannot have
  };

  static constexpr std::size_t kMaxBytes = 5;  // no start is judged by fewer, however the stream is cut

  std::uint64_t offset = 0;             // of the first byte
  Reason reason = Reason::NotAFrame;    // why it was given up
  const unsigned char* data = nullptr;  // the first bytes, at most kMaxBytes; fewer at the end of the stream
  std::size_t size = 0;                 // how many they are
};

// A whole run of bytes that belong to no frame. It comes once the run has ended, after the rejected starts in it.
struct SkippedRange {
  // What the run holds.
  enum class Reason : unsigned char {
    Noise,        // nothing in it looked like a frame
    FalseStarts,  // it holds at least one rejected start
    EndOfStream,  // likewise, or noise, and its last bytes began a frame that the end of the stream cut off
  };

  static constexpr std::size_t kMaxBytes = 1024;  // of a run are shown

  std::uint64_t offset = 0;             // of the first byte
  std::uint64_t length = 0;             // bytes of the run
  Reason reason = Reason::Noise;        // what it holds
  const unsigned char* data = nullptr;  // the first bytes of the run, at most kMaxBytes
  std::size_t size = 0;                 // how many they are
};

// What a reader hands out. `std::monostate`: it has used up the bytes fed and needs more.
using StreamItem = std::variant<std::monostate, Frame, RejectedStart, SkippedRange>;

// What became of the bytes and frames of a stream.
struct StreamTotals {
  std::uint64_t bytesAccepted = 0;   // of frames handed out, and the line ends after them
  std::uint64_t bytesDiscarded = 0;  // of no frame
  std::uint64_t framesGood = 0;      // frames handed out
  std::uint64_t framesBad = 0;       // starts whose body failed: checksum, length or character
};

// One reader serves one stream at a time, on one thread. It allocates memory in its constructor and in `AcceptUnlisted`
// only and throws nothing elsewhere.
class VELAGNSS_API FrameReader {
 public:
  // Searches for every protocol but command acknowledgements, and hands out frames only.
  //
  // An acknowledgement is any "$>", as soon as these two bytes are there: it carries no checksum and takes the text up
  // to the next line end with it. The replies and records that begin with the same bytes are then found or hidden as
  // the stream happens to be cut. Enable `eVelaCmdAck` only for a stream that holds acknowledgements.
  FrameReader();
  ~FrameReader();
  FrameReader(const FrameReader&) = delete;
  FrameReader& operator=(const FrameReader&) = delete;

  // Takes a protocol into or out of the search from here on; `eAllProtocols` means all of them, acknowledgements
  // included.
  void EnableProtocol(C_RawDataMessage::eProtocols protocol);
  void DisableProtocol(C_RawDataMessage::eProtocols protocol);

  // Whether frames that are not listed are handed out as well when their checksum is right: RTCM 3 of any message
  // number and sentences of any address, as `C_FrameRecognizer::SetAcceptUnlisted` describes it. Off at first.
  // Allocates memory when it is switched on for the first time.
  void AcceptUnlisted(bool on);

  // Whether `Next` also hands out `RejectedStart` and `SkippedRange`. Off at first; switch it before the first byte of
  // a stream: later, bytes that came before cannot be shown. Frames and totals are the same either way.
  void ReportEvents(bool on);

  // Takes the next `count` bytes of the stream, any number of them. They are read in place while `Next` is called, so
  // they must stay unchanged until it has answered `std::monostate`. False, and nothing taken, while bytes fed before
  // have not been used up.
  bool Feed(const unsigned char* bytes, std::size_t count);

  // Declares the end of the stream: `Next` then also hands out what waits after a false start, and a last sentence
  // that lacks nothing but its line end. Call it until it answers `std::monostate`. After that the stream may go on
  // with another `Feed`, at the offset reached; a frame that was cut off is not completed by it.
  //
  // A program that reads from a port may call this when the port has been silent for a while: the last frames of a
  // burst then come out although a false start is waiting.
  void Finish();

  // The next frame or event of what has been fed, in the order of the stream. The item stays until the next call.
  const StreamItem& Next();

  // The next frame; null when the bytes fed are used up. Events on the way are passed over.
  const Frame* NextFrame();

  // Forgets the stream: offsets and totals begin again at 0. Protocols, unlisted frames and event reporting stay.
  void Restart();

  // Bytes taken from what was fed, and what became of them. Accepted, discarded and queued bytes add up to the bytes
  // fed. While bytes are searched again after `Finish`, the number fed counts up to the last of them once more.
  std::uint64_t BytesFed() const;
  std::uint64_t BytesQueued() const;
  StreamTotals Totals() const;

  // The same as they were at the last `Finish`, before the bytes that still waited were searched again. Zero before.
  const StreamTotals& TotalsAtFinish() const;
  std::uint64_t QueuedAtFinish() const;

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_STREAM_FRAME_READER_H
