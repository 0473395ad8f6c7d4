// The supported messages, a row each: number, length of the frame, how far it is decoded, and what decodes it into
// which record.
//
// Internal. The home of these facts: the decoder dispatches by this table, and other tables that list the same messages
// are checked against it.
#ifndef VELAGNSS_BINPROTO_MESSAGE_TABLE_H
#define VELAGNSS_BINPROTO_MESSAGE_TABLE_H

#include <array>
#include <functional>
#include <type_traits>
#include <utility>

#include "binproto/DecoderState.h"
#include "binproto/MessageContents.h"
#include "binproto/MessageReader.h"
#include "binproto/VelaBin_Decode.h"

namespace velagnss::binproto {

// What the decoder needs to know of a message once its frame has been checked.
struct S_MessageRow {
  unsigned short number;
  unsigned short frameLength;  // bytes from the sync to the checksum
  eContents contents;
  void (*preset)(S_StoredMessages& stored);  // puts the stored record into its state before the first message
  unsigned int (*decode)(C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length,
                         U_VelaBIN_EcdDcdData& out);
};

// The type of a member that a table names.
template <class Object, auto Member>
using t_MemberOf = std::remove_reference_t<decltype(std::declval<Object&>().*Member)>;

// True when a record of this type can hold what the column says: an entry in the wrong line does not compile.
template <class Output>
consteval bool Holds(eContents contents) {
  using enum eContents;
  if (std::is_same_v<Output, VelaBIN_Messages::S_VelaBIN_Obs>) return contents == eHeaderOnly;
  if (std::is_same_v<Output, S_IFPvaEphRec>) return contents == eFull;
  if (std::is_same_v<Output, S_IFKeplerEphRec>) return contents == eFull || contents == eSatelliteOnly;
  return contents == (requires(Output & out) { out.Body; } ? eRawBody : eFieldsBySize);
}

// A row, checked by the compiler against the records that it names. The two functions are made from the members: a
// table of twenty hand-written pairs would have to be kept in step with the public operations.
template <unsigned short Number, unsigned short FrameLength, eContents Contents, auto Stored, auto Output,
          auto Operation>
constexpr S_MessageRow MessageRow() {
  static_assert(kBodyLength<t_MemberOf<S_StoredMessages, Stored>> == FrameLength - kMinFrameLength,
                "the record does not hold the body of its frame");
  static_assert(Holds<t_MemberOf<U_VelaBIN_EcdDcdData, Output>>(Contents), "the record holds something else");
  return {Number, FrameLength, Contents, [](S_StoredMessages& stored) { Preset(stored.*Stored, Number); },
          [](C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length, U_VelaBIN_EcdDcdData& out) {
            return std::invoke(Operation, decoder, frame, length, out.*Output);
          }};
}

// Gives `Decode_Bin95` the shape of the other operations.
inline unsigned int DecodeGpsEphemeris(C_VelaBin_Decode& decoder, unsigned char* frame, const unsigned short& length,
                                       S_IFKeplerEphRec& out) {
  return decoder.Decode_Bin95(frame, length, out, false);
}

// In ascending order. Messages 25, 35, 45 and 95 share one layout and have a stored record each, so that none of them
// replaces another; a number that is not here is answered with eResultUnknownMessage.
// clang-format off
inline constexpr auto kMessages = [] {
  using namespace VelaBIN_Messages;
  using enum eContents;
  using S = S_StoredMessages;
  using U = U_VelaBIN_EcdDcdData;
  using D = C_VelaBin_Decode;
  return std::array{
      //         number  frame  contents        stored      output         decoder
      MessageRow<eBin1,     62, eRawBody,       &S::bin1,   &U::bin1,      &D::Decode_Bin1>(),
      MessageRow<eBin2,     26, eRawBody,       &S::bin2,   &U::bin2,      &D::Decode_Bin2>(),
      MessageRow<eBin3,    126, eRawBody,       &S::bin3,   &U::bin3,      &D::Decode_Bin3>(),
      MessageRow<eBin5,     82, eRawBody,       &S::bin5,   &U::bin5,      &D::Decode_Bin5>(),
      MessageRow<eBin16,   322, eHeaderOnly,    &S::bin16,  &U::obs,       &D::Decode_Bin16>(),
      MessageRow<eBin25,   138, eFull,          &S::bin25,  &U::keplerEph, &D::Decode_Bin25>(),
      MessageRow<eBin34,    42, eRawBody,       &S::bin34,  &U::bin34,     &D::Decode_Bin34>(),
      MessageRow<eBin35,   138, eSatelliteOnly, &S::bin35,  &U::keplerEph, &D::Decode_Bin35>(),
      MessageRow<eBin36,   346, eHeaderOnly,    &S::bin36,  &U::obs,       &D::Decode_Bin36>(),
      MessageRow<eBin44,    66, eRawBody,       &S::bin44,  &U::bin44,     &D::Decode_Bin44>(),
      MessageRow<eBin45,   138, eSatelliteOnly, &S::bin45,  &U::keplerEph, &D::Decode_Bin45>(),
      MessageRow<eBin65,    78, eFull,          &S::bin65,  &U::pvaEph,    &D::Decode_Bin65>(),
      MessageRow<eBin66,   362, eHeaderOnly,    &S::bin66,  &U::obs,       &D::Decode_Bin66>(),
      MessageRow<eBin76,   458, eHeaderOnly,    &S::bin76,  &U::obs,       &D::Decode_Bin76>(),
      MessageRow<eBin93,    66, eFull,          &S::bin93,  &U::pvaEph,    &D::Decode_Bin93>(),
      MessageRow<eBin94,   106, eRawBody,       &S::bin94,  &U::bin94,     &D::Decode_Bin94>(),
      MessageRow<eBin95,   138, eFull,          &S::bin95,  &U::keplerEph, &DecodeGpsEphemeris>(),
      MessageRow<eBin122,   90, eRawBody,       &S::bin122, &U::bin122,    &D::Decode_Bin122>(),
      MessageRow<eBin180,  242, eRawBody,       &S::bin180, &U::bin180,    &D::Decode_Bin180>(),
      MessageRow<eBin209,  342, eFieldsBySize,  &S::bin209, &U::bin209,    &D::Decode_Bin209>(),
  };
}();
// clang-format on

// The row of each message number, so that a lookup is one access; null for the numbers that are not supported.
inline constexpr auto kRowOfNumber = [] {
  std::array<const S_MessageRow*, VelaBIN_Messages::kMaxMessageNumber + 1> rows{};
  for (const S_MessageRow& row : kMessages) rows[row.number] = &row;
  return rows;
}();

}  // namespace velagnss::binproto

#endif  // VELAGNSS_BINPROTO_MESSAGE_TABLE_H
