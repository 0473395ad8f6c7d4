// Checks frames of the receiver's binary protocol "VelaBIN" and decodes them into interface records.
//
// A host constructs one decoder, tells it the time if it wants ephemerides (`SeedTime`), and passes every binary frame
// that the recognizer delivers to `Decode`:
//
//   C_VelaBin_Decode decoder(nullptr);
//   decoder.SeedTime(2300, 345600.0, ALGO::GNSS_GPS);
//   unsigned short number = 0;
//   U_VelaBIN_EcdDcdData record;  // about 31 KB: keep one, and not on a small stack
//   if (decoder.Decode(frame, length, number, record) == eResultOk && number == VelaBIN_Messages::eBin95)
//     Use(record.keplerEph);
//
// The twenty supported messages and how far each is decoded:
//
//   25, 95                            FULL: QZSS and GPS ephemeris, `keplerEph`
//   65, 93                            FULL: GLONASS and SBAS ephemeris, `pvaEph`
//   35, 45                            NOT DECODED: `keplerEph` names the satellite, every other field is empty; the
//                                     result is 0 with and without a seed
//   16, 36, 66, 76                    NOT DECODED: `obs` has header and trailer, no satellite
//   1, 2, 3, 5, 34, 44, 94, 122, 180  NOT DECODED: header, raw body and trailer
//   209                               fields by their size; their meaning is not known
//
// All twenty are checked, dispatched and counted in the same way. A body that is longer than its layout is accepted:
// the rest is ignored, and the trailer of the record holds the bytes right after the known body.
#ifndef VELAGNSS_BINPROTO_VELABIN_DECODE_H
#define VELAGNSS_BINPROTO_VELABIN_DECODE_H

#include <memory>

#include "binproto/SatelliteList.h"
#include "binproto/VelaBIN_Messages.h"
#include "geo/GnssTime.h"
#include "records/InterfaceRecords.h"
#include "velagnss_export.h"

// The output of `C_VelaBin_Decode::Decode`, owned by the caller. Which member is filled depends on the message number,
// given beside each.
union U_VelaBIN_EcdDcdData {
  VelaBIN_Messages::S_BinMsg1 bin1;       // 1
  VelaBIN_Messages::S_BinMsg2 bin2;       // 2
  VelaBIN_Messages::S_BinMsg3 bin3;       // 3
  VelaBIN_Messages::S_BinMsg5 bin5;       // 5
  VelaBIN_Messages::S_VelaBIN_Obs obs;    // 16, 36, 66, 76
  VelaBIN_Messages::S_IntBinMsg34 bin34;  // 34
  S_IFKeplerEphRec keplerEph;             // 25, 35, 45, 95
  VelaBIN_Messages::S_BinMsg44 bin44;     // 44
  S_IFPvaEphRec pvaEph;                   // 65, 93
  VelaBIN_Messages::S_BinMsg94 bin94;     // 94
  VelaBIN_Messages::S_BinMsg122 bin122;   // 122
  VelaBIN_Messages::S_BinMsg180 bin180;   // 180
  VelaBIN_Messages::S_BinMsg209 bin209;   // 209
};

namespace velagnss::binproto {
struct S_DecoderState;
}

// Keeps between frames: the last message of each number, counters, the latest known time of each system (the "seed"),
// and the frequency channels of the GLONASS slots. Allocates memory only at construction. Not copyable. One thread at a
// time may use it.
//
// Result codes are those of `records/ResultCodes.h`.
class VELAGNSS_API C_VelaBin_Decode {
 public:
  // Half a week in seconds: 302400.0.
  static const double mdHalfWeekSec;

  // A decoder with 64 satellite slots. The list may be null; it is not owned and must outlive the decoder.
  explicit C_VelaBin_Decode(const C_SatelliteList* list);

  // The same with another number of satellite slots. They are for observations, which are not decoded yet.
  C_VelaBin_Decode(const C_SatelliteList* list, const unsigned short& slots);

  ~C_VelaBin_Decode();

  // Returns to the state after construction: counters 0, stored messages cleared, seeds unset, GLONASS channels
  // unknown. The satellite list and the number of slots stay.
  void Reset();

  // --- Known times and channels -------------------------------------------------------------------------------------

