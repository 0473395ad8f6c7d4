// From a frame of any protocol to its record, by one call.
//
//   velagnss::RecordDecoder decoder;
//   const velagnss::DecodedFrame& decoded = decoder.Decode(frame);
//   if (const auto* gga = std::get_if<S_GGA_Data>(&decoded.record)) Use(*gga);
#ifndef VELAGNSS_STREAM_RECORD_DECODER_H
#define VELAGNSS_STREAM_RECORD_DECODER_H

#include <memory>
#include <optional>

#include "geo/GnssTime.h"
#include "stream/FrameReader.h"
#include "stream/Record.h"
#include "stream/StreamClock.h"
#include "velagnss_export.h"

namespace velagnss {

// The result of decoding a frame.
struct DecodedFrame {
  // What the frame holds.
  Record record;

  // The code of `records/ResultCodes.h`; missing for a frame that has no decoder. A frame with a code other than 0
  // is handed out as text or as the bytes of its body, unless `isWeekUnresolved` is set.
  std::optional<unsigned int> result;

  Depth depth = Depth::None;           // how far it has been decoded
  WeekSource week = WeekSource::None;  // of an ephemeris

  // An ephemeris that was decoded except for its week: no time was known to resolve it. Its result is not 0.
  bool isWeekUnresolved = false;

  // The checksum is right, but the contents break a rule of the message.
  bool hasDataError = false;
};

// Keeps one decoder for each protocol, and the state that decoding needs from frame to frame: the time, to resolve the
// weeks of ephemerides, the frequency channels of the GLONASS slots, and the locks of observed signals. One decoder
// serves one stream at a time, on one thread. It allocates memory in its constructor only, throws nothing later, and
// never reads the machine's clock.
//
// NMEA sentences of older and shorter forms are completed as `C_NMEA_EncodeDecode::MakeDecodable` does it before they
// are decoded.
//
// Weeks are completed with the time of `SeedTime`; without it, with the dates that the stream carries, in sentences or
// in RTCM 3 (see `Rtcm3Decoder`); before the first of these, with the day of `AssumeFirstDay`. An ephemeris that comes
// before any keeps its week unresolved. The binary protocol takes the first date of the stream, which is good for ten
// years. RTCM 3 takes each, as its observations need the right week.
class VELAGNSS_API RecordDecoder {
 public:
  RecordDecoder();
  ~RecordDecoder();
  RecordDecoder(const RecordDecoder&) = delete;
  RecordDecoder& operator=(const RecordDecoder&) = delete;

  // Decodes one frame. The answer stays until the next call; its texts and bodies point into the frame. A null `data`
  // gives result 1.
  const DecodedFrame& Decode(const Frame& frame);

  // The same into a place of the caller's, which may be used again: a DecodedFrame has room for the largest record, and
  // copying one takes longer than decoding most frames. `decoded` may hold anything before.
  void Decode(const Frame& frame, DecodedFrame& decoded);

  // The same in two steps, for programs with several threads. `Prepare` decodes NMEA 0183 and RTCM 3 as far as that
  // needs nothing of earlier frames: any number of threads may call it at the same time, also while another one calls
  // other functions but `KeepTimeDigits`. If it returns false, the frame is one for `Decode`, and `decoded` is
  // unchanged. Otherwise the record must not be used until `Follow` has completed it: called once, with the same frame,
  // it also notes what the frame means for those after it. `Follow` and `Decode` are called in the order of the stream.
  bool Prepare(const Frame& frame, DecodedFrame& decoded) const;
  void Follow(const Frame& frame, DecodedFrame& prepared);

  // The time to resolve weeks with, within about ten years of the data. It takes precedence over the dates of the
  // stream and survives `Restart`.
  void SeedTime(const C_GnssTime& time);

  // The day (MJD) of the first time of each stream. It counts only until the stream carries a date of its own: a wrong
  // day does no harm to what comes after. It survives `Restart`. A day before 1983 or after 2100 dates nothing.
  void AssumeFirstDay(unsigned int mjd);

  // How many digits the times of NMEA sentences keep. `Hundredths` at first, so that the records are those of
  // `C_NMEA_EncodeDecode`; it survives `Restart` and `Reset`.
  void KeepTimeDigits(TimeDigits digits);

  // Prepares for another stream: forgets dates and GLONASS channels. The seed stays.
  void Restart();

  // Back to the state after construction: the seed and the first day are forgotten as well.
  void Reset();

  // The frequency channel of a GLONASS slot, 1 to 24: -7 to +6, or -128 for unknown. Message 65 of the binary protocol
  // and the messages 1009 to 1012, 1020 and MSM5 and MSM7 of RTCM 3 set it as well (RTCM 3 can carry channels up to
  // +13). Setting: false, and nothing changed, for any other slot or channel.
  signed char GlonassChannel(unsigned char slot) const;
  bool SetGlonassChannel(unsigned char slot, signed char channel);

  // The time of the stream so far.
  const StreamClock& Clock() const;

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_STREAM_RECORD_DECODER_H
