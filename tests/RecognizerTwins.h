// The recognizer and its second opinion driven alike, with all that a port may carry and a host may do. What is chosen
// comes from the caller: from a random generator in tests, from the input's bytes in the fuzz target.
#ifndef VELAGNSS_TESTS_RECOGNIZER_TWINS_H
#define VELAGNSS_TESTS_RECOGNIZER_TWINS_H

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/ExactCopy.h"
#include "tests/LiteralRecognizer.h"
#include "tests/Streams.h"

namespace RecognizerTwins {

using namespace std::string_literals;
using eProtocols = C_RawDataMessage::eProtocols;

using Texts = std::vector<std::string>;

// clang-format off
inline const Texts kSentences = {"ALM", "APB", "BWC", "DTM", "HDG", "HDM", "HDT", "HEV", "GGA", "GLL", "GNS", "GRS",
                          "GSA", "GST", "GSV", "RMA", "RMB", "RMC", "ROT", "RRE", "VTG", "XTE", "ZDA", "XYZ"};
inline const Texts kPkvnNames = {"ATTSTAT", "GBS", "HPR", "BLV", "FVI", "RTKSTAT", "VCT", "INTLT", "TEMPERATURE", "ARN_ROUTER",
                          "HPRX"};
inline const Texts kReplies = {"RD1,", "RD0,", "RD2,", ">JI,", ">JQUERY,", ">JQUERY,", ">JGEO,", ">JSITERECORD", ">"};
inline const std::vector<std::pair<unsigned, std::size_t>> kBlocks = {{97, 28}, {6, 12}, {2, 16}, {103, 64}, {76, 448}, {4, 30}};
inline const std::vector<unsigned> kRtcmNumbers = {63, 1001, 1005, 1067, 1077, 1230, 1244, 1303, 4011, 4072, 4095};
inline const Texts kStarts = {"$", "$>", "\xD3", "$GPGSA,", "$PKVN,RAW,", "$PKVN,HPR,", "$JROX,", "$RD1,", "$>JI,", "$>JQUERY,",
                       "$>JGEO,", "$>JSITERECORD", "\xD3\3\xFF>", "\xD3\0\0>\xD0"s, "$BIN\x4C\0\xC0\1"s, "$PKVN,RAW,\r\n"};
inline const Texts kAddresses = {"AIVDM", "PGRME", "GPTXT", "IIHDT", "GPALM", "A", "PKVN", "RD1", "BIN12", "JROX", "9", "", "gp",
                          "GPGRS,\r\n", "GPALM,1*7a\r\n"};
inline const Texts kCounts = {"", "0", "1", "2", "3", "4", "5", "65535", "65536", "65538", "4294967298", "x", "2x", "5 5", "2+1",
                       "+", " ", " +", "+ 2", "++2", " 2", "+2", "-2", "000000002", "0000000002", "2\0x"s, "2,1", "2 "};
inline const Texts kRawNames = {"RAW,", "RAW,1", "RAW,1", "RAW, \r1", "RAW", "RAW,1,1", "RAW\0,1"s, "RAWX,1", "RA,1"};
// clang-format on

inline std::size_t PayloadOf(std::size_t packedBytes) { return std::max<std::size_t>(packedBytes * 7 / 16 * 2, 2) - 2; }

inline std::string PackedTo(std::size_t bytes) {
  std::string packed = Packed(std::string(PayloadOf(bytes), 'p'));
  packed.resize(bytes, '\x80');
  return packed;
}

inline std::string RawSentence(const std::string& nameAndField, const std::string& count, std::size_t packedBytes) {
  return "$PKVN," + nameAndField + "," + count + "," + PackedTo(packedBytes) + "\r\n";
}

// A text frame of `length` bytes, filled up with commas: checksum and first line end included, then the second one.
inline std::string LineTo(std::size_t length, const std::string& start, bool checksum) {
  const std::size_t others = 1 + start.size() + (checksum ? 4 : 1);
  const std::string body = start + std::string(length > others ? length - others : 0, ',');
  return checksum ? Sentence(body) : "$" + body + "\r\n";
}

// What a port may carry, made of one choice after another. No two choices are in the arguments of one call or on both
// sides of an operator: compilers differ in which they would make first.
class Random {
 public:
  // Chooses a number below the limit it is given.
  using Choice = std::function<unsigned(std::size_t limit)>;

