// The first step of decoding: from a frame to its record, as far as that needs nothing but the frame.
//
// Internal. It has no state, so that several threads can read frames of one stream at the same time. `Follow` completes
// the record in the order of the stream. A record is made in place, in a variant that has those of RTCM 3 among others:
// the longest ones take longer to copy than to read.
#ifndef VELAGNSS_RTCM3_READING_H
#define VELAGNSS_RTCM3_READING_H

#include <array>
#include <cstddef>
#include <iterator>
#include <variant>

#include "records/ResultCodes.h"
#include "rtcm3/BitReader.h"
#include "rtcm3/Rtcm3Records.h"

namespace velagnss::rtcm3 {

// Each reads the payload of message `number`, one of its own, into its record, which has its initial values. Results
// are codes of records/ResultCodes.h. After a failure the record may be partly filled.
template <class Record>
using t_Read = unsigned int(BitReader& reader, unsigned int number, Record& record);
t_Read<Rtcm3Station> ReadStation;
t_Read<Rtcm3Antenna> ReadAntenna;
t_Read<Rtcm3SystemParameters> ReadSystemParameters;
t_Read<Rtcm3Message> ReadText;
t_Read<Rtcm3GlonassBiases> ReadGlonassBiases;
t_Read<Rtcm3Residuals> ReadResiduals;
t_Read<Rtcm3KeplerEphemeris> ReadKeplerEphemeris;
t_Read<Rtcm3PvaEphemeris> ReadGlonassEphemeris;
t_Read<Rtcm3Observations> ReadLegacyObservations, ReadMsm;
t_Read<Rtcm3Ssr> ReadSsr;

// Reads the payload after the message number, and makes the record.
template <class Records>
using t_ReadInto = unsigned int(BitReader& reader, unsigned int number, Records& records);
template <class Record>
inline constexpr Record kInitial{};  // copied: setting member by member takes longer
template <class Records, class Record, t_Read<Record>* Read>
unsigned int ReadInto(BitReader& reader, unsigned int number, Records& records) {
  auto& record = records.template emplace<Record>(kInitial<Record>);
  record.message = static_cast<unsigned short>(number);
  return Read(reader, number, record);
}

// Messages of the numbers from `first` to `last`.
template <class Records>
struct DispatchRow {
  unsigned short first, last;
  t_ReadInto<Records>* read;
};
// clang-format off
template <class R>
inline constexpr DispatchRow<R> kDispatch[] = {
    {  63,   63, &ReadInto<R, Rtcm3KeplerEphemeris, ReadKeplerEphemeris>},  // an early number of 1042
    {1001, 1004, &ReadInto<R, Rtcm3Observations, ReadLegacyObservations>},
    {1005, 1006, &ReadInto<R, Rtcm3Station, ReadStation>},
    {1007, 1008, &ReadInto<R, Rtcm3Antenna, ReadAntenna>},
    {1009, 1012, &ReadInto<R, Rtcm3Observations, ReadLegacyObservations>},
    {1013, 1013, &ReadInto<R, Rtcm3SystemParameters, ReadSystemParameters>},
    {1019, 1019, &ReadInto<R, Rtcm3KeplerEphemeris, ReadKeplerEphemeris>},
    {1020, 1020, &ReadInto<R, Rtcm3PvaEphemeris, ReadGlonassEphemeris>},
    {1029, 1029, &ReadInto<R, Rtcm3Message, ReadText>},
    {1030, 1031, &ReadInto<R, Rtcm3Residuals, ReadResiduals>},
    {1032, 1032, &ReadInto<R, Rtcm3Station, ReadStation>},
    {1033, 1033, &ReadInto<R, Rtcm3Antenna, ReadAntenna>},
    {1041, 1042, &ReadInto<R, Rtcm3KeplerEphemeris, ReadKeplerEphemeris>},
    {1044, 1046, &ReadInto<R, Rtcm3KeplerEphemeris, ReadKeplerEphemeris>},
    {1057, 1068, &ReadInto<R, Rtcm3Ssr, ReadSsr>},
    {1071, 1077, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1081, 1087, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1091, 1097, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1101, 1107, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1111, 1117, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1121, 1127, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1131, 1137, &ReadInto<R, Rtcm3Observations, ReadMsm>},
    {1230, 1230, &ReadInto<R, Rtcm3GlonassBiases, ReadGlonassBiases>},
    {1240, 1245, &ReadInto<R, Rtcm3Ssr, ReadSsr>},
    {1258, 1263, &ReadInto<R, Rtcm3Ssr, ReadSsr>},
    {1303, 1303, &ReadInto<R, Rtcm3Residuals, ReadResiduals>},
};
// clang-format on

inline constexpr unsigned int kNumberBits = 12;

// By message number the index of its row plus 1; 0: not decoded.
template <class Records>
inline constexpr auto kRowOf = [] {
  std::array<unsigned char, 1U << kNumberBits> rows{};
  for (std::size_t row = 0; row < std::size(kDispatch<Records>); ++row)
    for (unsigned int number = kDispatch<Records>[row].first; number <= kDispatch<Records>[row].last; ++number)
      rows[number] = static_cast<unsigned char>(row + 1);
  return rows;
}();

// The payload of a frame whose envelope has been checked.
inline constexpr std::size_t kHeader = 1 + 2;  // preamble, length
inline constexpr std::size_t kChecksum = 3;
inline Payload PayloadOf(const unsigned char* frame, std::size_t length) {
  return {frame + kHeader, length - kHeader - kChecksum};
}

// eResultOk, or what is wrong with the envelope.
unsigned int CheckFrame(const unsigned char* frame, std::size_t length);

// Reads a whole frame. Its result is that of `Rtcm3Decoder::Decode`, except for eResultNoSeed. `records` may hold
// anything before; afterwards it is empty if the envelope is at fault, and holds an `Rtcm3Payload` if the message is
// faulty or not decoded.
template <class Records>
unsigned int Read(const unsigned char* frame, std::size_t length, Records& records) {
  records.template emplace<std::monostate>();
  const unsigned int check = CheckFrame(frame, length);
  if (check != eResultOk) return check;
  const Payload payload = PayloadOf(frame, length);
  BitReader reader(payload);
  const bool hasNumber = reader.BitsLeft() >= kNumberBits;
  const auto number = static_cast<unsigned int>(hasNumber ? reader.Read(kNumberBits) : 0);
  const unsigned char row = hasNumber ? kRowOf<Records>[number] : 0;
  unsigned int result = hasNumber ? eResultOk : eResultPastEnd;
  if (row != 0) result = kDispatch<Records>[row - 1].read(reader, number, records);
  if (row == 0 || result != eResultOk)
    records.template emplace<Rtcm3Payload>(
        Rtcm3Payload{static_cast<unsigned short>(number), frame + kHeader, payload.Size()});
  return result;
}

// Calls `act` with the record of RTCM 3 that a variant holds, if any. (std::visit would bring exceptions into the
// library.)
template <class Records, class Act>
void WithRtcm3Record(Records& records, const Act& act) {
  const auto actOn = [&act](auto* record) {
    if (record != nullptr) act(*record);
  };
  [&]<class... T>(std::in_place_type_t<std::variant<T...>>) {
    (actOn(std::get_if<T>(&records)), ...);
  }(std::in_place_type<Rtcm3Record>);
}

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_READING_H
