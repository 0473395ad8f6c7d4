// NMEA 0183 sentences into records and back. Chief header of the folder of text protocols.
//
// A sentence is "$", two characters of talker, three of sentence id, fields led by ",", then "*", two hexadecimal
// digits of checksum (the XOR of every byte between "$" and "*"), CR LF:
//
//   $GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41
//
// Take a sentence from `C_FrameRecognizer`, which also gives its type, and call `Decode`:
//
//   C_NMEA_EncodeDecode nmea;
//   C_NMEA_EncodeDecode::U_EcdDcdData data;
//   if (nmea.Decode(sentence, length, C_RawDataMessage::eNmeaGGA, data) == eResultOk) Use(data.gga);
//
// The decoders take fields strictly by their position and do not know the shorter forms of earlier NMEA versions. Real
// receivers send those: pass such sentences through `MakeDecodable` first.
//
// An object allocates nothing, keeps no state between calls but the result and the last sentence encoded, and is used
// by one thread at a time. Result codes are those of records/ResultCodes.h.
#ifndef VELAGNSS_TEXTPROTO_NMEA_ENCODE_DECODE_H
#define VELAGNSS_TEXTPROTO_NMEA_ENCODE_DECODE_H

#include "framing/RawDataMessage.h"
#include "geo/GnssEnums.h"
#include "textproto/NMEA_Records.h"
#include "velagnss_export.h"

class VELAGNSS_API C_NMEA_EncodeDecode {
 public:
  // The records and enumerations of textproto/NMEA_Records.h also go by names of this class.
  using S_GGA_Data = ::S_GGA_Data;
  using S_GNS_Data = ::S_GNS_Data;
  using S_ZDA_Data = ::S_ZDA_Data;
  using S_GLL_Data = ::S_GLL_Data;
  using S_GSV_Data = ::S_GSV_Data;
  using S_GSA_Data = ::S_GSA_Data;
  using S_RMC_Data = ::S_RMC_Data;
  using S_VTG_Data = ::S_VTG_Data;
  using U_EcdDcdData = ::U_EcdDcdData;
  using S_NmeaSS2Algo = ::S_NmeaSS2Algo;
  using eNmeaModeIndicator = ::eNmeaModeIndicator;
  using eNmeaNavStatus = ::eNmeaNavStatus;
  using eNmeaGllStatus = ::eNmeaGllStatus;
  using eNmeaRmcStatus = ::eNmeaRmcStatus;

  // A message that the emitters build has at most this many characters before its checksum.
  static constexpr unsigned int kMaxMessageLength = 1018;

  C_NMEA_EncodeDecode();
  virtual ~C_NMEA_EncodeDecode();
  C_NMEA_EncodeDecode(const C_NMEA_EncodeDecode&) = delete;
  C_NMEA_EncodeDecode& operator=(const C_NMEA_EncodeDecode&) = delete;

  // Forgets the last result and zero-fills the work buffer. Returns 0.
  unsigned int Reset();

  // Result of the last `Decode` or `Encode`; 0 before the first.
  unsigned int GetLastResult() const;

  // The sentence that the last encoder call built, NUL-terminated; after a failure the part up to the failing field.
  // The object owns it; it holds until the next encoder call.
  const unsigned char* GetWorkBuffer() const;

  // --- Decoding ---

  // Decodes `length` bytes of one sentence of the given type into the member of `data` for that type. All of `data` is
  // zero-filled first, then that record reset. The sentence needs no NUL and is not changed; a NUL inside ends it, and
  // the CR LF may be there or not.
  //
  //   0  decoded; a sentence may end early once the decoder's least number of fields is met
  //   1  null sentence
  //   2  not "$", talker and id of the given type (the talker is stored all the same)
  //   4  checksum absent or wrong
  //   5  a type other than GGA, GLL, GNS, GSA, GSV, RMC, VTG, ZDA
  //   8  more than 6 mode letters in GNS
  //   11 too few fields, or a field that is not a valid value: the record holds what came before it, markers elsewhere
  //   20 length below 8 or above 1024 (a sentence of exactly 1024 bytes is not read either: 11)
  //
  // A field of more than 64 characters ends the decoding there with result 0 (with 2 if it is the first).
  //
  // Two known oddities are kept. In RMC an empty variation direction makes the longitude not available, and the
  // direction is stored as 0 or 1, not as its letter. GSV satellites are read by position alone: with fewer than four
  // of them the signal id or the checksum is read as the next satellite. `MakeDecodable` avoids both.
  unsigned int Decode(unsigned char* sentence, unsigned short length, C_RawDataMessage::eNMEA0183Messages type,
                      U_EcdDcdData& data);