  // Sets the seed of a system: a time from which the decoder completes broadcast weeks, which are modulo 1024. Any time
  // within half a roll-over period of the ephemerides will do, that is nearly ten years.
  //
  // The time is stored normalized. A GPS, BeiDou or Galileo time sets the seeds of all three (BeiDou time is GPS time -
  // 14 s, Galileo time equals GPS time, all on the same week scale); a time of another system sets only its own seed.
  // Ignored are week 0 together with seconds of exactly 0.0, and systems above 6.
  void SeedTime(unsigned short week, double seconds, ALGO::eGNSSSystem system);
  void SeedTime(const C_GnssTime& time);

  // The seed of a system. A seed that is not set, and that of a system above 6, is week 0, 0.0 s and system 7.
  const C_GnssTime& GetSeedTime(ALGO::eGNSSSystem system) const;

  // Completes the broadcast `week` of a system: the result is the week nearest to its seed that agrees with it modulo
  // 1024, on the GPS scale. BeiDou and Galileo weeks start 1356 and 1024 weeks after GPS weeks, as their documents
  // define. Returns false, with `week` unchanged, when the system has no seed or is above 6.
  bool ResolveWeek(ALGO::eGNSSSystem system, unsigned short& week) const;

  // Sets the frequency channel of a GLONASS slot, 1 to 24: -7 to +6, or -128 for unknown. Returns false, with nothing
  // changed, for any other slot or channel. Message 65 sets the channel of its slot by the same rule.
  bool SetGlonassSvChannelId(unsigned char slot, signed char channel);

  // The channel of a slot; -128 when it is unknown and for slots outside 1 to 24.
  signed char GetGlonassSvChannelId(unsigned char slot) const;

  // --- Frames -------------------------------------------------------------------------------------------------------

  // Checks one frame: sync, message number, length, checksum. `length` may exceed that of the frame.
  //
  // The outputs are written as far as the checks get: `position` (1 to 4 after the sync byte that was tried, 8 once the
  // header has been read), `msgNumber`, and `frameLength` (data length + 10, in 16 bits). Results, in the order of the
  // checks:
  //   eResultNull            `frame` is null
  //   eResultTooShort        `length` of 9 or less
  //   eResultBadSync         not "$BIN"
  //   eResultUnknownMessage  message number above 209
  //   eResultBadSync         a data length so large that the frame length wraps around below 10
  //   eResultTooShort        fewer bytes than the frame has
  //   eResultTooLong         a frame of more than 2047 bytes
  //   eResultChecksum        checksum mismatch
  //   eResultOk
  static unsigned int ValidateFrame(const unsigned char* frame, unsigned short length, unsigned short& msgNumber,
                                    unsigned short& frameLength, unsigned short& position);

  // Checks a frame, decodes it into the member of `out` that belongs to its number, and counts it. `frame` is read in
  // place and not changed; `length` must be exactly that of the frame, without carriage return and line feed.
  //
  // `out` is first cleared to zero bytes; after a failure it is zero or partly filled. `msgNumber` is set as far as
  // `ValidateFrame` gets. A message that fails is not counted and does not affect later ones. Results: those of
  // `ValidateFrame`, then
  //   eResultTooLong         more bytes than the frame has
  //   eResultUnknownMessage  not one of the twenty supported numbers
  //   eResultPastEnd         the body is shorter than the message's layout
  //   and those of the message, see below
  unsigned int Decode(unsigned char* frame, const unsigned short& length, unsigned short& msgNumber,
                      U_VelaBIN_EcdDcdData& out);

  // Result of the last `Decode` or `Decode_Bin1` ... `Decode_Bin209`; 0 before the first and after `Reset`.
  unsigned int GetLastResult() const;

  // How many frames of a message number `Decode` has decoded successfully since construction or `Reset`; 0 for numbers
  // above 209.
  unsigned int GetReceivedMsgCount(VelaBIN_Messages::eMessageTypes type) const;

  // True for the observation messages: 16, 36, 66 and 76.
  static bool IsAnObservationMsg(VelaBIN_Messages::eMessageTypes type);

  // --- Fields -------------------------------------------------------------------------------------------------------

