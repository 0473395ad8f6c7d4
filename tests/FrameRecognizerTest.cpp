// The recognizer against the same rules as slow and plain code: every result, message, counter and the free space, call
// by call, over random streams and random use. VELAGNSS_ROUNDS sets the number of rounds of each random test.
#include "framing/FrameRecognizer.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <type_traits>
#include <vector>

#include "framing/CallbackFrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/LiteralRecognizer.h"
#include "tests/Streams.h"

namespace {

using namespace std::string_literals;
using eProtocols = C_RawDataMessage::eProtocols;
using Literal = LiteralRecognizer;

using Texts = std::vector<std::string>;

// clang-format off
const Texts kSentences = {"ALM", "APB", "BWC", "DTM", "HDG", "HDM", "HDT", "HEV", "GGA", "GLL", "GNS", "GRS",
                          "GSA", "GST", "GSV", "RMA", "RMB", "RMC", "ROT", "RRE", "VTG", "XTE", "ZDA", "XYZ"};
const Texts kPkvnNames = {"ATTSTAT", "GBS", "HPR", "BLV", "FVI", "RTKSTAT", "VCT", "INTLT", "TEMPERATURE", "ARN_ROUTER",
                          "HPRX"};
const Texts kReplies = {"RD1,", "RD0,", "RD2,", ">JI,", ">JQUERY,", ">JQUERY,", ">JGEO,", ">JSITERECORD", ">"};
const std::vector<std::pair<unsigned, std::size_t>> kBlocks = {{97, 28}, {6, 12}, {2, 16}, {103, 64}, {76, 448}, {4, 30}};
const std::vector<unsigned> kRtcmNumbers = {63, 1001, 1005, 1067, 1077, 1230, 1244, 1303, 4011, 4072, 4095};
const Texts kStarts = {"$", "$>", "\xD3", "$GPGSA,", "$PKVN,RAW,", "$PKVN,HPR,", "$JROX,", "$RD1,", "$>JI,", "$>JQUERY,",
                       "$>JSITERECORD", "\xD3\3\xFF>", "\xD3\0\0>\xD0"s, "$BIN\x4C\0\xC0\1"s, "$PKVN,RAW,\r\n"};
const Texts kCounts = {"", "0", "1", "2", "3", "4", "5", "65535", "65536", "65538", "4294967298", "x", "2x", "5 5", "2+1",
                       "+", " ", " +", "+ 2", "++2", " 2", "+2", "-2", "000000002", "0000000002", "2\0x"s, "2,1", "2 "};
const Texts kRawNames = {"RAW,", "RAW,1", "RAW,1", "RAW, \r1", "RAW", "RAW,1,1", "RAW\0,1"s, "RAWX,1", "RA,1"};
// clang-format on

std::size_t PayloadOf(std::size_t packedBytes) { return std::max<std::size_t>(packedBytes * 7 / 16 * 2, 2) - 2; }

std::string PackedTo(std::size_t bytes) {
  std::string packed = Packed(std::string(PayloadOf(bytes), 'p'));
  packed.resize(bytes, '\x80');
  return packed;
}

std::string RawSentence(const std::string& nameAndField, const std::string& count, std::size_t packedBytes) {
  return "$PKVN," + nameAndField + "," + count + "," + PackedTo(packedBytes) + "\r\n";
}

// A text frame of `length` bytes, filled up with commas: checksum and first line end included, the second one behind.
std::string LineTo(std::size_t length, const std::string& start, bool checksum) {
  const std::size_t others = 1 + start.size() + (checksum ? 4 : 1);
  const std::string body = start + std::string(length > others ? length - others : 0, ',');
  return checksum ? Sentence(body) : "$" + body + "\r\n";
}

// What a port may carry.
class Random {
 public:
  explicit Random(unsigned seed) : m_random(seed) {}

  unsigned Below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }
  bool OneIn(unsigned times) { return Below(times) == 0; }
  template <class Values>
  auto OneOf(const Values& values) {
    return values[Below(values.size())];
  }