  // The same for one type each: the record is reset, then filled. The checksum is not tested. Lengths below 8 give 11.
  // These leave the last result alone.
  unsigned int Decode_GGA(unsigned char* sentence, unsigned short length, S_GGA_Data& record);
  unsigned int Decode_GNS(unsigned char* sentence, unsigned short length, S_GNS_Data& record);
  unsigned int Decode_ZDA(unsigned char* sentence, unsigned short length, S_ZDA_Data& record);
  unsigned int Decode_GLL(unsigned char* sentence, unsigned short length, S_GLL_Data& record);
  unsigned int Decode_GSV(unsigned char* sentence, unsigned short length, S_GSV_Data& record);
  unsigned int Decode_GSA(unsigned char* sentence, unsigned short length, S_GSA_Data& record);
  unsigned int Decode_RMC(unsigned char* sentence, unsigned short length, S_RMC_Data& record);
  unsigned int Decode_VTG(unsigned char* sentence, unsigned short length, S_VTG_Data& record);

  // Sets every value to its marker, the talker to NULs, padding to 0.
  static void Reset_GGA(S_GGA_Data& record);
  static void Reset_GNS(S_GNS_Data& record);
  static void Reset_ZDA(S_ZDA_Data& record);
  static void Reset_GLL(S_GLL_Data& record);
  static void Reset_GSV(S_GSV_Data& record);
  static void Reset_GSA(S_GSA_Data& record);
  static void Reset_RMC(S_RMC_Data& record);
  static void Reset_VTG(S_VTG_Data& record);

  // Copies one checked sentence of the eight types to `out` in the form that the decoders read without loss: CR LF cut
  // off; fields that earlier NMEA versions or short forms leave out made explicit and empty (trailing fields of any of
  // the eight, unit letters of VTG, satellites of GSV in front of its signal id); an empty variation direction of RMC
  // written as "E", a signal id of GSV that is a hexadecimal letter as its number; the checksum of the new text. `out`
  // holds 1024 bytes, is NUL-terminated and must not overlap the sentence; `outLength` is the length without the NUL.
  // On failure neither is written.
  //
  //   0 done; 1 a null pointer; 2 none of the eight types; 4 checksum absent or wrong; 9 more than 1023 characters
  static unsigned int MakeDecodable(const unsigned char* sentence, unsigned short length, unsigned char* out,
                                    unsigned short& outLength);

  // --- Encoding ---

  // Encodes the record of the given type and copies the sentence, CR LF and a NUL to `out`, which must hold 1024 bytes.
  // `length` is the number of characters without the NUL. On failure `out` and `length` are untouched.
  //
  //   0  done
  //   1  null record or null `out`
  //   5  a type other than the eight
  //   8  a time outside 0 to 86400 s (the end excluded), a latitude beyond 90 or a longitude beyond 180 degrees, an
  //      impossible date in RMC, a talker with a NUL
  //   9  more than 1018 characters before the checksum
  //   16 GNS with mode letters whose talker's second character is not "N"
  //
  // A value at its marker is an empty field; unit letters are always written. Of GGA the differential age is written
  // only when the reference station is 1 to 65534. A time that rounds to 86400.00 s is written as 240000.00, minutes
  // of arc that round to 60 as 60.00000000.
  unsigned int Encode(const void* record, C_RawDataMessage::eNMEA0183Messages type, unsigned char* out,
                      unsigned short& length);

