// From an arbitrary byte stream to whole, checked frames: where everything in this folder comes together.
//
// A receiver's port carries up to eleven protocols interleaved, in pieces of any size, with noise in between. A host
// hands each piece to the recognizer as it comes and then pumps until nothing is left to do; every result
// `eRecFrameComplete` has put one frame into the host's message:
//
//   C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowDropOldest, true);
//   std::vector<unsigned char> buffer(recognizer.GetMaxFrameLength());
//   C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
//   for (eRecognitionResult result = recognizer.DoRecognition(bytes, count, message); result != eRecNoNewData;
//        result = recognizer.DoRecognition(nullptr, 0, message)) {
//     if (result == eRecFrameComplete) Handle(message);
//   }
//
// A host that never hands over more than `GetFreeSpace()` bytes at once loses nothing to overflow. At the end of its
// input it may reset, feed once more what was still queued but its first byte, and so on: that frees frames which stand
// behind a false start that waits for bytes that never come.
//
// How a frame is found. The oldest queued byte is looked at: what cannot start a frame is dropped, byte by byte. A
// start pattern names the protocol, the first bytes tell how long the frame may become and which message it is, and the
// protocol's body scanner waits for its end and checks it. After any fault exactly one byte is given up, the false
// start, and the search goes on behind it: a frame that began inside the rejected bytes is still found.
#ifndef VELAGNSS_FRAMING_FRAME_RECOGNIZER_H
#define VELAGNSS_FRAMING_FRAME_RECOGNIZER_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "framing/CircularBuffer.h"
#include "framing/RawDataMessage.h"
#include "geo/GnssEnums.h"
#include "velagnss_export.h"

class C_RunningCrc24;

// What one step of the recognizer came to.
enum eRecognitionResult : unsigned int {
  eRecNoNewData = 0,      // nothing queued, or no new byte since the last step: stop pumping
  eRecSearching = 1,      // idle, or looking for a frame start: call again
  eRecFrameStarted = 2,   // protocol identified, body being collected: call again
  eRecFrameComplete = 3,  // a valid frame stands in the caller's message
  eRecChecksumError = 4,  // checksum or packing wrong: one byte dropped
  eRecFrameRejected = 5,  // unexpected message, bad length or forbidden character: one byte dropped
  eRecInputOverflow = 6,  // the queue overflowed while this call's bytes were queued; no step was made
  eRecError = 7,          // a step called out of turn, or an overflow policy that is none
};

// What must be known of a protocol to find its frames.
struct S_FrameDescriptor {
  char name[32];                          // a label; nothing is matched with it
  C_RawDataMessage::eProtocols protocol;  // what a match yields
  unsigned char startPattern[24];         // byte b matches at i when (b & startMask[i]) == startPattern[i]
  unsigned char startMask[24];            // 0 accepts any byte
  unsigned short startLength;             // bytes that must be queued and compared
  unsigned short headerLength;            // least frame length, unless the frame's first bytes tell another
  unsigned short maxLength;               // greatest frame length, unless the frame's first bytes tell another
};

// Length limits of a frame in bytes, both inclusive, from its first start byte to its last byte.
struct S_FrameLengths {
  unsigned short least;     // an end mark that comes before does not count
  unsigned short greatest;  // a frame that has not ended by then is none
};

// Counters of a stream. A sum that would pass 32 bits is cut to its low 16 bits before the addition: 0xFFFFFFFF is
// followed by 0x10000.
struct S_RecognizerStatistics {
  unsigned int bytesAccepted;   // bytes of delivered frames, and the line ends behind them
  unsigned int bytesDiscarded;  // noise, false starts, overflow
  unsigned int framesGood;      // delivered
  unsigned int framesBad;       // whose body failed: checksum, length or character
};

// One recognizer serves one stream on one thread. Everything is allocated by the constructor, nothing later.
class VELAGNSS_API C_FrameRecognizer {
 public:
  using eProtocols = C_RawDataMessage::eProtocols;  // for brevity