  std::string Piece() {
    const unsigned kind = Below(8);
    if (kind == 0) return Characters(Below(60), "$$$$>>\xD3\xD3\r\n0123456789*,,JPKVNRDBI \0\x80\xFF"s);
    if (kind == 1) return Repeated(OneIn(4) ? Characters(1 + Below(6), "") : OneOf(kStarts));
    return kind < 4 ? Damaged(Frame()) : Frame() + (OneIn(2) ? "\r\n" : "");
  }

  // A list of protocols in a block of its exact size; it ends with any number above 10, or after 254 entries.
  std::vector<eProtocols> List() {
    std::vector<eProtocols> list(OneIn(20) ? 254 : 0, eProtocols{Below(11)});
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
    const unsigned kind = Below(8);
    const auto [block, size] = OneOf(kBlocks);
    const std::size_t packed = Below(OneIn(10) ? 2040 : 80);
    const std::string count = OneIn(2) ? OneOf(kCounts) : std::to_string(PayloadOf(packed));
    if (kind == 0) return "$JROX," + PackedTo(OneIn(4) ? 429 + Below(6) : Below(100)) + "\r\n";
    if (kind == 1) return RtcmFrame(RtcmPayload(OneOf(kRtcmNumbers), OneIn(8) ? 1023 - Below(3) : 1 + Below(60)));
    if (kind == 2) return BinFrame(block, Characters(size, OneIn(3) ? "\xFF\xFE" : ""));
    if (kind == 3) return LineTo(Below(200), "PKVN," + OneOf(kPkvnNames) + "," + Fields(40), !OneIn(4));
    if (kind == 4) return RawSentence(OneOf(kRawNames), count, packed);
    if (kind == 5) return LineTo(Below(50), OneOf(kReplies) + Fields(80), OneIn(3));
    return LineTo(Below(40), "GN" + OneOf(kSentences) + "," + Fields(60), true);
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

  std::mt19937 m_random;
};

// Both recognizers, driven alike.
class Twins {
 public:
  Twins(const eProtocols* list, unsigned policy, bool statistics, unsigned capacity)
      : m_real(list, eCircBufOvrflowHandling{policy}, statistics),
        m_literal(list, policy),
        m_buffer(std::min<unsigned>(capacity, m_real.GetMaxFrameLength())),
        m_message(m_buffer.data(), static_cast<unsigned>(m_buffer.size())) {
    EXPECT_EQ(m_real.GetMaxFrameLength(), m_literal.GetMaxFrameLength());
    EXPECT_EQ(m_real.GetStatistics() != nullptr, statistics);
  }

