#include "stream/FrameReader.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <random>

#include "Cases.h"
#include "HostData.h"

namespace {

using nlohmann::json;

// Everything that a reader hands out of a stream, in its order.
struct Reading {
  explicit Reading(std::string_view stream, std::size_t pieceSize = 1 << 20) {
    reader.ReportEvents(true);
    Read(stream, pieceSize);
    reader.Finish();
    TakeAll();
  }

  void Read(std::string_view stream, std::size_t pieceSize) {
    for (; !stream.empty(); stream.remove_prefix(std::min(pieceSize, stream.size()))) {
      ExactCopy piece(stream.substr(0, pieceSize));  // nothing may be kept of a piece
      EXPECT_TRUE(reader.Feed(piece.Data(), std::min(pieceSize, stream.size())));
      TakeAll();
    }
  }

  void TakeAll() {
    while (true) {
      const velagnss::StreamItem& item = reader.Next();
      if (std::holds_alternative<std::monostate>(item)) return;
      std::visit([this](const auto& what) { Take(what); }, item);
    }
  }

  void Take(std::monostate) {}
  void Take(const velagnss::Frame& frame) {
    frames.push_back({frame.offset, frame.length, frame.protocol, frame.message});
    log.push_back("frame " + std::to_string(frame.offset) + "+" + std::to_string(frame.length));
  }
  void Take(const velagnss::RejectedStart& start) {
    log.push_back("result " + std::to_string(static_cast<int>(start.reason)) + " at " + std::to_string(start.offset) +
                  " " + std::string(start.data, start.data + std::min<std::size_t>(start.size, 3)));
  }
  void Take(const velagnss::SkippedRange& range) {
    constexpr const char* kReasons[] = {"noise", "false starts", "end"};
    skipped += range.length;
    skippedBytes.emplace_back(range.data, range.data + range.size);
    log.push_back("skipped " + std::to_string(range.offset) + "+" + std::to_string(range.length) + " " +
                  kReasons[static_cast<int>(range.reason)]);
  }

  velagnss::FrameReader reader;
  json frames = json::array();
  std::uint64_t skipped = 0;
  std::vector<std::string> skippedBytes;
  std::vector<std::string> log;
};

constexpr std::string_view kHdt = "$GPHDT,274.07,T*03\r\n";
constexpr std::string_view kZda = "$GPZDA,201530.00,04,07,2002,00,00*60\r\n";

class CutStream : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Pieces, CutStream, testing::Values(1, 2, 7, 61, 997, 2080, 65537, 1 << 20));

TEST_P(CutStream, FindsWhatTheManifestLists) {
  const json manifest = json::parse(ReadHostFile("samples/session.json"));
  const Reading reading(ReadHostFile("samples/session.bin"), GetParam());
  EXPECT_EQ(reading.frames, manifest["frameList"]);
  EXPECT_EQ(reading.reader.Totals().framesGood, manifest["frames"]);
  EXPECT_EQ(reading.reader.Totals().bytesAccepted, manifest["bytesAccepted"]);
  EXPECT_EQ(reading.reader.Totals().bytesDiscarded, manifest["bytesDiscarded"]);
  EXPECT_EQ(reading.skipped, manifest["bytesDiscarded"]);
}

struct S_TellCase {
  const char* name;
  std::string stream;
  std::vector<std::string> log;
};
const S_TellCase kTells[] = {
    {"Nothing", "", {}},
    {"NoiseAlone", "abc", {"skipped 0+3 noise"}},
    {"LineEndsBelongToTheFrame", std::string(kHdt) + "\n\r" + std::string(kHdt), {"frame 0+19", "frame 22+19"}},
    {"LineEndsInFrontDoNot", "\r\n" + std::string(kHdt), {"skipped 0+2 noise", "frame 2+19"}},
    {"NoiseBehindALineEnd",
     std::string(kHdt) + "xy" + std::string(kHdt),
     {"frame 0+19", "skipped 20+2 noise", "frame 22+19"}},
    {"WrongChecksum",
     "$GPHDT,274.07,T*04\r\n" + std::string(kHdt),
     {"result 4 at 0 $GP", "skipped 0+20 false starts", "frame 20+19"}},
    {"CutShortByTheNext",
     "$GPHDT,274" + std::string(kHdt),
     {"result 4 at 0 $GP", "skipped 0+10 false starts", "frame 10+19"}},
    // A header that announces more than will ever come holds back what follows it, until the input ends.
    {"TrappedBehindAFalseStart",
     "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt) + "x" + std::string(kZda),
     {"skipped 0+5 end", "frame 5+19", "skipped 25+1 noise", "frame 26+37"}},
    {"TrappedTwice",
     "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt) + "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt),
     {"skipped 0+5 end", "frame 5+19", "skipped 25+5 end", "frame 30+19"}},
    {"CutOffAtTheEnd", std::string(kHdt) + "$GPZDA,2015", {"frame 0+19", "skipped 20+11 end"}},
    {"LastLineWithoutItsEnd", std::string(kZda) + "$GPHDT,274.07,T*03", {"frame 0+37", "frame 38+18"}},
    {"LastLineAfterAFalseStart", "\xD3\x03\xE8\x3E\xD0$GPHDT,274.07,T*03", {"skipped 0+5 end", "frame 5+18"}},
    {"LastLineWithAWrongSum", "x$GPHDT,274.07,T*04", {"skipped 0+19 end"}},
    {"LastLineWithHalfItsSum", "$GPHDT,274.07,T*0", {"skipped 0+17 end"}},
    {"LastLineNotListed", "$GPTXT,01*62", {"skipped 0+12 end"}},
    {"LastLineOfAnotherProtocol", "$PKVN,TEMPERATURE,1*7E", {"frame 0+22"}},
    // With zeros after it this header would be a frame: none may be made up.
    {"HeaderWithoutItsBody", std::string("$BIN\x3E\x00\x28\x00\x00\x00", 10), {"skipped 0+10 end"}},
};
TEST_ROWS(FrameReaderTells, WholeAndByteByByte, kTells, row) {
  for (const std::size_t pieceSize : {1 << 20, 1}) EXPECT_EQ(Reading(row.stream, pieceSize).log, row.log);
}