  // All protocols of the list are enabled, the search is not patient.
  //
  // `protocols`: what to expect, ended by `eAllProtocols` (reading stops at any value above 10, and after 254 entries).
  // A null list, or one that begins with its end, means all eleven. Only these can be enabled later on.
  // `overflowHandling`: what to do with bytes that do not fit into the queue of GetMaxFrameLength() + 32 bytes.
  // `keepStatistics`: whether to count (see GetStatistics); nothing else depends on it.
  C_FrameRecognizer(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling, bool keepStatistics);
  ~C_FrameRecognizer();
  C_FrameRecognizer(const C_FrameRecognizer&) = delete;
  C_FrameRecognizer& operator=(const C_FrameRecognizer&) = delete;

  // --- What a host calls ---

  // Queues `length` bytes (none when `data` is null), then makes one step of the search. With `eRecFrameComplete` the
  // frame has been copied into `message`: protocol, type, subtype, at most `message.capacity` bytes, and in
  // `message.length` how many. With every other result `message` is untouched.
  //
  // `data` is read during the call only. Bytes that do not fit meet the overflow policy one by one; the result is then
  // `eRecInputOverflow`, no step is made, and the next call goes on. The frame in `message` is the host's until the
  // next call that completes one; a message with a null `data` receives everything but the bytes.
  //
  // A call takes time for the bytes that it is given and for those that the step looks at, never more than the queue
  // holds. A body that is awaited is looked at once, however many calls its bytes take to come.
  eRecognitionResult DoRecognition(const unsigned char* data, unsigned short length, C_RawDataMessage& message);

  // Takes a protocol into or out of the search; `eAllProtocols` means every protocol named at construction, larger
  // values nothing. A protocol that was not named at construction stays off.
  void EnableProtocol(eProtocols protocol);
  void DisableProtocol(eProtocols protocol);

  // Replaces the policy for bytes that come from now on; what is queued stays. A number that is no policy makes
  // `DoRecognition` answer `eRecError` at a full queue, and the bytes that do not fit are lost uncounted.
  void SetOverflowHandling(eCircBufOvrflowHandling overflowHandling);

  // Whether a start waits until its protocol can be told for sure. Off (the default), a start pattern is compared as
  // soon as its own bytes are there, and fails when the bytes that tell type and length are still to come: "$RD1,",
  // "$>JI,", "$>JQUERY," and "$>JGEO," that arrive a few bytes at a time are lost. On, it waits for those bytes too:
  // the result no longer depends on how the stream was cut. Acknowledgements are an exception: "$>" is one as soon as
  // it is there, whatever would have followed. A host that does not wait for one disables `eVelaCmdAck`.
  void SetPatientSearch(bool patient);

  // Forgets everything: queue, frame in progress, counters. The enabled protocols, the policy and patience stay. For
  // the start of another stream, and behind a gap in this one.
  void FullProcessingReset();

  // Abandons the frame in progress; queue and counters stay. Its bytes are searched once more from the first one on.
  void ResetFrameScanProc();

  // The longest frame of the protocols named at construction, in bytes; 0 when there are none.
  unsigned short GetMaxFrameLength() const { return m_maxFrameLength; }

  // Bytes that can be queued now without overflow. What is queued is GetMaxFrameLength() + 32 - GetFreeSpace(); the
  // bytes fed so far less those queued, less `message.length`, are the offset of the frame just delivered.
  unsigned int GetFreeSpace() const { return m_queue.MaxNumItems() - m_queue.NumItems(); }

  // The live counters, null when none are kept. The pointer stays right as long as the recognizer lives.
  const S_RecognizerStatistics* GetStatistics() const { return m_statistics.get(); }

  // --- What a message is: RTCM 10403 message numbers and the other protocols' types ---

  // Whether RTCM 3 frames of this number are delivered.
  static bool IsASupportedRtcm3Type(unsigned int number);

  // Messages of the state space representation (SSR), by what they carry: corrections of orbit or clock or of both,
  // code biases, phase biases, the ionosphere's vertical electron content, clocks at a high rate. A high-rate clock
  // counts among orbit and clock too. False for any protocol but `eRTCM3_x`.
  static bool IsAnRtcmSsrOrbitClockMsg(eProtocols protocol, unsigned int number);
  static bool IsAnRtcmSsrCodeBiasMsg(eProtocols protocol, unsigned int number);
  static bool IsAnRtcmSsrPhaseBiasMsg(eProtocols protocol, unsigned int number);
  static bool IsAnRtcmSsrVtecMsg(eProtocols protocol, unsigned int number);
  static bool IsAHighRateSsrClockMsg(eProtocols protocol, unsigned int number);