  // One call; a null view queues nothing.
  unsigned Step(std::string_view bytes) {
    ExactCopy copy(bytes);
    unsigned char* data = bytes.data() == nullptr ? nullptr : copy.Data();
    const unsigned result = m_real.DoRecognition(data, copy.Size(), m_message);
    Compare(result, m_literal.DoRecognition(data, copy.Size(), m_delivered));
    ++m_results[result];
    if (result == eRecFrameComplete) ++m_frames[m_message.protocol];
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
  C_FrameRecognizer m_real;
  Literal m_literal;
  Literal::Message m_delivered;
  std::vector<unsigned char> m_buffer;
  C_RawDataMessage m_message;
  bool m_agree = true;
};

// Something that a host may do between two calls, single steps of the machinery included.
void Meddle(Random& random, Twins& twins) {
  const eProtocols protocol{random.OneIn(4) ? 11 : random.Below(14)};
  const eCircBufOvrflowHandling policy{random.OneIn(8) ? 7 : random.Below(3)};
  const auto byte = static_cast<unsigned char>(random.OneOf("\r\n$\xD3x"s));
  const unsigned kind = random.Below(14);
  if (kind == 0) twins.Both([](auto& one) { return one.FrameStartSearch(); });
  if (kind == 1) twins.Both([](auto& one) { return one.FrameBodyWait(); });
  if (kind == 3) twins.Both([&](auto& one) { return one.IsAPostFrameAllowedByte(byte); });
  if (kind == 4) twins.Both([&](auto& one) { return one.IsAFrameStartChar(byte); });
  if (kind == 5) twins.Both([](auto& one) { one.ResetFrameScanProc(); });
  if (kind == 6 && random.OneIn(4)) twins.Both([](auto& one) { one.FullProcessingReset(); });
  if (kind == 7) twins.SetCounters(~0U - random.Below(300));
  if (kind == 8) twins.Both([&](auto& one) { one.SetPatientSearch(byte < 32); });
  if (kind == 9) twins.Both([&](auto& one) { one.SetOverflowHandling(policy); });
  if (kind == 10 || kind == 11) twins.Both([&](auto& one) { one.DisableProtocol(protocol); });
  if (kind > 11) twins.Both([&](auto& one) { one.EnableProtocol(protocol); });
}

unsigned Rounds(unsigned byDefault) {
  const char* rounds = std::getenv("VELAGNSS_ROUNDS");
  return rounds == nullptr ? byDefault : static_cast<unsigned>(std::atoi(rounds));
}

class RandomUse : public testing::TestWithParam<unsigned> {};

TEST_P(RandomUse, AgreesCallByCall) {
  for (unsigned round = 0; round < Rounds(4000); ++round) {
    const unsigned seed = GetParam() * 10000019 + round;
    Random random(seed);
    const std::vector<eProtocols> list = random.List();
    const bool meddles = random.OneIn(2);
    Twins twins(random.OneIn(2) ? nullptr : list.data(), random.OneIn(9) ? 7 : random.Below(3), !random.OneIn(5),
                random.OneIn(5) ? random.Below(40) : 2048);
    if (random.OneIn(2)) twins.Both([&](auto& one) { one.DisableProtocol(C_RawDataMessage::eVelaCmdAck); });
    if (random.OneIn(2)) twins.Both([&](auto& one) { one.SetPatientSearch(true); });
    std::string stream;
    for (unsigned pieces = 1 + random.Below(30); pieces > 0; --pieces) stream += random.Piece();
    const std::size_t most = random.OneOf(std::vector{2U, 4U, 30U, 300U, 5000U});
    for (std::size_t at = 0; at < stream.size() && twins.Agree();) {
      const std::size_t piece = random.OneIn(10) ? twins.GetFreeSpace() + random.Below(3) : random.Below(most);
      twins.Step(std::string_view(stream).substr(at, piece));
      at += piece;
      twins.Pump(random.OneIn(3) ? random.Below(4) : 100000);
      if (meddles && random.OneIn(8)) Meddle(random, twins);
    }
    ASSERT_TRUE(twins.Agree()) << "seed " << seed;
  }
  for (unsigned result = 0; result < 8; ++result) EXPECT_GT(Twins::Results(result), 0U) << "never seen: " << result;
  for (unsigned protocol = 0; protocol < 11; ++protocol) EXPECT_GT(Twins::Delivered(protocol), 0U) << protocol;
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomUse, testing::Values(1U, 2U, 3U, 4U));

// All lengths from below the least to above the greatest of every kind of frame, and all that a count can be.
TEST(FrameLengths, AgreeAtEveryLength) {
  Texts frames;
  const auto add = [&frames](const std::string& frame) { frames.push_back(frame + "$GPHDT,"); };
  for (std::size_t length = 6; length < 262; ++length) {
    for (const std::string& name : kSentences) add(LineTo(length, "GP" + name + ",", true));
    for (const bool checksum : {false, true}) {
      for (const std::string& name : kPkvnNames) add(LineTo(length, "PKVN," + name + ",", checksum));
      for (const std::string& start : kReplies) add(LineTo(length, start, checksum));
    }
  }
  for (std::size_t more = 0; more < 60; ++more) {
    for (const std::size_t length : {0, 980}) add(RtcmFrame(std::string(length + more, '\x3F')));
    for (const std::size_t length : {0, 385}) add("$JROX," + PackedTo(length + more) + "\r\n");
    for (const std::size_t length : {0, 490, 2000}) add(LineTo(length + more, ">", false));
    for (const std::size_t size : {0, 1975})
      add(RawSentence("RAW,1", std::to_string(PayloadOf(size + more)), size + more));
    add(LineTo(490 + more, ">JSITERECORD", false));
  }
  for (const std::string& name : kRawNames) {
    for (const std::string& count : kCounts) {
      for (std::size_t size = 2; size < 14; ++size) add(RawSentence(name, count, size));
    }
  }
  const eProtocols few[] = {C_RawDataMessage::eVelaGEO, C_RawDataMessage::eVelaCmdAck, C_RawDataMessage::eAllProtocols};
  for (const eProtocols* list : {few, static_cast<const eProtocols*>(nullptr)}) {
    for (const std::string& frame : frames) {
      Twins twins(list, eCircBufOvrflowRejectNew, true, 2048);
      twins.Feed(frame, 600);
      twins.Both([](auto& one) { one.DisableProtocol(C_RawDataMessage::eVelaCmdAck); });
      twins.Feed(frame, 19);
      twins.Both([](auto& one) { one.SetPatientSearch(true); });
      twins.Feed(frame, 200);
      ASSERT_TRUE(twins.Agree()) << testing::PrintToString(frame);
    }
  }
}

// Every message number, and every block id with every length: what the first ten bytes decide.
TEST(FrameParameters, AgreeForEveryNumber) {
  Twins twins(nullptr, eCircBufOvrflowRejectNew, true, 2048);
  const auto agree = [&](const std::string& header) {
    twins.Both([](auto& one) { one.FullProcessingReset(); });
    twins.Feed(header, header.size());
    return twins.Agree();
  };
  for (unsigned number = 0; number < 4096; ++number)
    ASSERT_TRUE(agree(RtcmFrame(RtcmPayload(number, 2)).substr(0, 7))) << number;
  for (unsigned block = 0; block < 260; ++block) {
    for (std::size_t length = 0; length < 470; ++length)
      ASSERT_TRUE(agree(BinFrame(block, std::string(length, '\0')).substr(0, 10))) << block << " " << length;
  }
  for (unsigned length = 0xFF00; length <= 0xFFFF; ++length) {
    const std::string bytes = {static_cast<char>(length), static_cast<char>(length >> 8), '.', '.'};
    ASSERT_TRUE(agree("$BIN\x61\0"s + bytes)) << length;
  }
}

// The callback stands for the loop: what it is told of each step is what the next step of the plain rules answers.
TEST(CallbackFrameRecognizer, ReportsEachStepOfThePump) {
  struct Echo {
    Literal literal{nullptr, eCircBufOvrflowFlushAll};
    Literal::Message delivered;
    std::string input;
    unsigned results[8] = {};
    bool agree = true;
  };
  for (unsigned seed = 0; seed < Rounds(1000); ++seed) {
    Random random(seed);
    Echo echo;
    C_CallbackFrameRecognizer real(nullptr, eCircBufOvrflowFlushAll, true);
    const auto step = [](void* context, eRecognitionResult result, C_RawDataMessage& message) {
      auto& [literal, delivered, input, results, agree] = *static_cast<Echo*>(context);
      const auto* data = input.empty() ? nullptr : reinterpret_cast<const unsigned char*>(input.data());
      const unsigned expected = literal.DoRecognition(data, static_cast<unsigned>(input.size()), delivered);
      input.clear();
      const Literal::Bytes bytes(message.data, message.data + message.length);
      agree = agree && result == expected && message.protocol == delivered.protocol && bytes == delivered.bytes;
      ++results[result];
    };
    real.SetCallback(step, &echo);
    for (unsigned pieces = 20; pieces > 0; --pieces) {
      const std::string piece = echo.input = random.Piece();
      real.Feed(reinterpret_cast<const unsigned char*>(piece.data()), static_cast<unsigned short>(piece.size()));
      EXPECT_TRUE(echo.input.empty());
    }
    ASSERT_TRUE(echo.agree) << "seed " << seed;
    EXPECT_EQ(real.GetStatistics()->framesGood, echo.results[eRecFrameComplete]);
    EXPECT_EQ(real.GetLastResult(), eRecNoNewData);
  }
}

}  // namespace
