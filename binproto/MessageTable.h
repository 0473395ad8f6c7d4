// The supported messages: number, length of their frame, stored record, and what decodes them into which record.
#ifndef VELAGNSS_BINPROTO_MESSAGE_TABLE_H
#define VELAGNSS_BINPROTO_MESSAGE_TABLE_H

#include <array>
#include <functional>
#include <type_traits>
#include <utility>

#include "binproto/MessageReader.h"
#include "binproto/VelaBin_Decode.h"

struct S_MessageRow {
  unsigned short number;
  void (*preset)(VelaBIN_Messages::S_StoredMessages& stored);
  unsigned int (*decode)(C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length,
                         U_VelaBIN_EcdDcdData& out);
};

template <unsigned short Number, unsigned short FrameLength, auto Stored, auto Output, auto Operation>
constexpr S_MessageRow MessageRow() {
  using namespace VelaBIN_Messages;
  using Record = std::remove_reference_t<decltype(std::declval<S_StoredMessages&>().*Stored)>;
  static_assert(kBodyLength<Record> == FrameLength - kMinFrameLength, "the record does not hold the body of its frame");
  return {Number, [](S_StoredMessages& stored) { Preset(stored.*Stored, Number); },
          [](C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length, U_VelaBIN_EcdDcdData& out) {
            return std::invoke(Operation, decoder, frame, length, out.*Output);
          }};
}

inline unsigned int DecodeGpsEphemeris(C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length,
                                       S_IFKeplerEphRec& out) {
  return decoder.Decode_Bin95(frame, length, out, false);
}

// clang-format off
inline constexpr auto kMessages = [] {
  using namespace VelaBIN_Messages;
  using S = S_StoredMessages;
  using U = U_VelaBIN_EcdDcdData;
  using D = C_VelaBin_Decode;
  return std::array{  // ascending
      //         number  frame  stored      output         decoder
      MessageRow<eBin1,     62, &S::bin1,   &U::bin1,      &D::Decode_Bin1>(),
      MessageRow<eBin2,     26, &S::bin2,   &U::bin2,      &D::Decode_Bin2>(),
      MessageRow<eBin3,    126, &S::bin3,   &U::bin3,      &D::Decode_Bin3>(),
      MessageRow<eBin5,     82, &S::bin5,   &U::bin5,      &D::Decode_Bin5>(),
      MessageRow<eBin16,   322, &S::bin16,  &U::obs,       &D::Decode_Bin16>(),
      MessageRow<eBin25,   138, &S::bin25,  &U::keplerEph, &D::Decode_Bin25>(),
      MessageRow<eBin34,    42, &S::bin34,  &U::bin34,     &D::Decode_Bin34>(),
      MessageRow<eBin35,   138, &S::bin35,  &U::keplerEph, &D::Decode_Bin35>(),
      MessageRow<eBin36,   346, &S::bin36,  &U::obs,       &D::Decode_Bin36>(),
      MessageRow<eBin44,    66, &S::bin44,  &U::bin44,     &D::Decode_Bin44>(),
      MessageRow<eBin45,   138, &S::bin45,  &U::keplerEph, &D::Decode_Bin45>(),
      MessageRow<eBin65,    78, &S::bin65,  &U::pvaEph,    &D::Decode_Bin65>(),
      MessageRow<eBin66,   362, &S::bin66,  &U::obs,       &D::Decode_Bin66>(),
      MessageRow<eBin76,   458, &S::bin76,  &U::obs,       &D::Decode_Bin76>(),
      MessageRow<eBin93,    66, &S::bin93,  &U::pvaEph,    &D::Decode_Bin93>(),
      MessageRow<eBin94,   106, &S::bin94,  &U::bin94,     &D::Decode_Bin94>(),
      MessageRow<eBin95,   138, &S::bin95,  &U::keplerEph, &DecodeGpsEphemeris>(),
      MessageRow<eBin122,   90, &S::bin122, &U::bin122,    &D::Decode_Bin122>(),
      MessageRow<eBin180,  242, &S::bin180, &U::bin180,    &D::Decode_Bin180>(),
      MessageRow<eBin209,  342, &S::bin209, &U::bin209,    &D::Decode_Bin209>(),
  };
}();
// clang-format on

// The row of each message number; null for the numbers that are not supported.
inline constexpr auto kRowOfNumber = [] {
  std::array<const S_MessageRow*, VelaBIN_Messages::kMaxMessageNumber + 1> rows{};
  for (const S_MessageRow& row : kMessages) rows[row.number] = &row;
  return rows;
}();

#endif  // VELAGNSS_BINPROTO_MESSAGE_TABLE_H