  // The same for one type each; the sentence stays in the work buffer. These leave the last result alone.
  unsigned int Encode_GGA(const S_GGA_Data& record, unsigned short& length);
  unsigned int Encode_GNS(const S_GNS_Data& record, unsigned short& length);
  unsigned int Encode_ZDA(const S_ZDA_Data& record, unsigned short& length);
  unsigned int Encode_GLL(const S_GLL_Data& record, unsigned short& length);
  unsigned int Encode_GSV(const S_GSV_Data& record, unsigned short& length);
  unsigned int Encode_GSA(const S_GSA_Data& record, unsigned short& length);
  unsigned int Encode_RMC(const S_RMC_Data& record, unsigned short& length);
  unsigned int Encode_VTG(const S_VTG_Data& record, unsigned short& length);

  // --- Frame ---

  // Type of a sentence by its first 6 characters; `length` is how many there are. `eNmeaUnknown` (24) when null, too
  // short, without "$" or of an unknown id. The two talker characters go to `talker`, unless that is null, as soon as
  // there are 6 characters and a "$".
  static C_RawDataMessage::eNMEA0183Messages GetNmeaPreamble(const char* sentence, unsigned char length, char* talker);

  // XOR of bytes[start] to bytes[start + count - 1]; a count of 0 reads one byte all the same. Null: 0.
  static unsigned char GetNmeaCheckSum(const unsigned char* bytes, unsigned short start, unsigned short count);

  // True if the last "*" is at index 6 or later, two characters follow it, they read as a hexadecimal number
  // (either case) and this is the XOR of the bytes from index 1 up to the "*". False for null and for lengths below 8.
  static bool ValidateNmeaCheckSum(unsigned char* sentence, unsigned short length);

  // (d)ddmm.mmmm in degrees. The last two digits before the first "." and everything after them are minutes; the "."
  // must be at index 3 or later. An empty field is NA_DOUBLE. False, with 0.0, for null, for fields of 1 to 5
  // characters and for anything that is not a number. The sign is given by the letter field after it.
  static bool GetNmeaLatLonFromString(const unsigned char* field, double& value);

  // --- One-character fields ---

  // Letter of a value; NUL means an empty field. A value beyond its enumeration is written as not valid.
  static char GetModIndicatorChar(eNmeaModeIndicator mode);
  static char GetNavStatusChar(eNmeaNavStatus status);
  static char GetSysStatusChar_GLL(eNmeaGllStatus status);
  static char GetSysStatusChar_RMC(eNmeaRmcStatus status);

  // Value of a letter; NUL means an empty field. An unknown letter is not valid.
  static eNmeaModeIndicator GetModIndicatorEnum(char letter);
  static eNmeaNavStatus GetNavStatusEnum(char letter);
  static eNmeaGllStatus GetSysStatusEnum_GLL(char letter);
  static eNmeaRmcStatus GetSysStatusEnum_RMC(char letter);

  // Fix type (index of `ALGO::FixTypeName`) of a mode indicator; 15 for those without one.
  static unsigned int MapNmeaFixIndicatorToHalcyon(eNmeaModeIndicator mode);

  // --- Systems and signals ---

  // NMEA system id to system: 1 GPS, 2 GLONASS, 3 Galileo, 5 BeiDou. False, with GNSS_UNKNOWN, for all others.
  static bool MapNmeaSystemId2Algo(unsigned char nmeaSystem, ALGO::eGNSSSystem& system);

  // The reverse; BeiDou and QZSS are both 5, GNSS_UNKNOWN succeeds with 255. False, with 255, for all others.
  static bool MapAlgoSystemId2Nmea(const ALGO::eGNSSSystem& system, unsigned char& nmeaSystem);

  // NMEA system and signal id to band and signal component; signal 0 gives FREQ_ALL and TRACK_ALL. False, with the
  // unknown values, for a pair that the map does not hold.
  static bool MapNmeaSignalId2Algo(unsigned char nmeaSystem, unsigned char nmeaSignal, ALGO::eGNSSFrequency& frequency,
                                   ALGO::eGNSSTrackType& trackType);