  explicit Random(unsigned seed)
      : Random([random = std::mt19937(seed)](std::size_t limit) mutable {
          return static_cast<unsigned>(random() % limit);
        }) {}
  explicit Random(Choice choice) : m_choice(std::move(choice)) {}

  unsigned Below(std::size_t limit) { return m_choice(limit); }
  bool OneIn(unsigned times) { return Below(times) == 0; }
  template <class Values>
  auto OneOf(const Values& values) {
    return values[Below(values.size())];
  }

  std::string Piece() {
    const unsigned kind = Below(8);
    if (kind == 0) return Characters(Below(60), "$$$$>>\xD3\xD3\r\n0123456789*,,JPKVNRDBI \0\x80\xFF"s);
    if (kind == 1) return Repeated(OneIn(4) ? Characters(1 + Below(6), "") : OneOf(kStarts));
    const std::string frame = Frame();
    return kind < 4 ? Damaged(frame) : frame + (OneIn(2) ? "\r\n" : "");
  }

  // A list of protocols in a block of its exact size; it ends with any number above 10, or after 254 entries.
  std::vector<eProtocols> List() {
    const std::size_t many = OneIn(20) ? 254 : 0;
    std::vector<eProtocols> list(many, eProtocols{Below(11)});
    if (!list.empty()) return list;
    while (!OneIn(3)) list.push_back(eProtocols{Below(11)});
    list.push_back(eProtocols{OneOf(std::vector{11U, 12U, 200U, ~0U})});
    return list;
  }

 private:
  std::string Characters(std::size_t count, const std::string& alphabet) {
    std::string text(count, ' ');
    for (char& c : text) c = alphabet.empty() ? static_cast<char>(Below(256)) : OneOf(alphabet);
    return text;
  }

  std::string Fields(std::size_t most) { return Characters(Below(most), "0123456789,,,,.-AN*$> "); }

  std::string Repeated(const std::string& start) {
    std::string text;
    for (unsigned times = 1 + Below(OneIn(20) ? 300 : 6); times > 0; --times) text += start;
    return text;
  }

  std::string Frame() {
    const unsigned kind = Below(10);
    if (kind > 7) return Around(OneIn(2) ? Frame() : Characters(Below(30), ""));
    const auto [block, size] = OneOf(kBlocks);
    const std::size_t packed = Below(OneIn(10) ? 2040 : 80);
    const std::string count = OneIn(2) ? OneOf(kCounts) : std::to_string(PayloadOf(packed));
    if (kind == 0) return "$JROX," + PackedTo(OneIn(4) ? 429 + Below(6) : Below(100)) + "\r\n";
    if (kind == 1) {
      const unsigned number = OneOf(kRtcmNumbers);
      return RtcmFrame(RtcmPayload(number, OneIn(8) ? 1023 - Below(3) : 1 + Below(60)));
    }
    if (kind == 2) return BinFrame(block, Characters(size, OneIn(3) ? "\xFF\xFE" : ""));
    if (kind == 4) return RawSentence(OneOf(kRawNames), count, packed);
    return Line(kind);
  }

  // An unlisted frame around other bytes; the first of them may be lost, so that a frame among them ends after it.
  std::string Around(const std::string& inside) {
    if (OneIn(2)) {
      const unsigned number = OneOf(kRtcmNumbers);
      return RtcmFrame(RtcmPayload(number, 2 + Below(4)) + inside.substr(0, 900) + Characters(Below(5), ""));
    }
    std::string line = Sentence(OneOf(kAddresses) + "," + inside.substr(0, 1000));
    if (OneIn(4)) line[0] = '!';
    if (OneIn(3)) line[line.size() - 3] |= ' ';
    return line;
  }

  std::string Line(unsigned kind) {
    const std::size_t length = Below(kind == 3 ? 200 : kind == 5 ? 50 : 40);
    std::string start = kind == 3 ? "PKVN," + OneOf(kPkvnNames) + "," : kind == 5 ? OneOf(kReplies) : "GN";
    if (kind > 5) start += OneOf(kSentences) + ",";
    start += Fields(kind == 3 ? 40 : kind == 5 ? 80 : 60);
    return LineTo(length, start, kind == 3 ? !OneIn(4) : kind > 5 || OneIn(3));
  }

