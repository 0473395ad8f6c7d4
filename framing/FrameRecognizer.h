// From an arbitrary byte stream to whole, checked frames: the main header of this directory.
//
// A receiver's port carries up to eleven protocols interleaved, in pieces of any size, with noise in between. A host
// hands each piece to the recognizer as it arrives and then pumps until nothing is left to do. Each result
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
// A host that never hands over more than `GetFreeSpace()` bytes at once loses nothing to overflow. At the end of the
// input, a false start may still be waiting for bytes that never come, with good frames queued after it. To get them,
// take the `GetQueuedBytes()` bytes fed last, reset, feed all of them but the first, and repeat until nothing is
// queued.
//
// How a frame is found. Queued bytes that cannot start a frame are dropped, oldest first. A start pattern identifies
// the protocol, the first bytes give the message type and the length limits, and the protocol's body scanner waits for
// the end of the frame and checks it. After any fault exactly one byte is given up, the false start, and the search
// goes on with the next one: a frame that began inside the rejected bytes is still found.
#ifndef VELAGNSS_FRAMING_FRAME_RECOGNIZER_H
#define VELAGNSS_FRAMING_FRAME_RECOGNIZER_H

#include <memory>

#include "framing/CircularBuffer.h"
#include "framing/RawDataMessage.h"
#include "geo/GnssEnums.h"
#include "velagnss_export.h"

namespace velagnss::framing {
class C_RecognizerCore;
}

// The outcome of one step of the recognizer.
enum eRecognitionResult : unsigned int {
  eRecNoNewData = 0,      // nothing queued, or no new byte since the last step: stop pumping
  eRecSearching = 1,      // idle, or looking for a frame start: call again
  eRecFrameStarted = 2,   // protocol identified, body being collected: call again
  eRecFrameComplete = 3,  // the caller's message holds a valid frame
  eRecChecksumError = 4,  // checksum or packing wrong: one byte dropped
  eRecFrameRejected = 5,  // unexpected message, bad length or forbidden character: one byte dropped
  eRecInputOverflow = 6,  // the queue overflowed while this call's bytes were queued; no step was made
  eRecError = 7,          // a step called out of turn, or an invalid overflow policy at a full queue
};

// What must be known of a protocol to find its frames.
struct S_FrameDescriptor {
  char name[32];                          // a label; nothing is matched with it
  C_RawDataMessage::eProtocols protocol;  // what a match yields
  unsigned char startPattern[24];         // byte b matches at i when (b & startMask[i]) == startPattern[i]
  unsigned char startMask[24];            // 0 accepts any byte
  unsigned short startLength;             // bytes that must be queued and compared
  unsigned short headerLength;            // least frame length, unless the frame's first bytes give another
  unsigned short maxLength;               // greatest frame length, likewise
};

// Counters of a stream. A sum that would pass 32 bits is cut to its low 16 bits before the addition: 0xFFFFFFFF is
// followed by 0x10000.
struct S_RecognizerStatistics {
  unsigned int bytesAccepted;   // bytes of delivered frames, and the line ends after them
  unsigned int bytesDiscarded;  // noise, false starts, overflow
  unsigned int framesGood;      // delivered
  unsigned int framesBad;       // identified, but with a wrong checksum, length or character
};

// One recognizer serves one stream on one thread. Allocates memory only at construction and in `SetAcceptUnlisted`.
class VELAGNSS_API C_FrameRecognizer {
 public:
  using eProtocols = C_RawDataMessage::eProtocols;  // for brevity

  // Enables all protocols of the list; the search is not patient.
  //
  // `protocols`: what to expect, ended by `eAllProtocols` (reading stops at any value above 10, and after 254 entries).
  // A null list, or one that begins with `eAllProtocols`, means all eleven. Other protocols cannot be enabled later.
  // `overflowHandling`: what to do with bytes that do not fit into the queue. The queue holds a little more than the
  // longest frame; GetFreeSpace() of a new recognizer is its capacity.
  // `keepStatistics`: whether GetStatistics() has counters; nothing else depends on it.
  C_FrameRecognizer(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling, bool keepStatistics);
  ~C_FrameRecognizer();
  C_FrameRecognizer(const C_FrameRecognizer&) = delete;
  C_FrameRecognizer& operator=(const C_FrameRecognizer&) = delete;

  // --- What a host calls ---