  // Readers of little-endian fields. `position` is an offset from the start of the frame and moves past what is read;
  // any alignment will do. After a failure the value is 0:
  //   eResultNull     `frame` is null
  //   eResultBadSync  `length` below 10: no frame is that short
  //   eResultPastEnd  the value would end after `length`
  static unsigned int Decode_Bin_U16(const unsigned char* frame, const unsigned short& length, unsigned short& position,
                                     unsigned short& value);
  static unsigned int Decode_Bin_U32(const unsigned char* frame, const unsigned short& length, unsigned short& position,
                                     unsigned int& value);

  // Block id and data length at `position`, 4 bytes. Results are those of the readers. With eResultNull and
  // eResultBadSync `header` is cleared (block id 0xFFFF, data length 0); with eResultPastEnd what could not be read is
  // 0.
  static unsigned int Decode_Bin_Header(const unsigned char* frame, const unsigned short& length,
                                        unsigned short& position, VelaBIN_Messages::S_MsgHeader& header);

  // The checksum at `position`, 2 bytes. `position` then skips the terminator, which is not part of the frame: it is
  // neither read nor checked, and `trailer` always holds it as 0x0A0D. Results are those of the readers.
  static unsigned int Decode_Bin_Trailer(const unsigned char* frame, const unsigned short& length,
                                         unsigned short& position, VelaBIN_Messages::S_MsgTrailer& trailer);

  // --- Messages, one by one -----------------------------------------------------------------------------------------

  // As `Decode`, but the frame is neither checked nor counted: sync and checksum are not looked at, nor whether the
  // data length agrees with `length`. Common results, with `out` unchanged:
  //   eResultNull          `frame` is null
  //   eResultBadSync       `length` of 9 or less
  //   eResultWrongMessage  the block id is not the message's number
  //   eResultPastEnd       header, body or checksum would end after `length`

  // Header, raw body and trailer. NOT DECODED.
  unsigned int Decode_Bin1(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg1& out);
  unsigned int Decode_Bin2(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg2& out);
  unsigned int Decode_Bin3(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg3& out);
  unsigned int Decode_Bin5(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg5& out);
  unsigned int Decode_Bin34(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_IntBinMsg34& out);
  unsigned int Decode_Bin44(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg44& out);
  unsigned int Decode_Bin94(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg94& out);
  unsigned int Decode_Bin122(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg122& out);
  unsigned int Decode_Bin180(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg180& out);

  // Header, fields and trailer.
  unsigned int Decode_Bin209(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_BinMsg209& out);

  // Observations: header and trailer, no satellites, all other bytes zero. NOT DECODED.
  unsigned int Decode_Bin16(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_VelaBIN_Obs& out);
  unsigned int Decode_Bin36(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_VelaBIN_Obs& out);
  unsigned int Decode_Bin66(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_VelaBIN_Obs& out);
  unsigned int Decode_Bin76(unsigned char* frame, const unsigned short& length, VelaBIN_Messages::S_VelaBIN_Obs& out);

  // BeiDou (35) and Galileo (45) ephemeris: the record names satellite and system only. NOT DECODED.
  unsigned int Decode_Bin35(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out);
  unsigned int Decode_Bin45(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out);

  // QZSS (25) and GPS (95) ephemeris; with `qzss`, `Decode_Bin95` expects message 25. Further results: those of
  // `Bin95ToIFEphRec`.
  unsigned int Decode_Bin25(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out);
  unsigned int Decode_Bin95(unsigned char* frame, const unsigned short& length, S_IFKeplerEphRec& out, bool qzss);

  // GLONASS (65) and SBAS (93) ephemeris. eResultWrongMessage also means that the conversion below returned false.
  unsigned int Decode_Bin65(unsigned char* frame, const unsigned short& length, S_IFPvaEphRec& out);
  unsigned int Decode_Bin93(unsigned char* frame, const unsigned short& length, S_IFPvaEphRec& out);

  // --- Conversions --------------------------------------------------------------------------------------------------

  // Turns message 34 as received into message 34 as handed out: the same bytes. NOT DECODED.
  static void Bin34ToInterpretedRec(const VelaBIN_Messages::S_RawBinMsg34& raw, VelaBIN_Messages::S_IntBinMsg34& out);