  // The system that an orbit/clock message is about; `GNSS_UNKNOWN` for any other number.
  static ALGO::eGNSSSystem GetRtcmSsrOrbitClockMsgSys(unsigned int number);

  // The protocol is `eNMEA0183` and the type `eNmeaGGA`.
  static bool IsAnNmeaGgaMsg(eProtocols protocol, unsigned int type);

  // The protocol is the one named and the type at most 999.
  static bool IsAVelaRDMsg(eProtocols protocol, unsigned int type);
  static bool IsAVelaJIMsg(eProtocols protocol, unsigned int type);
  static bool IsAVelaJQUERYMsg(eProtocols protocol, unsigned int type);
  static bool IsAVelaGEOMsg(eProtocols protocol, unsigned int type);

  // --- Helpers of the body scanners ---

  // They keep nothing; hosts may use them on bytes of their own.
  //
  // The value of `count` hexadecimal digits, the most significant first. False, with the digits read so far, at
  // anything but 0-9 and A-F (lower case is refused); false and 0 when `count` is not 1 to 8.
  bool ExtractHexValue(const unsigned char* text, unsigned char count, unsigned int& value) const;

  // Exclusive or of `count` bytes, the checksum of NMEA 0183; 0 for none.
  unsigned char Compute_ByteXOR(const unsigned char* data, unsigned short count) const;

  // One byte of a 7-of-8 packed stream: its low 7 bits join `accumulator` above the `bitCount` bits there. True when
  // that made a 16-bit word, which has been moved to `*out`. With `out` null: starts over, false.
  static bool Unwind7of8_Byte(unsigned short* out, unsigned char in, unsigned int& accumulator,
                              unsigned char& bitCount);

  // Unpacks a 7-of-8 packed message. Packed bytes have their top bit set; the first byte without it ends the message,
  // so `in` needs such an end (a CR, say) unless `maxWords` words come first. `out` takes up to `maxWords` 16-bit
  // words, low byte first; the last one is the sum of those before it. Returns the bytes of payload without that word;
  // 0 when the sum is wrong, when there is no payload, or nothing packed.
  static unsigned int UnwindVela7of8Message(void* out, const unsigned char* in, unsigned short maxWords);

  // --- The machinery, step by step. DoRecognition drives it; a host has no need to. ---
  //
  // The search has four states. Idle: noise is dropped. Start search: the oldest byte may start a frame, its followers
  // are compared with the patterns. Body wait: the protocol is known, its end and its checksum are not yet.
  // Resynchronise: the start was none; its byte is dropped, and the search is idle again behind it.

  // Whether a frame of an enabled protocol can start with this byte.
  bool IsAFrameStartChar(unsigned char byte) const;

  // Whether this byte may follow the frame delivered last: CR and LF, except behind RTCM 3. The first byte that may not
  // ends the allowance.
  bool IsAPostFrameAllowedByte(unsigned char byte);

  // Fill the tables that the search works from; the constructor has done it, and doing it again changes nothing. The
  // first one takes the start patterns, the second the start bytes of the enabled protocols, the others the length
  // limits of a protocol's messages.
  void CreateRecognizedFrames();
  void SetFrameStartChars();
  void SetExpectedNMEA0183Msgs();
  void SetExpectedVelaBINMsgs();
  void SetExpectedVelaRDMsgs();
  void SetExpectedVelaJIMsgs();
  void SetExpectedVelaGEOMsgs();
  void SetExpectedVelaJQUERYMsgs();
  void SetExpectedJSITERECORDMsgs();

  // Compares the queued bytes with the start patterns of the enabled protocols, in the order of the catalogue: the
  // first that matches goes on with DetermineMsgExpectations(). `eRecSearching` while no pattern matches; the start is
  // given up when as many bytes have been compared as the longest pattern has. `eRecError` unless a start is being
  // looked at.
  eRecognitionResult FrameStartSearch();

