// The manufacturer's proprietary sentences, "$PKVN," and a message name: their types and records.
//
// Fields are numbered by their position in the sentence: 0 is "$PKVN", 1 the message name. A position whose meaning the
// manufacturer has not published is named after its number, and its value is passed on as sent. Doubles that a sentence
// leaves empty hold `NA_DOUBLE`, unsigned fields all ones (geo/NotAvailable.h).
#ifndef VELAGNSS_TEXTPROTO_VELA_PKVN_MESSAGES_H
#define VELAGNSS_TEXTPROTO_VELA_PKVN_MESSAGES_H

namespace VelaPKVN_Messages {

// The sentences, by the name that follows "$PKVN,".
enum eMessageTypes : unsigned int {
  ePkvnRAW = 0,  // packed binary in a text envelope: not decoded as text

  // The others are text, each with a record of its own, below.
  ePkvnATTSTAT = 1,
  ePkvnGBS = 2,
  ePkvnHPR = 3,
  ePkvnBLV = 4,
  ePkvnFVI = 5,
  ePkvnRTKSTAT = 6,
  ePkvnVCT = 7,
  ePkvnINTLT = 8,
  ePkvnTEMPERATURE = 9,
  ePkvnARN_ROUTER = 10,

  ePkvnUnknown = 65535,  // any other name
};

// The signals that ATTSTAT and RTKSTAT name.
enum ePKvnAttStatSysChans : unsigned int {
  ePkvnL1 = 0,            // "L1": GPS
  ePkvnL2,                // "L2"
  ePkvnL5,                // "L5"
  ePkvnG1,                // "G1": GLONASS
  ePkvnG2,                // "G2"
  ePkvnB1,                // "B1": BeiDou
  ePkvnB2,                // "B2"
  ePkvnB3,                // "B3"
  ePkvnE5a,               // "E5a" or "E5A": Galileo
  ePkvnE5b,               // "E5b" or "E5B"
  ePkvnE5ab,              // "E5a+b"
  ePkvnE6,                // "E6"
  ePkvnB2B,               // "B2B": BeiDou
  ePkvnE1B,               // "E1B": Galileo
  ePkvnQL1,               // "QL1": QZSS
  ePkvnChanUnknown = 16,  // any other name; 15 is not used
};

// ATTSTAT and RTKSTAT keep as text what is not decoded: every field from a position on, in the order of the sentence,
// the checksum digits after the asterisk being the last. A field is cut to 63 characters and ends in a NUL; rows from
// `restCount` on are empty.
//
// The first of the two is the number of rows, the second the size of one.
inline constexpr unsigned int kMaxRestFields = 64;
inline constexpr unsigned int kRestFieldSize = 64;

// ATTSTAT. Positions 2 to 10 are decoded, what follows is kept: names of signals (`MapPKvnAttSysStr2Type`) and groups
// of numbers in parentheses.
//
//   $PKVN,ATTSTAT,7,rover,1.5,-2.5,N,3.5,4.5,R,9,L1,(4,5,6),E5a+b,(7,8,9)*33
struct S_PKvnAttStat {
  // As sent: NA_U16, NA_DOUBLE or NA_U8 where the sentence leaves a number empty.
  unsigned short field2;
  char text3[64];  // at most 63 characters and a NUL
  double field4;
  double field5;
  char field6;  // 'N' or 'G', 0 when empty
  double field7;
  double field8;
  char field9;  // 'P' or 'R', 0 when empty
  unsigned char field10;

  unsigned short restCount;  // fields kept in `rest`, from position 11 on: signal names and groups in parentheses
  char rest[kMaxRestFields][kRestFieldSize];  // each ends in a NUL
};

// GBS.
//
//   $PKVN,GBS,010203.50,1.5,2.5,3.5,4,5.5,6.5,7.5,8,9,10*4E
struct S_PKvnGbs {
  double timeOfDay;  // s

