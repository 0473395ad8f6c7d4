// The receiver manufacturer's proprietary sentences: checking and decoding them.
//
//   $PKVN,HPR,120000.00,271.50,-1.25,0.75,G*15
//
// "$PKVN,", a message name, fields between commas, "*" and the checksum: the XOR of all bytes between "$" and "*" as
// two upper case hexadecimal digits, as in NMEA 0183 but for the case. CR and LF may follow.
#ifndef VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H
#define VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H

#include "textproto/VelaPKVN_Messages.h"
#include "velagnss_export.h"

// One decoded sentence; the message type says which member holds it.
union U_VelaPKVN_EcdDcdData {
  S_PKvnAttStat attStat;          // ATTSTAT
  S_PKvnGbs gbs;                  // GBS
  S_PKvnHpr hpr;                  // HPR
  S_PKvnBlv blv;                  // BLV
  S_PKvnFvi fvi;                  // FVI
  S_PKvnRtkStat rtkStat;          // RTKSTAT
  S_PKvnVct vct;                  // VCT
  S_PKvnINTLT intlt;              // INTLT
  S_PKvnTEMPERATURE temperature;  // TEMPERATURE
  S_PKvnARN arn;                  // ARN_ROUTER
};

namespace VelaPKVN_Messages {
using ::U_VelaPKVN_EcdDcdData;
}

// The last decoded record of each type.
struct S_VelaPKVN_Records {
  S_PKvnAttStat attStat;          // ATTSTAT
  S_PKvnGbs gbs;                  // GBS
  S_PKvnHpr hpr;                  // HPR
  S_PKvnBlv blv;                  // BLV
  S_PKvnFvi fvi;                  // FVI
  S_PKvnRtkStat rtkStat;          // RTKSTAT
  S_PKvnVct vct;                  // VCT
  S_PKvnINTLT intlt;              // INTLT
  S_PKvnTEMPERATURE temperature;  // TEMPERATURE
  S_PKvnARN arn;                  // ARN_ROUTER
};

// Decodes proprietary sentences, counts them by type and keeps the last record of each type. `Decode` takes any of
// them; the operations named after a message take only that one, and neither check the checksum nor count.
//
//   C_VelaPKVN_Decode decoder;
//   VelaPKVN_Messages::eMessageTypes type;
//   U_VelaPKVN_EcdDcdData data;
//   if (decoder.Decode(message.data, message.length, type, data) == 0 && type == VelaPKVN_Messages::ePkvnHPR)
//     Show(data.hpr.heading);
class VELAGNSS_API C_VelaPKVN_Decode {
 public:
  // As after `Reset`.
  C_VelaPKVN_Decode();

  // Counters and last result 0, all kept records empty: every value is its not-available marker, texts and letters are
  // zero.
  void Reset();

  // Checks one sentence of `length` bytes, from its "$" to its checksum digits; up to two bytes of CR or LF may follow
  // them. Nothing outside of frame[0, length) is read. Results, in the order of the checks:
  //   1   null frame
  //   20  longer than 2047 bytes without its line end
  //   19  shorter than 18 bytes
  //   3   not "$PKVN,": `errorPosition` is the place of the first wrong byte, 1 for "$" to 6 for ","
  //   5   unknown message name: `type` is `ePkvnUnknown`
  //   4   the last two bytes are not upper case hexadecimal digits, or not the XOR of all that lies between "$" and "*"
  //   0   good
  // After the prefix `errorPosition` is the place of the message name's last byte. `type` is set from the name on. What
  // the checks did not reach keeps the caller's value.
  static unsigned int ValidateFrame(const unsigned char* frame, unsigned short length,
                                    VelaPKVN_Messages::eMessageTypes& type, unsigned short& errorPosition);

  // Checks a sentence as `ValidateFrame` does and decodes it into the member of `data` that belongs to `type`. `data`
  // is zero-filled first. Results: those of `ValidateFrame`, then
  //   6   RAW: its content is packed binary
  //   11  fewer fields than the message has, or a field that is not of its kind
  //   0   decoded; the type's counter is one higher and the record is kept
  // Fields are taken by their position; more of them than the message has do no harm, and one of more than 511
  // characters ends the sentence. After a failure in a field the record holds what stood before it. A NUL in the frame
  // ends its text.
  unsigned int Decode(unsigned char* frame, unsigned short length, VelaPKVN_Messages::eMessageTypes& type,
                      U_VelaPKVN_EcdDcdData& data);