  std::string Damaged(std::string frame) {
    for (unsigned times = 1 + Below(3); times > 0 && !frame.empty(); --times) {
      const std::size_t last = frame.size() - 1;
      const std::size_t at = OneIn(3) ? last - Below(std::min<std::size_t>(last + 1, 7)) : Below(last + 1);
      const unsigned kind = Below(5);
      if (kind == 0) frame.erase(at, OneIn(2) ? 1 + Below(5) : std::string::npos);
      if (kind == 1) frame.insert(at, frame, at, 1 + Below(5));
      if (kind == 2) frame.insert(at, 1, OneOf("\r\n\0\xFF$*,\x1F"s));
      if (kind > 2) frame[at] = static_cast<char>(frame[at] ^ 1 << Below(8));
    }
    return frame;
  }

  Choice m_choice;
};

// Both recognizers, driven alike.
class Twins {
 public:
  Twins(const eProtocols* list, unsigned policy, bool statistics, unsigned capacity)
      : m_real(list, eCircBufOvrflowHandling{policy}, statistics),
        m_literal(list, policy),
        m_buffer(std::min<unsigned>(capacity, m_real.GetMaxFrameLength())),
        m_message(m_buffer.data(), static_cast<unsigned>(m_buffer.size())) {
    m_message.messageSubtype = m_delivered.subtype = 7;  // until a frame is delivered
    m_agree = m_real.GetMaxFrameLength() == m_literal.GetMaxFrameLength() &&
              (m_real.GetStatistics() != nullptr) == statistics;
  }

  // One call; a null view queues nothing.
  unsigned Step(std::string_view bytes) {
    ExactCopy copy(bytes);
    unsigned char* data = bytes.data() == nullptr ? nullptr : copy.Data();
    const unsigned result = m_real.DoRecognition(data, copy.Size(), m_message);
    Compare(result, m_literal.DoRecognition(data, copy.Size(), m_delivered));
    ++m_results[result];
    if (result == eRecFrameComplete) ++m_frames[m_message.protocol];
    m_unlisted += result == eRecFrameComplete && m_message.messageType == C_RawDataMessage::eNmeaUnknown ? 1 : 0;
    return result;
  }

  // Up to `most` calls without bytes, or until nothing is left to do.
  void Pump(unsigned most) {
    while (most > 0 && Step({}) != eRecNoNewData && m_agree) --most;
  }

  void Feed(std::string_view stream, std::size_t piece) {
    for (; !stream.empty() && m_agree; stream.remove_prefix(std::min(piece, stream.size()))) {
      Step(stream.substr(0, piece));
      Pump(100000);
    }
  }

  // The same operation of both, and its result if it has one.
  template <class Operation>
  void Both(Operation operation) {
    if constexpr (std::is_void_v<decltype(operation(m_real))>) {
      operation(m_real);
      operation(m_literal);
      Compare(0, 0);
    } else {
      const unsigned result = operation(m_real);
      Compare(result, operation(m_literal));
    }
  }

  void SetCounters(unsigned value) {
    if (m_real.GetStatistics() == nullptr) return;
    *const_cast<S_RecognizerStatistics*>(m_real.GetStatistics()) = {value, value, value, value};
    m_literal.counters = {value, value, value, value};
  }

  bool Agree() const { return m_agree; }
  unsigned GetFreeSpace() const { return m_real.GetFreeSpace(); }
  static unsigned Delivered(unsigned protocol) { return m_frames[protocol]; }
  static unsigned UnlistedSentences() { return m_unlisted; }
  static unsigned Results(unsigned result) { return m_results[result]; }

 private:
  void Compare(unsigned result, unsigned expected) {
    const std::size_t length = std::min<std::size_t>(m_delivered.bytes.size(), m_message.capacity);
    m_agree = m_agree && result == expected && m_real.GetFreeSpace() == m_literal.GetFreeSpace() &&
              m_message.protocol == m_delivered.protocol && m_message.messageType == m_delivered.type &&
              m_message.messageSubtype == m_delivered.subtype && m_message.length == length &&
              std::equal(m_buffer.data(), m_buffer.data() + length, m_delivered.bytes.data());
    const S_RecognizerStatistics* real = m_real.GetStatistics();
    const auto& [accepted, discarded, good, bad] = m_literal.counters;
    m_agree = m_agree && (real == nullptr || (real->bytesAccepted == accepted && real->bytesDiscarded == discarded &&
                                              real->framesGood == good && real->framesBad == bad));
  }