TEST(FrameReader, CountsWhatWaitsAtTheEnd) {
  const Reading reading("x" + std::string(kHdt) + "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt));
  const velagnss::StreamTotals& atEnd = reading.reader.TotalsAtFinish();
  EXPECT_EQ(atEnd.bytesAccepted, kHdt.size());
  EXPECT_EQ(atEnd.bytesDiscarded, 1);
  EXPECT_EQ(reading.reader.QueuedAtFinish(), 5 + kHdt.size());
  EXPECT_EQ(atEnd.framesGood, 1);
  EXPECT_EQ(reading.reader.Totals().framesGood, 2);
  EXPECT_EQ(reading.reader.BytesQueued(), 0);
  velagnss::FrameReader reader;
  const std::string waiting = "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt);
  reader.Feed(reinterpret_cast<const unsigned char*>(waiting.data()), waiting.size());
  EXPECT_EQ(reader.NextFrame(), nullptr);
  EXPECT_EQ(reader.BytesQueued(), waiting.size());
}

// Whatever comes: each byte is in a frame, in the line end after one, or in a skipped range, once.
TEST(FrameReader, EveryByteHasOnePlace) {
  std::mt19937 random(7);
  const std::string session = ReadHostFile("samples/session.bin").substr(0, 60000);
  for (int round = 0; round < 40; ++round) {
    std::string damaged = session.substr(random() % 1000);
    for (int i = 0; i < 60; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    damaged += round % 2 == 0 ? "$GPHDT,274.07,T*03" : "$PKVN,TEMPERATURE,1*7E";  // the file ends before the line does
    const Reading reading(damaged, 1 + random() % 5000);
    const velagnss::StreamTotals totals = reading.reader.Totals();
    EXPECT_EQ(totals.bytesAccepted + totals.bytesDiscarded, damaged.size());
    EXPECT_EQ(reading.skipped, totals.bytesDiscarded);
    EXPECT_GT(totals.framesGood, 300);
    EXPECT_EQ(reading.frames.back()[0], damaged.rfind('$'));
  }
}

TEST(FrameReader, ShowsTheBytesOfASkippedRange) {
  const std::string noise = std::string(700, 'a') + std::string(900, 'b');
  const std::string stream = "x" + std::string(kHdt) + noise + "$GPHDT,274.07,T*04\r\n" + std::string(kHdt);
  const Reading reading(stream, 333);
  EXPECT_EQ(reading.skippedBytes, (std::vector<std::string>{"x", noise.substr(0, 1024)}));
}

// Any number of bytes at once; but a piece is read in place, so the next one waits until it is used up.
TEST(FrameReader, TakesAPieceOnlyAfterTheOneBefore) {
  velagnss::FrameReader reader;
  const std::string stream = std::string(kHdt) + std::string(kZda);
  const auto* bytes = reinterpret_cast<const unsigned char*>(stream.data());
  EXPECT_TRUE(reader.Feed(bytes, stream.size()));
  EXPECT_FALSE(reader.Feed(bytes, stream.size()));
  ASSERT_NE(reader.NextFrame(), nullptr);
  EXPECT_FALSE(reader.Feed(bytes, stream.size()));
  EXPECT_EQ(reader.NextFrame()->offset, kHdt.size());
  EXPECT_EQ(reader.NextFrame(), nullptr);
  EXPECT_TRUE(reader.Feed(nullptr, 5));
  EXPECT_EQ(reader.NextFrame(), nullptr);
  EXPECT_EQ(reader.BytesFed(), stream.size());
}

// A port that was silent for a while: what waited comes out, and the stream goes on at its offset.
TEST(FrameReader, GoesOnAfterAFinish) {
  const std::string falseStart = "\xD3\x03\xE8\x3E\xD0";
  Reading reading(falseStart + std::string(kHdt));
  reading.Read(kHdt, 7);
  reading.reader.Finish();
  reading.TakeAll();
  EXPECT_EQ(reading.log, (std::vector<std::string>{"skipped 0+5 end", "frame 5+19", "frame 25+19"}));
  EXPECT_EQ(reading.reader.Totals().bytesAccepted, 2 * kHdt.size());
  EXPECT_EQ(reading.reader.Totals().bytesDiscarded, falseStart.size());
}

TEST(FrameReader, RestartsInAnyState) {
  const std::string stream = "xyz\xD3\x03\xE8\x3E\xD0" + std::string(kHdt);
  Reading reading("");
  for (int steps = 0; steps < 6; ++steps) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(stream.data());
    ASSERT_TRUE(reading.reader.Feed(bytes, stream.size())) << steps;
    if (steps > 2) reading.reader.Finish();
    for (int step = 0; step < steps; ++step) reading.reader.Next();
    reading.reader.Restart();
    EXPECT_EQ(reading.reader.BytesFed(), 0) << steps;
  }
  reading.Read(stream, stream.size());
  reading.reader.Finish();
  reading.TakeAll();
  EXPECT_EQ(reading.log, (std::vector<std::string>{"skipped 0+8 end", "frame 8+19"}));
  EXPECT_EQ(reading.reader.TotalsAtFinish().bytesDiscarded, 3);
}

// Switched on in mid-stream: what was queued before cannot be shown, but nothing else is.
TEST(FrameReader, ReportsEventsFromAnyByteOn) {
  const std::string stream = "noise$GPHDT,27" + std::string(kHdt) + "noise$GPHDT,274.07,T*04\r\n";
  for (std::size_t cut = 0; cut < stream.size(); ++cut) {
    Reading reading("");
    reading.reader.ReportEvents(false);
    reading.Read(stream.substr(0, cut), 7);
    reading.reader.ReportEvents(true);
    reading.Read(stream.substr(cut), 3);
    reading.reader.Finish();
    reading.TakeAll();
    EXPECT_EQ(reading.frames.size(), cut < 34 ? 1 : reading.reader.Totals().framesGood) << cut;
    EXPECT_LE(reading.skipped, reading.reader.Totals().bytesDiscarded);
  }
}

// With a reply of 100 bytes, which a search for this protocol alone has too small a buffer for.
TEST(FrameReader, SearchesForWhatItIsAskedFor) {
  const std::string reply = "$>JGEO," + std::string(91, 'a') + "\r\n";
  velagnss::FrameReader reader;
  const auto lengthOfFirst = [&](const std::string& stream) {
    reader.Restart();
    reader.Feed(reinterpret_cast<const unsigned char*>(stream.data()), stream.size());
    reader.Finish();
    const velagnss::Frame* const frame = reader.NextFrame();
    return frame == nullptr ? 0 : int{frame->length};
  };
  EXPECT_EQ(lengthOfFirst(reply), 99);
  EXPECT_EQ(lengthOfFirst("$>\r\n"), 0);
  reader.DisableProtocol(C_RawDataMessage::eAllProtocols);
  EXPECT_EQ(lengthOfFirst(reply), 0);
  reader.EnableProtocol(C_RawDataMessage::eVelaGEO);
  EXPECT_EQ(lengthOfFirst(reply), 99);
  EXPECT_EQ(lengthOfFirst(std::string(kHdt)), 0);
  reader.EnableProtocol(C_RawDataMessage::eVelaCmdAck);
  EXPECT_EQ(lengthOfFirst("$>\r\n"), 3);
}

// The recognizer's counters fold at 4 GiB.
TEST(FrameReader, CountsBeyondFourGibibytes) {
  const std::string noise(std::size_t{1} << 26, 'x');
  velagnss::FrameReader reader;
  for (int i = 0; i < 65; ++i) {
    reader.Feed(reinterpret_cast<const unsigned char*>(noise.data()), noise.size());
    ASSERT_EQ(reader.NextFrame(), nullptr);
  }
  reader.Feed(reinterpret_cast<const unsigned char*>(kHdt.data()), kHdt.size());
  EXPECT_EQ(reader.NextFrame()->offset, 65 * noise.size());
  EXPECT_EQ(reader.Totals().bytesDiscarded, 65 * noise.size());
}

}  // namespace