  // Each decodes one kind of sentence into `record`, which is set empty first. The kept record of that type is set
  // empty too, and on success becomes a copy of `record`. Results:
  //   1   null frame; `record` untouched
  //   3   shorter than 18 bytes; `record` untouched
  //   11  too few fields, or a field that is not of its kind; a text of 2048 bytes or more has no fields
  //   2   not "$PKVN" and the message's name
  //   0   decoded
  // Numbers are decimal, blanks and a sign may lead; an empty field is not available, not an error. Times are
  // hhmmss.ss, of the seconds the first five characters count; dates are ddmmyy, from 2000 on. Ranges are not checked.

  // At least 19 fields, and not more than the record can keep (75).
  unsigned int Decode_AttStat(unsigned char* frame, unsigned short length, S_PKvnAttStat& record);
  // At least 14 fields.
  unsigned int Decode_GBS(unsigned char* frame, unsigned short length, S_PKvnGbs& record);
  // At least 8 fields.
  unsigned int Decode_HPR(unsigned char* frame, unsigned short length, S_PKvnHpr& record);
  // At least 12 fields.
  unsigned int Decode_BLV(unsigned char* frame, unsigned short length, S_PKvnBlv& record);
  // At least 32 fields.
  unsigned int Decode_FVI(unsigned char* frame, unsigned short length, S_PKvnFvi& record);
  // At least 20 fields; of more than 66 the first 66 are kept.
  unsigned int Decode_RtkStat(unsigned char* frame, unsigned short length, S_PKvnRtkStat& record);
  // At least 13 fields.
  unsigned int Decode_VCT(unsigned char* frame, unsigned short length, S_PKvnVct& record);
  // At least 4 fields.
  unsigned int Decode_INTLT(unsigned char* frame, unsigned short length, S_PKvnINTLT& record);
  // At least 4 fields. The kept record is not set empty: it stays until the next one is decoded.
  unsigned int Decode_TEMPERATURE(unsigned char* frame, unsigned short length, S_PKvnTEMPERATURE& record);
  // At least 4 fields. The fields 3 to 13 are read as far as the sentence goes, its checksum digits included: in a
  // sentence of fewer than 15 fields these must be decimal too, or the result is 11.
  unsigned int Decode_ARN(unsigned char* frame, unsigned short length, S_PKvnARN& record);

  // How many sentences of the type `Decode` has decoded since the last reset; 0 for a type that there is not.
  unsigned int GetReceivedMsgCount(VelaPKVN_Messages::eMessageTypes type) const;

  // The result of the last call that decoded, 0 after a reset.
  unsigned int GetLastResult() const { return m_lastResult; }

  // The last decoded record of each type, empty where the last attempt failed or there was none.
  const S_VelaPKVN_Records& GetLastRecords() const { return m_records; }

  // Reads `digits` (1 to 8) upper case hexadecimal characters, most significant first. False with `value` 0 for another
  // number of digits or a null text; false at any other character, with `value` holding the digits before it.
  static bool ExtractHexValue(const unsigned char* text, unsigned char digits, unsigned int& value);

  // The signal of a name as ATTSTAT and RTKSTAT write it: "L1", "E5a" or "E5A", "E5a+b", ... False for a null, empty or
  // unknown name, with `channel` then `ePkvnChanUnknown`.
  static bool MapPKvnAttSysStr2Type(const char* name, VelaPKVN_Messages::ePKvnAttStatSysChans& channel);

 private:
  unsigned int DecodeByType(unsigned char* frame, unsigned short length, VelaPKVN_Messages::eMessageTypes type,
                            U_VelaPKVN_EcdDcdData& data);

  unsigned int m_received[11];  // by message type
  S_VelaPKVN_Records m_records;
  unsigned int m_lastResult;
};

#endif  // VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H
