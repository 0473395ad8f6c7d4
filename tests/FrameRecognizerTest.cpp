// The recognizer against the same rules as slow and plain code: every result, message, counter and the free space, call
// by call, over random streams and random use. VELAGNSS_ROUNDS sets the number of rounds of each random test.
#include "framing/FrameRecognizer.h"

#include <malloc.h>

#include <cstdlib>
#include <vector>

#include "framing/CallbackFrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/RecognizerTwins.h"

namespace {

using namespace RecognizerTwins;
using Literal = LiteralRecognizer;

// Memory comes dirty in this program: what a constructor forgets to set shows in every test.
const int kDirty = mallopt(M_PERTURB, 0xA5);

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
    const eProtocols* const named = random.OneIn(2) ? nullptr : list.data();
    const unsigned policy = random.OneIn(9) ? 7 : random.Below(3);
    const bool keepsStatistics = !random.OneIn(5);
    Twins twins(named, policy, keepsStatistics, random.OneIn(5) ? random.Below(40) : 2048);
    if (random.OneIn(2)) twins.Both([&](auto& one) { one.DisableProtocol(C_RawDataMessage::eVelaCmdAck); });
    if (random.OneIn(2)) twins.Both([&](auto& one) { one.SetPatientSearch(true); });
    if (random.OneIn(2)) twins.Both([&](auto& one) { one.SetAcceptUnlisted(true); });
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
  EXPECT_GT(Twins::UnlistedSentences(), 0U);
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
      twins.Both([](auto& one) { one.SetAcceptUnlisted(true); });
      twins.Feed(frame, 60);
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

// The parameter step of each protocol, called for the start of every other one.
TEST(FrameParameters, AgreeForEveryStepOfEveryStart) {
  for (const std::string& start : kStarts) {
    for (unsigned step = 0; step < 9; ++step) {
      Twins twins(nullptr, eCircBufOvrflowRejectNew, true, 2048);
      twins.Both([](auto& one) { one.DisableProtocol(C_RawDataMessage::eVelaCmdAck); });
      twins.Both([](auto& one) { one.SetPatientSearch(true); });
      twins.Feed(start + "1,345678,0123456", 7);
      twins.Both([step](auto& one) { return AnyParameters(one, step); });
      ASSERT_TRUE(twins.Agree()) << start << " " << step;
    }
  }
}

// The callback sees each step of the loop: what it gets is what the next step of the plain rules answers.
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

TEST(CallbackFrameRecognizer, StepsForBytesOnlyAndLeavesOutOneResult) {
  struct Seen {
    C_CallbackFrameRecognizer real{nullptr, eCircBufOvrflowRejectNew, false};
    std::string results;
    void Feed(const char* bytes, unsigned short length) {
      real.Feed(reinterpret_cast<const unsigned char*>(bytes), length);
    }
  } seen;
  const auto note = [](void* context, eRecognitionResult result, C_RawDataMessage&) {
    auto& [real, results] = *static_cast<Seen*>(context);
    results += real.GetLastResult() == result ? std::to_string(result) : "not the last result";
  };
  const std::string frame = Sentence("GPHDT,274.07,T");
  const auto length = static_cast<unsigned short>(frame.size());
  seen.real.SetCallback(note, &seen);
  seen.Feed(frame.data(), 3);
  seen.Feed(nullptr, length);
  seen.Feed(frame.data(), 0);
  EXPECT_EQ(seen.results, "1110") << "bytes are queued, but none came";
  seen.real.SetSuppressedResult(eRecFrameStarted);
  seen.Feed(frame.data() + 3, static_cast<unsigned short>(length - 3));
  EXPECT_EQ(seen.results, "1110310");
  EXPECT_EQ(seen.real.GetMessage().length, length - 1);
  seen.real.Reset();
  seen.Feed(frame.data(), length);
  EXPECT_EQ(seen.results, "111031012310") << "a reset leaves out nothing";
}

}  // namespace