  // The reverse. False, with 255, for what the map does not hold; FREQ_ALL and TRACK_ALL are refused.
  static bool MapAlgoSigInfo2Nmea(ALGO::eGNSSSystem system, ALGO::eGNSSFrequency frequency,
                                  ALGO::eGNSSTrackType trackType, unsigned char& nmeaSignal);

  // --- Emitters ---
  //
  // Each appends one field to the NUL-terminated message `msg`, which must have room for 1024 characters; with
  // `leadingComma` a "," comes first. A value equal to `notAvailable` leaves the field empty. Results:
  //
  //   0 appended; 1 a null pointer, or a format that is refused; 8 value out of range; 9 the message would have more
  //   than 1018 characters. After a failure the message is as it was.
  //
  // Formats are those of printf in the C locale, whatever the locale: text, "%%" and exactly one conversion, with flags
  // (among "-+ #0"), width and precision: an integer one (one of "cdiouxX") for the first three emitters, one for
  // doubles ("fFeEgGaA", with or without "l") for the others. All else is refused.

  // A number by `format`: MsgAdd_U32(msg, "%02d", 255, satellites, true) appends ",08" for 8 and "," for 255.
  static unsigned int MsgAdd_CHAR(char* msg, const char* format, char notAvailable, char value, bool leadingComma);
  static unsigned int MsgAdd_S32(char* msg, const char* format, int notAvailable, int value, bool leadingComma);
  static unsigned int MsgAdd_U32(char* msg, const char* format, unsigned int notAvailable, unsigned int value,
                                 bool leadingComma);
  static unsigned int MsgAdd_DBL(char* msg, const char* format, const double& notAvailable, const double& value,
                                 bool leadingComma);  // a NaN never equals `notAvailable` and is printed

  // hhmmss.ss, rounded to hundredths; 8 unless 0 <= value < 86400 s.
  static unsigned int MsgAdd_TimeOfDay(char* msg, double notAvailable, const double& secondsOfDay, bool leadingComma);

  // Degrees as two fields, (d)ddmm.mmmm and letter; the format is that of the minutes. 8 unless within +-90, for the
  // longitude +-180. With `directionAfter` clear the letter comes first, without a comma after it ("N4807.03800000").
  static unsigned int MsgAdd_LatDegMin(char* msg, const char* minutesFormat, double notAvailable, const double& degrees,
                                       bool directionAfter, bool leadingComma);
  static unsigned int MsgAdd_LonDegMin(char* msg, const char* minutesFormat, double notAvailable, const double& degrees,
                                       bool directionAfter, bool leadingComma);

  // Appends "*", the checksum and CR LF; `length` is the length of the whole then. 9, with `length` untouched, unless
  // the message has 8 to 1018 characters.
  unsigned int MsgAdd_ChecksumCrLf(char* msg, unsigned short& length) const;

  // --- Tables ---

  // Sentence ids, NUL-padded; the index is the value of `C_RawDataMessage::eNMEA0183Messages`.
  static constexpr char mppz_NmeaMsgIDs[23][10] = {"ALM", "APB", "BWC", "DTM", "HDG", "HDM", "HDT", "HEV",
                                                   "GGA", "GLL", "GNS", "GRS", "GSA", "GST", "GSV", "RMA",
                                                   "RMB", "RMC", "ROT", "RRE", "VTG", "XTE", "ZDA"};

  // Systems and signals: one block per system, unused rows all 255 and unknown. Within a block only the signal id
  // counts, so that the two BeiDou rows with other system ids serve system 5.
  static const S_NmeaSS2Algo mpps_NmeaSS2AlgoMap[6][16];

 private:
  static constexpr unsigned int kWorkBufferSize = 1024;

  unsigned int DecodeChecked(unsigned char* sentence, unsigned short length, C_RawDataMessage::eNMEA0183Messages type,
                             U_EcdDcdData& data);
  unsigned int EncodeAny(const void* record, C_RawDataMessage::eNMEA0183Messages type, unsigned short& length);

  unsigned int m_lastResult;
  char m_workBuffer[kWorkBufferSize];
};

#endif  // VELAGNSS_TEXTPROTO_NMEA_ENCODE_DECODE_H
