// Decodes the contents of RTCM 3 messages (RTCM 10403): a frame in, a record out.
//
//   velagnss::Rtcm3Decoder decoder;
//   decoder.SeedTime(C_GnssTime(2314, 345600.0, ALGO::GNSS_GPS));
//   const velagnss::Rtcm3Decoded& decoded = decoder.Decode(frame, length);
//   if (const auto* epoch = std::get_if<velagnss::Rtcm3Observations>(&decoded.record)) Use(*epoch);
//
// Decoded messages:
//   1001 to 1004, 1009 to 1012, 1071 to 1077 ... 1131 to 1137    observations
//   1005, 1006, 1032, 1007, 1008, 1033, 1013, 1029, 1230         station, antenna, system parameters, text, biases
//   1019, 1020, 1041, 1042 (63), 1044, 1045, 1046                ephemerides
//   1057 to 1068, 1240 to 1245, 1258 to 1263                     corrections of orbits, clocks and codes
//   1030, 1031, 1303                                             residuals of a network
// The record of any other message holds its number and payload.
#ifndef VELAGNSS_RTCM3_RTCM3_DECODER_H
#define VELAGNSS_RTCM3_RTCM3_DECODER_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "geo/GnssTime.h"
#include "rtcm3/Rtcm3Records.h"
#include "velagnss_export.h"

namespace velagnss {

// Result of decoding a frame.
struct Rtcm3Decoded {
  unsigned int result = 0;     // code of records/ResultCodes.h
  unsigned short message = 0;  // number; 0 if there is none
  Rtcm3Record record;          // the contents
};

// Decodes one frame after another. Keeps what later messages depend on: the time, the leap seconds, the frequency
// channels of GLONASS, and the lock of each signal. One decoder serves one stream at a time, on one thread. It
// allocates memory in its constructor only, throws nothing later, and looks at no clock and no locale.
//
// Time. Messages carry weeks modulo 1024 or not at all, and GLONASS messages often no day. The decoder picks the week
// or day nearest to a known time: first that of `SeedTime`, then that of the latest observations. Without a seed it
// uses the dates of the stream: each of 1013, 1029 and `NoteUtc`, or before these that of the first ephemeris of a
// healthy BeiDou or Galileo satellite, whose weeks do not repeat before 2078. Before any of these it uses that of
// `AssumeTime`. A seed must be within 9.8 years of the data to resolve ephemerides, within half a week to resolve
// observations, and within half a day for GLONASS observations without a day of week. Gaps in the stream must be
// shorter than that as well, unless a date of the stream follows them.
class VELAGNSS_API Rtcm3Decoder {
 public:
  Rtcm3Decoder();
  ~Rtcm3Decoder();
  Rtcm3Decoder(const Rtcm3Decoder&) = delete;
  Rtcm3Decoder& operator=(const Rtcm3Decoder&) = delete;

  // Decodes one frame, from its preamble to the last byte of its checksum. The answer is valid until the next call;
  // `Rtcm3Payload` points into the frame. A payload may be longer than the message: what follows the last known field
  // is ignored. Results, in the order of the checks:
  //   eResultNull        `frame` is null
  //   eResultTooShort    fewer bytes than the frame has
  //   eResultBadSync     no preamble, or one of the six bits after it is set
  //   eResultTooLong     more bytes than the frame has
  //   eResultChecksum    checksum mismatch
  //   eResultPastEnd     the payload ends before its last field
  //   eResultOutOfRange  an ephemeris of satellite 0; a satellite mask and a signal mask of more than 64 cells
  //   eResultBadField    a correction followed by more than padding: it has another layout
  //   eResultNoSeed      an ephemeris whose week cannot be resolved; the record is filled but for weeks and day
  //   eResultOk          also for messages that are not decoded
  // After a failure the record is an `Rtcm3Payload`, or empty if the frame itself is at fault, and the decoder's state
  // is as before.
  const Rtcm3Decoded& Decode(const unsigned char* frame, std::size_t length);

  // Sets the known time; dates of the stream are then ignored. The system may be GPS, Galileo, QZSS or NavIC (all GPS
  // time), BeiDou (GPS time - 14 s) or GLONASS (UTC + 3 h). A time of another system, or of week 0 and 0.0 s, is
  // ignored.
  void SeedTime(const C_GnssTime& time);

  // As `SeedTime`, but only until the stream carries a date. No effect after `SeedTime` or a date of the stream. Call
  // it again as time goes on: the observations that follow must be within half a week of it.
  void AssumeTime(const C_GnssTime& time);

  // Whether the known date is that of `AssumeTime`.
  bool IsTimeAssumed() const;

  // A date of the stream that came in another protocol: day (MJD) and second of UTC. It has the effect of a message
  // 1013, but only until a 1013 or 1029 has come: two receivers in one stream may not agree on the date. A day before
  // 2004 is ignored: no message of RTCM 3 is older.
  void NoteUtc(unsigned int mjd, std::uint32_t secondOfDay);

  // GPS time - UTC, in seconds. If neither this call nor a message 1013 has set it, it follows from the date, by
  // `LeapSecondsOn`; without a date it is 18.
  void SetLeapSeconds(unsigned char seconds);

  // Frequency channel of a GLONASS slot 1 to 24: -7 to +13, or -128 for unknown. False, and nothing changed, for any
  // other slot or channel. Messages 1009 to 1012, 1020 and MSM5 and MSM7 of GLONASS set it as well.
  bool SetGlonassChannel(unsigned char slot, signed char channel);

  // The channel known for a slot; -128 for unknown, and outside 1 to 24.
  signed char GlonassChannel(unsigned char slot) const;

  // Back to the state after construction: forgets time, leap seconds, channels and locks.
  void Reset();

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_RTCM3_RTCM3_DECODER_H