  // Sets the expectations of the matched protocol's frame; false of the parameter step means `eRecFrameRejected`.
  eRecognitionResult DetermineMsgExpectations();

  // Read message type and length limits from the first bytes of a frame: the bytes that they need are those of
  // docs/wire-formats.md. False: too few bytes, or no such message; then `DoRecognition` answers `eRecFrameRejected`.
  bool GetRTCM3_xFrameParameters();
  bool GetNMEA0183rameParameters();
  bool GetVelaBINFrameParameters();
  bool GetPKvnFrameParameters();
  bool GetVelaRDFrameParameters();
  bool GetVelaJIFrameParameters();
  bool GetVelaGEOFrameParameters();
  bool GetVelaJQUERYFrameParameters();
  bool GetJSITERECORDFrameParameters();

  // Scan the frame's body for its end and check it: `FrameBodyWait` by the matched protocol. `eRecFrameStarted` while
  // bytes are missing, then `eRecFrameComplete`, `eRecChecksumError` or `eRecFrameRejected`. `eRecError` unless a body
  // is awaited. They look at the queue and remove nothing from it. Each takes whatever frame is awaited for one of its
  // own and looks at it from the first byte on.
  eRecognitionResult FrameBodyWait();
  eRecognitionResult RTCM3xBodyWait();
  eRecognitionResult NMEA0183BodyWait();
  eRecognitionResult VelaBINBodyWait();
  eRecognitionResult PKVNRawBodyWait();
  eRecognitionResult PKVNNotRawBodyWait();
  eRecognitionResult JSITERECORDBodyWait();
  eRecognitionResult VelaCmdAckBodyWait();
  eRecognitionResult JROXBodyWait();

 private:
  static constexpr unsigned int kNumProtocols = 11;

  enum eScanState : unsigned int { eIdle = 0, eStartSearch = 1, eBodyWait = 2, eResynchronise = 3 };

  enum eBody { eRtcmBody, eVelaBinBody, eTextBody, ePkvnBody, eSiteRecordBody, eAckBody, eJroxBody, ePkvnRawBody };
  struct S_BodyRule;
  static const S_BodyRule kBodyRules[];  // by eBody
  struct S_ProtocolRow;
  static const S_ProtocolRow kProtocols[kNumProtocols];  // in search order

  // What a body scanner says of the bytes it sees; the queue is moved by DoRecognition alone.
  enum class eVerdict { More, Complete, BadCheck, Rejected, GivenUp };

  // Out of line, so that DoRecognition, called a few times for each byte of a slow line, saves no registers for them.
  [[gnu::noinline]] eRecognitionResult QueueInput(const unsigned char* data, unsigned int length);
  bool MakeRoomInFullQueue();
  [[gnu::noinline]] eRecognitionResult StepIdle();
  [[gnu::noinline]] eRecognitionResult StepStartSearch();
  [[gnu::noinline]] eRecognitionResult StepBodyWait(C_RawDataMessage& message);
  void DeliverFrame(C_RawDataMessage& message);
  void DropFalseStart();
  void FlushBytes(unsigned int count);
  void ResetWorkMessage();

  // The first `count` queued bytes (no more than are queued, nor than the work message can hold) in one piece: in
  // place, or where they pass the ring's end, as a copy that grows with the stream.
  const unsigned char* FrameBytes(unsigned int count) {
    unsigned int run = 0;
    const void* head = m_queue.PeekHeadRun(run);
    return count <= run ? static_cast<const unsigned char*>(head) : LinearBytes(count, run);
  }
  const unsigned char* LinearBytes(unsigned int count, unsigned int headRun);
  unsigned int CopyCapacity() const;
  void HoldBytes(unsigned int count) {
    m_workMessage.length = std::max(m_workMessage.length, static_cast<unsigned short>(count));
  }
  void AddRowByByte(unsigned int descriptor);
  bool Matches(unsigned int descriptor, const unsigned char* bytes) const;
  bool BeginsWith(std::string_view prefix, unsigned int count);
  bool Expect(unsigned int type, const S_FrameLengths& lengths);