  // As sent: NA_DOUBLE or NA_U8 where the sentence leaves a number empty.
  double field3;
  double field4;
  double field5;
  unsigned char field6;
  double field7;
  double field8;
  double field9;
  unsigned char field10;
  unsigned char field11;
  unsigned char field12;
};

// HPR: heading, pitch and roll, as sent.
//
//   $PKVN,HPR,120000.00,271.50,-1.25,0.75,G*15
struct S_PKvnHpr {
  double timeOfDay;  // s
  double heading;    // degrees, as sent
  double pitch;      // likewise
  double roll;       // likewise
  char field6;       // 'N' or 'G', 0 when empty
};

// BLV. In the sentence the date follows the time, as ddmmyy.
//
//   $PKVN,BLV,120000.00,290224,1.5,-2.5,3.5,65000,8,9,0.5*66
struct S_PKvnBlv {
  unsigned short year;  // 2000 to 2099
  unsigned char month;  // 1 to 12, as sent
  unsigned char day;    // 1 to 31, as sent
  double timeOfDay;     // s

  // As sent: NA_DOUBLE, NA_U16 or NA_U8 where the sentence leaves a number empty.
  double field4;
  double field5;
  double field6;
  unsigned short field7;
  unsigned char field8;
  unsigned char field9;
  double field10;
};

// FVI: a long run of numbers, a text and some numbers more.
//
//   $PKVN,FVI,120000.00,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,rover,20,21,1,2,3,4,22,23*3F
struct S_PKvnFvi {
  double timeOfDay;  // s

  // As sent: NA_DOUBLE or NA_U8 where the sentence leaves a number empty.
  double field3to21[19];
  char text22[64];  // at most 63 characters and a NUL
  double field23;
  double field24;
  unsigned char field25;
  unsigned char field26;
  unsigned char field27;
  unsigned char field28;
  double field29;
  double field30;
};

// RTKSTAT. All of it is kept as text: decimal and hexadecimal numbers and names of signals.
struct S_PKvnRtkStat {
  unsigned short restCount;                   // fields kept in `rest`, from position 2 on
  char rest[kMaxRestFields][kRestFieldSize];  // each ends in a NUL
};

// VCT.
//
//   $PKVN,VCT,7,120000.00,1.5,2.5,3.5,4.5,5.5,6.5,7.5,8.5*7C
struct S_PKvnVct {
  unsigned short field2;  // as sent; NA_U16 when empty
  double timeOfDay;       // s

  // As sent: NA_DOUBLE where the sentence leaves a number empty.
  double field4;
  double field5;
  double field6;
  double field7;
  double field8;
  double field9;
  double field10;
  double field11;
};

// INTLT.
//
//   $PKVN,INTLT,12.5*50
struct S_PKvnINTLT {
  double field2;  // as sent; NA_DOUBLE when empty
};

// TEMPERATURE.
//
//   $PKVN,TEMPERATURE,41.25*63
struct S_PKvnTEMPERATURE {
  double field2;  // as sent; NA_DOUBLE when empty
};

// ARN_ROUTER. A sentence may end after any of these fields.
//
//   $PKVN,ARN_ROUTER,2,3,4,5,6,7,8,9,10,11,12,13*26
struct S_PKvnARN {
  // As sent: NA_U8 or NA_U32 where the sentence leaves a number empty or has ended.
  unsigned char field2;
  unsigned int field3;
  unsigned int field4;
  unsigned int field5;
  unsigned int field6;
  unsigned int field7;
  unsigned int field8;
  unsigned int field9;
  unsigned int field10;
  unsigned int field11;
  unsigned int field12;
  unsigned int field13;
};

}  // namespace VelaPKVN_Messages

// The records also go by their bare names.
using VelaPKVN_Messages::S_PKvnARN;
using VelaPKVN_Messages::S_PKvnAttStat;
using VelaPKVN_Messages::S_PKvnBlv;
using VelaPKVN_Messages::S_PKvnFvi;
using VelaPKVN_Messages::S_PKvnGbs;
using VelaPKVN_Messages::S_PKvnHpr;
using VelaPKVN_Messages::S_PKvnINTLT;
using VelaPKVN_Messages::S_PKvnRtkStat;
using VelaPKVN_Messages::S_PKvnTEMPERATURE;
using VelaPKVN_Messages::S_PKvnVct;

#endif  // VELAGNSS_TEXTPROTO_VELA_PKVN_MESSAGES_H