  // GPS or QZSS subframes (IS-GPS-200, 20.3.3) into an ephemeris in SI units and radians. `out` is emptied first.
  //   eResultOutOfRange  satellite number outside 1 to 64 (GPS) or 183 to 211 (QZSS); only system and satellite are set
  //   eResultNoSeed      no GPS time is known: the weeks are as broadcast, everything else is filled
  unsigned int Bin95ToIFEphRec(const VelaBIN_Messages::S_BinMsg95& message, S_IFKeplerEphRec& out, bool qzss) const;

  // Words of BeiDou and Galileo: `out` is emptied and gets satellite number and system. Always eResultOk. NOT DECODED.
  unsigned int Bin35ToIFEphRec(const VelaBIN_Messages::S_BinMsg95& message, S_IFKeplerEphRec& out) const;
  unsigned int Bin45ToIFEphRec(const VelaBIN_Messages::S_BinMsg95& message, S_IFKeplerEphRec& out) const;

  // Completes the weeks of an ephemeris whose `TxWeek` is as broadcast. A reference time more than half a week from the
  // transmission belongs to the week before or after it. eResultNoSeed when `TimeSystem` has no seed: then the weeks
  // are on the broadcast scale.
  unsigned int KepEph_ResolveWeeksAndEOW(S_IFKeplerEphRec& record) const;

  // GLONASS strings (GLONASS ICD, 4.4) into an ephemeris in SI units. Also stores the frequency channel of the slot.
  // `out` is emptied first. Returns false, with `out` partly filled, for a header other than that of message 65, a slot
  // outside 1 to 24, or a channel byte outside 1 to 14; byte 136 is accepted as channel -128, "unknown".
  //
  // The frame is placed on the day of the reference time. When the two times of day are more than half a day apart, it
  // is placed a day later if its time of day exceeds the reference time of week, else a day earlier.
  bool Bin65ToIFPvaEphRec(const VelaBIN_Messages::S_BinMsg65& message, S_IFPvaEphRec& out);

  // SBAS ephemeris in SI units. `out` is emptied first. Returns false, with `out` partly filled, for a header other
  // than that of message 93, or when no GPS time is known.
  bool Bin93ToIFPvaEphRec(const VelaBIN_Messages::S_BinMsg93& message, S_IFPvaEphRec& out) const;

  // Converts a GLONASS date to a time: four-year interval N4 (1 starts in 1996), day NT within it (1 is 1 January of
  // its first year), and `tb` seconds of that day, in GLONASS time. `out` is normalized, with all whole weeks carried.
  static void ResolveGstTb(unsigned short N4, unsigned short NT, double tb, C_GnssTime& out);

  // --- Bits of GLONASS strings --------------------------------------------------------------------------------------

  // The unsigned number in the bits firstBit ... firstBit + count - 1 of a string, where `firstBit` is the lowest. 0
  // for a first bit outside 1 to 85 or a count outside 1 to 32; bits above 85 are 0.
  static unsigned int DecodeGloStringBits(const VelaBIN_Messages::S_GLONavString& string, unsigned char firstBit,
                                          unsigned char count);

  // The same for string `stringNo`, 1 to 5, of an array of five; 0 for a null array or any other number.
  static unsigned int GloNavStrBitsToU32(const VelaBIN_Messages::S_GLONavString* strings, unsigned char stringNo,
                                         unsigned char firstBit, unsigned char count);

  // The same for a number with its sign in the highest bit and its magnitude below, as GLONASS sends signed numbers.
  static int GloNavStrBitsToS32(const VelaBIN_Messages::S_GLONavString* strings, unsigned char stringNo,
                                unsigned char firstBit, unsigned char count);

 private:
  // Keeps the result for `GetLastResult` and returns it.
  unsigned int Remember(unsigned int result);
  // `Decode` without the count and without remembering the result.
  unsigned int ValidateAndDispatch(unsigned char* frame, unsigned short length, unsigned short& msgNumber,
                                   U_VelaBIN_EcdDcdData& out);

  std::unique_ptr<velagnss::binproto::S_DecoderState> m_state;  // never null
};

#endif  // VELAGNSS_BINPROTO_VELABIN_DECODE_H
