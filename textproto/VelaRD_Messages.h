// The record of the receiver's diagnostic sentence "$RD1".
#ifndef VELAGNSS_TEXTPROTO_VELA_RD_MESSAGES_H
#define VELAGNSS_TEXTPROTO_VELA_RD_MESSAGES_H

#include <cstdint>

namespace VelaRD_Messages {

// Internal signal diagnostics.
//
//   $RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF
//
// is 345600 s of the week, 12, 1575.42, 3 and 17, 44.5, -0.25, 1.5, 31, 160, 7, and 3735928559 for the last; position 4
// is not looked at.
//
// Members are named after their position in the sentence, 0 being "$RD1"; the manufacturer has not published what the
// numbers measure. A sentence may end early: what it does not carry is 0.
struct S_IntSignalDiagMsg {
  double timeOfWeek;      // s, 0 to below 604800
  std::int64_t field2;    // 0 and up
  double field3;          // 1300 to 1700
  std::int64_t field5a;   // 0 and up; the part of position 5 before its "-"
  std::int64_t field5b;   // 0 and up; the part after it
  double field6;          // 0 to 200
  double field7;          // any number
  double field8;          // any number
  std::int64_t field9;    // 0 and up; hexadecimal in the sentence
  std::int64_t field10;   // 0 and up; hexadecimal in the sentence
  std::int64_t field11;   // 0 and up
  std::uint32_t field12;  // hexadecimal in the sentence
};

}  // namespace VelaRD_Messages

// The record also goes by its bare name.
using VelaRD_Messages::S_IntSignalDiagMsg;

#endif  // VELAGNSS_TEXTPROTO_VELA_RD_MESSAGES_H