  // Queues `length` bytes (none when `data` is null), then makes one step of the search. With `eRecFrameComplete` the
  // frame has been copied into `message`: protocol, type, subtype, at most `message.capacity` bytes, and in
  // `message.length` how many. With every other result `message` is untouched.
  //
  // `data` is read during the call only. The overflow policy is applied to each byte that does not fit; the result is
  // then `eRecInputOverflow`, no step is made, and the next call goes on. The frame in `message` is the host's until
  // the next call that completes one; a message with a null `data` receives everything but the bytes.
  //
  // The time of a call is bounded by the bytes that it is given and those that are queued. Each byte of a body that is
  // awaited is looked at a bounded number of times, however many calls it takes to arrive.
  eRecognitionResult DoRecognition(const unsigned char* data, unsigned short length, C_RawDataMessage& message);

  // Adds a protocol to the search, or removes it. `eAllProtocols` means every protocol named at construction; larger
  // values have no effect. A protocol that was not named at construction stays off.
  void EnableProtocol(eProtocols protocol);
  void DisableProtocol(eProtocols protocol);

  // Replaces the policy for bytes that are fed from now on; what is queued stays. With an invalid policy,
  // `DoRecognition` returns `eRecError` at a full queue, and the bytes that do not fit are lost without being counted.
  void SetOverflowHandling(eCircBufOvrflowHandling overflowHandling);

  // Whether the search waits until it has all the bytes that identify a frame. Off (the default), a start pattern is
  // compared as soon as its own bytes are queued, and the start is rejected if the bytes that give type and length have
  // not arrived: "$RD1,", "$>JI,", "$>JQUERY," and "$>JGEO," that arrive a few bytes at a time are lost. On, the search
  // waits for those bytes too, and the result does not depend on how the stream was cut. Acknowledgements are an
  // exception: "$>" is taken for one at once, whatever follows. A host that does not expect any disables `eVelaCmdAck`.
  void SetPatientSearch(bool patient);

  // Whether frames that are not listed are delivered as well when their checksum is right: RTCM 3 frames of any message
  // number, and sentences of any address. Off (the default), they are noise. `messageType` is the number, or
  // `eNmeaUnknown`.
  //
  // A sentence is "$" or "!", capital letters or digits up to the first comma, no control character, "*hh" with digits
  // of either case, and a line end, 1024 bytes at most. A listed sentence whose length is outside its limits counts
  // too. The search for listed frames comes first. Only a start that fails as one is looked at again, and only while
  // `eRTCM3_x` or `eNMEA0183` is enabled. A frame that holds a listed one is not delivered: the listed one is.
  //
  // On, a patient search that loses nothing to overflow delivers every frame that it delivers when off, and from the
  // same place, with two exceptions. An unlisted frame does not wait for a listed one that begins inside it and ends
  // after it. And a listed sentence whose line ends below its least length is delivered there if the checksum is right,
  // although the rule for listed ones would look for a longer one that takes in the next line: the two would match by
  // chance only.
  //
  // `framesBad` also counts unlisted frames that are whole but have a wrong checksum. Each false start counts once.
  // Allocates memory when it is switched on for the first time.
  void SetAcceptUnlisted(bool on);

  // Discards the queue, the frame in progress and the counters. The enabled protocols, the overflow policy, the patient
  // search and the acceptance of unlisted frames stay. For the start of another stream, or after a gap in this one.
  void FullProcessingReset();

  // Abandons the frame in progress; queue and counters stay. Its bytes are searched again from the first one on.
  void ResetFrameScanProc();

  // The longest frame of the protocols named at construction, in bytes; 0 when there are none.
  unsigned short GetMaxFrameLength() const;

  // Bytes that can be queued now without overflow.
  unsigned int GetFreeSpace() const;

  // Bytes that are queued now: fed, but neither delivered nor discarded yet. When a frame has just been delivered, its
  // offset in the stream is the number of bytes fed so far, less GetQueuedBytes(), less `message.length`, provided that
  // nothing was lost to overflow and the whole frame fitted into the message.
  unsigned int GetQueuedBytes() const;

  // Copies the oldest queued bytes to `out`, as many as it has room for, and returns how many. They stay queued. With
  // it a host need not keep what it has fed in order to search it again at the end of its input.
  unsigned int CopyQueuedBytes(unsigned char* out, unsigned int room) const;

  // The live counters; null when none are kept. The pointer stays valid for the life of the recognizer.
  const S_RecognizerStatistics* GetStatistics() const;

  // --- What a message is: RTCM 10403 message numbers and the other protocols' types ---

  // Whether RTCM 3 frames of this number are delivered.
  static bool IsASupportedRtcm3Type(unsigned int number);

  // Messages of the state space representation (SSR), by what they carry: corrections of orbit, clock or both, code
  // biases, phase biases, the ionosphere's vertical electron content, clock corrections at a high rate. The high-rate
  // messages are also orbit/clock messages. False for any protocol but `eRTCM3_x`.
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