  static inline unsigned m_results[8] = {};
  static inline unsigned m_frames[13] = {};
  static inline unsigned m_unlisted = 0;
  C_FrameRecognizer m_real;
  LiteralRecognizer m_literal;
  LiteralRecognizer::Message m_delivered;
  std::vector<unsigned char> m_buffer;
  C_RawDataMessage m_message;
  bool m_agree = true;
};

// The steps of one protocol for the frame of another.
inline unsigned AnyBodyWait(C_FrameRecognizer& one, unsigned step) {
  constexpr eRecognitionResult (C_FrameRecognizer::*kSteps[])() = {
      &C_FrameRecognizer::RTCM3xBodyWait,     &C_FrameRecognizer::NMEA0183BodyWait,
      &C_FrameRecognizer::VelaBINBodyWait,    &C_FrameRecognizer::PKVNRawBodyWait,
      &C_FrameRecognizer::PKVNNotRawBodyWait, &C_FrameRecognizer::JSITERECORDBodyWait,
      &C_FrameRecognizer::VelaCmdAckBodyWait, &C_FrameRecognizer::JROXBodyWait,
  };
  return (one.*kSteps[step])();
}
inline unsigned AnyBodyWait(LiteralRecognizer& one, unsigned step) { return one.BodyWait(step); }

inline bool AnyParameters(C_FrameRecognizer& one, unsigned step) {
  constexpr bool (C_FrameRecognizer::*kSteps[])() = {
      &C_FrameRecognizer::GetRTCM3_xFrameParameters,    &C_FrameRecognizer::GetNMEA0183rameParameters,
      &C_FrameRecognizer::GetVelaBINFrameParameters,    &C_FrameRecognizer::GetPKvnFrameParameters,
      &C_FrameRecognizer::GetVelaRDFrameParameters,     &C_FrameRecognizer::GetVelaJIFrameParameters,
      &C_FrameRecognizer::GetVelaJQUERYFrameParameters, &C_FrameRecognizer::GetJSITERECORDFrameParameters,
      &C_FrameRecognizer::GetVelaGEOFrameParameters,
  };
  return (one.*kSteps[step])();
}
inline bool AnyParameters(LiteralRecognizer& one, unsigned step) { return one.FrameParameters(step); }

// Something that a host may do between two calls, single steps of the machinery included.
inline void Meddle(Random& random, Twins& twins) {
  const eProtocols protocol{random.OneIn(4) ? 11 : random.Below(14)};
  const eCircBufOvrflowHandling policy{random.OneIn(8) ? 7 : random.Below(3)};
  const auto byte = static_cast<unsigned char>(random.OneOf("\r\n$\xD3x"s));
  const unsigned kind = random.Below(17);
  if (kind == 0) twins.Both([](auto& one) { return one.FrameStartSearch(); });
  if (kind == 1) twins.Both([](auto& one) { return one.FrameBodyWait(); });
  if (kind == 2) twins.Both([](auto& one) { return one.DetermineMsgExpectations(); });
  if (kind == 3) twins.Both([&](auto& one) { return one.IsAPostFrameAllowedByte(byte); });
  if (kind == 4) twins.Both([&](auto& one) { return one.IsAFrameStartChar(byte); });
  if (kind == 5) twins.Both([](auto& one) { one.ResetFrameScanProc(); });
  if (kind == 6 && random.OneIn(4)) twins.Both([](auto& one) { one.FullProcessingReset(); });
  if (kind == 7) twins.SetCounters(~0U - random.Below(300));
  if (kind == 8) twins.Both([&](auto& one) { one.SetPatientSearch(byte < 32); });
  if (kind == 9) twins.Both([&](auto& one) { one.SetOverflowHandling(policy); });
  if (kind == 10 || kind == 11) twins.Both([&](auto& one) { one.DisableProtocol(protocol); });
  if (kind == 12 || kind == 13) twins.Both([&](auto& one) { one.EnableProtocol(protocol); });
  if (kind == 14) twins.Both([&, step = random.Below(8)](auto& one) { return AnyBodyWait(one, step); });
  if (kind == 16) twins.Both([&](auto& one) { one.SetAcceptUnlisted(byte < 32); });
  if (kind == 15) twins.Both([&, step = random.Below(9)](auto& one) { return AnyParameters(one, step); });
}

}  // namespace RecognizerTwins

#endif  // VELAGNSS_TESTS_RECOGNIZER_TWINS_H
