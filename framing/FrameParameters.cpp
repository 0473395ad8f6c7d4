#include "framing/FrameParameters.h"

#include <string_view>

#include "framing/MessageLengths.h"
#include "framing/ProtocolTable.h"
#include "textproto/SentenceIds.h"

namespace velagnss::framing {

bool ReadRtcmParameters(const S_ProtocolRow&, const unsigned char* bytes, const S_ExpectedMessages&,
                        S_Expectation& frame) {
  return ReadRtcm(bytes, frame);
}

// "$GPGGA,": the formatter after the two letters of the talker names the sentence (NMEA 0183).
bool ReadNmeaParameters(const S_ProtocolRow&, const unsigned char* bytes, const S_ExpectedMessages& expected,
                        S_Expectation& frame) {
  const unsigned int sentence = textproto::SentenceIds::Find(reinterpret_cast<const char*>(bytes) + 3);
  if (sentence >= std::size(kNmeaLengths)) return false;
  frame = {sentence, expected.nmea[sentence]};
  return true;
}

// "$BIN", block id and data length, 16 bits each, low byte first. Only the lengths that a block can have are taken: a
// false start would otherwise wait for up to 64 KiB that belong to other frames.
bool ReadBlockParameters(const S_ProtocolRow&, const unsigned char* bytes, const S_ExpectedMessages& expected,
                         S_Expectation& frame) {
  const unsigned int block = bytes[4] | bytes[5] << 8;
  const unsigned int length = (bytes[6] | bytes[7] << 8) + 10U;  // 8 header, 2 checksum
  if (block >= kBlockLengths.size()) return false;
  const S_FrameLengths& limits = expected.blocks[block];
  if (limits.greatest == 0 || length < limits.least || length > limits.greatest) return false;
  const auto frameLength = static_cast<unsigned short>(length);
  frame = {block, {frameLength, frameLength}};
  return true;
}

// "$PKVN,HPR,": the name is compared whole, so the longest one and its comma must be there.
bool ReadPkvnParameters(const S_ProtocolRow& row, const unsigned char* bytes, const S_ExpectedMessages&,
                        S_Expectation& frame) {
  if (!BeginsAs(row.frame, bytes)) return false;
  const std::string_view start(reinterpret_cast<const char*>(bytes), row.neededLength);
  const auto type = textproto::PkvnSentences::TypeOf(
      textproto::PkvnSentences::NameIn(start.substr(textproto::PkvnSentences::kPrefix.size())));
  if (type == VelaPKVN_Messages::ePkvnUnknown) return false;
  frame = {type, kPkvnLengths[type]};
  return true;
}

// "$RD1,": the version is one digit, for the start pattern has its comma in the fifth place.
bool ReadRdParameters(const S_ProtocolRow& row, const unsigned char* bytes, const S_ExpectedMessages& expected,
                      S_Expectation& frame) {
  const unsigned int version = static_cast<unsigned int>(bytes[3]) - '0';
  if (!BeginsAs(row.frame, bytes) || version >= std::size(kRdLengths)) return false;
  frame = {version, expected.rdVersions[version]};
  return true;
}

// "$>JI,", "$>JQUERY,", "$>JGEO,": one kind of message each.
bool ReadReplyParameters(const S_ProtocolRow& row, const unsigned char* bytes, const S_ExpectedMessages& expected,
                         S_Expectation& frame) {
  if (!BeginsAs(row.frame, bytes)) return false;
  frame = {0, expected.replies[row.frame.protocol]};
  return true;
}

// "$>JSITERECORD": the same without a type.
bool ReadSiteRecordParameters(const S_ProtocolRow& row, const unsigned char* bytes, const S_ExpectedMessages& expected,
                              S_Expectation& frame) {
  const unsigned int type = frame.type;
  if (!ReadReplyParameters(row, bytes, expected, frame)) return false;
  frame.type = type;
  return true;
}

}  // namespace velagnss::framing