  // --- Helpers of the body scanners, without state: hosts may use them on bytes of their own ---

  // The value of `count` hexadecimal digits, the most significant first. False, with the digits read so far, at
  // anything but 0-9 and A-F (lower case is refused); false and 0 when `count` is not 1 to 8.
  bool ExtractHexValue(const unsigned char* text, unsigned char count, unsigned int& value) const;

  // Exclusive or of `count` bytes, the checksum of NMEA 0183; 0 for none.
  unsigned char Compute_ByteXOR(const unsigned char* data, unsigned short count) const;

  // One byte of a 7-of-8 packed stream: adds its low 7 bits to `accumulator`, above the `bitCount` bits that are there.
  // True when that completes a 16-bit word, which is moved to `*out`. With `out` null: clears both, false.
  static bool Unwind7of8_Byte(unsigned short* out, unsigned char in, unsigned int& accumulator,
                              unsigned char& bitCount);

  // Unpacks a 7-of-8 packed message. Packed bytes have their top bit set; the first byte without it ends the message,
  // so `in` must contain one (a CR, say) unless it has `maxWords` words. `out` must have room for `maxWords` 16-bit
  // words, which are written low byte first; the last one is the 16-bit sum of the others. Returns the number of
  // payload bytes, without that word; 0 when the sum is wrong, when there is no payload, or when a pointer is null.
  static unsigned int UnwindVela7of8Message(void* out, const unsigned char* in, unsigned short maxWords);

  // --- The steps that DoRecognition makes. A host need not call them. ---
  //
  // The search has four states. Idle: noise is dropped. Start search: the oldest byte may start a frame; it and the
  // next ones are compared with the patterns. Body wait: the protocol is known, the end of the frame has not been
  // reached. Resynchronize: the start was false; its byte is dropped, and the search is idle again.

  // Whether a frame of an enabled protocol can start with this byte.
  bool IsAFrameStartChar(unsigned char byte) const;

  // Whether this byte belongs to the line end of the frame delivered last: CR or LF, except after RTCM 3. The first
  // other byte ends that line end: from then on the answer is false.
  bool IsAPostFrameAllowedByte(unsigned char byte);

  // Fill the tables that the search works from: the start patterns, the start bytes of the enabled protocols, and the
  // length limits of each protocol's messages. The constructor calls them; calling them again changes nothing.
  void CreateRecognizedFrames();
  void SetFrameStartChars();
  void SetExpectedNMEA0183Msgs();
  void SetExpectedVelaBINMsgs();
  void SetExpectedVelaRDMsgs();
  void SetExpectedVelaJIMsgs();
  void SetExpectedVelaGEOMsgs();
  void SetExpectedVelaJQUERYMsgs();
  void SetExpectedJSITERECORDMsgs();

  // Compares the queued bytes with the start patterns of the enabled protocols, in their fixed order. On the first
  // match it returns the result of DetermineMsgExpectations(), otherwise `eRecSearching`; the start is given up once as
  // many bytes have been compared as the longest pattern has. `eRecError` unless the state is start search.
  eRecognitionResult FrameStartSearch();

  // Sets type and length limits of the frame that starts: `eRecFrameStarted`, or `eRecFrameRejected` when the
  // protocol's parameter step, below, returns false. `eRecError` when no start has matched.
  eRecognitionResult DetermineMsgExpectations();

  // Read message type and length limits from the first bytes of a frame (docs/wire-formats.md). False, with nothing
  // set, when fewer bytes are held than that takes, or for a message that is not supported.
  bool GetRTCM3_xFrameParameters();
  bool GetNMEA0183rameParameters();
  bool GetVelaBINFrameParameters();
  bool GetPKvnFrameParameters();
  bool GetVelaRDFrameParameters();
  bool GetVelaJIFrameParameters();
  bool GetVelaGEOFrameParameters();
  bool GetVelaJQUERYFrameParameters();
  bool GetJSITERECORDFrameParameters();

  // Scan the frame's body for its end and check the frame; `FrameBodyWait` calls the scanner of the matched protocol.
  // `eRecFrameStarted` while bytes are missing, then `eRecFrameComplete`, `eRecChecksumError` or `eRecFrameRejected`.
  // `eRecError` unless the state is body wait. Nothing is removed from the queue. Called directly, each treats the
  // awaited frame as its own kind and rescans it from byte 0.
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
  std::unique_ptr<velagnss::framing::C_RecognizerCore> m_core;
};

#endif  // VELAGNSS_FRAMING_FRAME_RECOGNIZER_H