  bool IsBodyAwaited() const { return m_state == eBodyWait && m_currentDescriptor < kNumProtocols; }
  eRecognitionResult Conclude(eVerdict verdict);
  eRecognitionResult ScanBody(eBody body);
  eVerdict CollectLength();
  eVerdict CollectUntilEnd(const S_BodyRule& rule);
  unsigned int FirstMark(const S_BodyRule& rule, const unsigned char* bytes, unsigned int end);
  eVerdict CheckRtcmSum();
  eVerdict CheckBinaryFrame();
  eVerdict CheckNmeaSum();
  eVerdict CheckPackedSentence();
  eVerdict CheckPkvnSentence();
  eVerdict CheckSiteRecord();
  eVerdict CheckPackedReply();

  void Count(unsigned int S_RecognizerStatistics::*counter, unsigned int amount) {
    if (m_statistics == nullptr) return;
    unsigned int& value = (*m_statistics).*counter;
    if (value > 0xFFFFFFFF - amount) value &= 0xFFFF;
    value += amount;
  }

  eCircBufOvrflowHandling m_overflowHandling;
  bool m_patientSearch = false;
  bool m_postFrame = false;  // a frame was delivered: its line end may follow
  const std::array<bool, kNumProtocols> m_allowedProtocols;
  const unsigned short m_maxFrameLength;
  unsigned short m_minStartLength = 0;  // of the enabled protocols
  unsigned short m_maxStartLength = 0;
  unsigned short m_rowsByByte[2][256] = {};  // descriptors that may have the byte first, second: bit i for row i
  bool m_enabledProtocols[kNumProtocols] = {};
  S_FrameDescriptor m_descriptors[kNumProtocols] = {};
  std::uint64_t m_startHeads[kNumProtocols] = {};  // first bytes of the start pattern, and of its mask, as one word
  std::uint64_t m_startHeadMasks[kNumProtocols] = {};
  unsigned short m_neededLengths[kNumProtocols] = {};  // bytes held before a descriptor is compared
  const S_FrameLengths* m_nmeaLengths = nullptr;       // by sentence
  const S_FrameLengths* m_velaBinLengths = nullptr;    // by block id
  const S_FrameLengths* m_velaRdLengths = nullptr;     // by version
  S_FrameLengths m_velaJiLengths = {};
  S_FrameLengths m_velaGeoLengths = {};
  S_FrameLengths m_velaJqueryLengths = {};
  S_FrameLengths m_jsiteRecordLengths = {};

  eScanState m_state = eIdle;
  unsigned short m_scanCount = 0;           // bytes of the current frame looked at
  unsigned short m_lastScanCount = 0xFFFF;  // m_scanCount at the last step; 0xFFFF forces a step
  unsigned int m_currentDescriptor = kNumProtocols;
  unsigned int m_lastDescriptor = kNumProtocols + 1;  // of the frame delivered last
  unsigned short m_frameMinLength = 0;
  unsigned short m_frameMaxLength = 0;
  unsigned int m_settled = 0;   // bytes queued at the last step, if it only waits for more; 0 if the next must be made
  unsigned int m_examined = 0;  // bytes of the body that need no second look by this scanner
  eBody m_examinedAs = eTextBody;

  // Positions in the stream, so that what is known of a byte stays known when a false start before it is dropped.
  std::uint64_t m_position = 0;        // of the oldest queued byte
  std::uint64_t m_unmarkedTo[4] = {};  // by UTIL::eMark: no such byte is queued before this position
  std::uint64_t m_copyBegin = 0;       // of the bytes that were copied out of the ring, which passed its end
  std::uint64_t m_copyEnd = 0;

  std::unique_ptr<S_RecognizerStatistics> m_statistics;
  std::unique_ptr<C_RunningCrc24> m_runningSums;  // of the bytes behind a false start of RTCM 3
  std::unique_ptr<unsigned char[]> m_copy;
  std::unique_ptr<unsigned char[]> m_unwindBuffer;
  C_RawDataMessage m_workMessage;  // the frame in progress; its bytes stay in the queue
  C_CircularBuffer m_queue;
};

#endif  // VELAGNSS_FRAMING_FRAME_RECOGNIZER_H
