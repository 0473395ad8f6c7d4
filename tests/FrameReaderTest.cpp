#include "apps/velagnss/pipeline/FrameReader.h"

#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "Cases.h"
#include "HostData.h"

namespace {

using nlohmann::json;

constexpr C_RawDataMessage::eProtocols kAllButAcknowledgements[] = {
    C_RawDataMessage::eJROX,        C_RawDataMessage::eRTCM3_x,     C_RawDataMessage::eNMEA0183,
    C_RawDataMessage::eVelaBIN,     C_RawDataMessage::ePKVN,        C_RawDataMessage::eVelaRD,
    C_RawDataMessage::eJSITERECORD, C_RawDataMessage::eVelaJI,      C_RawDataMessage::eVelaJQUERY,
    C_RawDataMessage::eVelaGEO,     C_RawDataMessage::eAllProtocols};

// Everything that a reader tells of a stream, in its order.
class Record : public Host::C_FrameSink {
 public:
  void OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) override {
    frames.push_back({offset, frame.length, frame.protocol, frame.messageType});
    told.push_back("frame " + std::to_string(offset) + "+" + std::to_string(frame.length));
    bytes.append(reinterpret_cast<const char*>(frame.data), frame.length);
  }
  void OnRejection(const Host::S_Rejection& rejection) override {
    told.push_back("result " + std::to_string(rejection.result) + " at " + std::to_string(rejection.offset) + " " +
                   std::string(rejection.bytes.begin(), rejection.bytes.begin() + 3));
  }
  void OnSkipped(std::uint64_t offset, std::uint64_t length) override {
    skipped += length;
    told.push_back("skipped " + std::to_string(offset) + "+" + std::to_string(length));
  }

  json frames = json::array();
  std::string bytes;
  std::uint64_t skipped = 0;
  std::vector<std::string> told;
};

struct Reading : Record {
  explicit Reading(std::string_view stream, std::size_t pieceSize = 1 << 20) : reader(kAllButAcknowledgements, *this) {
    for (; !stream.empty(); stream.remove_prefix(std::min(pieceSize, stream.size()))) {
      ExactCopy piece(stream.substr(0, pieceSize));  // nothing may be kept of a piece
      reader.Feed({piece.Data(), std::min(pieceSize, stream.size())});
    }
    reader.Finish();
  }
  Host::C_FrameReader reader;
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
  std::vector<std::string> told;
};
const S_TellCase kTells[] = {
    {"Nothing", "", {}},
    {"NoiseAlone", "abc", {"skipped 0+3"}},
    {"LineEndsBelongToTheFrame", std::string(kHdt) + "\n\r" + std::string(kHdt), {"frame 0+19", "frame 22+19"}},
    {"LineEndsInFrontDoNot", "\r\n" + std::string(kHdt), {"skipped 0+2", "frame 2+19"}},
    {"NoiseBehindALineEnd",
     std::string(kHdt) + "xy" + std::string(kHdt),
     {"frame 0+19", "skipped 20+2", "frame 22+19"}},
    {"WrongChecksum",
     "$GPHDT,274.07,T*04\r\n" + std::string(kHdt),
     {"result 4 at 0 $GP", "skipped 0+20", "frame 20+19"}},
    {"CutShortByTheNext", "$GPHDT,274" + std::string(kHdt), {"result 4 at 0 $GP", "skipped 0+10", "frame 10+19"}},
    // A header that announces more than will ever come holds back what follows it, until the input ends.
    {"TrappedBehindAFalseStart",
     "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt) + "x" + std::string(kZda),
     {"skipped 0+5", "frame 5+19", "skipped 25+1", "frame 26+37"}},
    {"TrappedTwice",
     "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt) + "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt),
     {"skipped 0+5", "frame 5+19", "skipped 25+5", "frame 30+19"}},
    {"CutOffAtTheEnd", std::string(kHdt) + "$GPZDA,2015", {"frame 0+19", "skipped 20+11"}},
    // With zeros behind it this header would be a frame: none may be made up.
    {"HeaderWithoutItsBody", std::string("$BIN\x3E\x00\x28\x00\x00\x00", 10), {"skipped 0+10"}},
};
TEST_ROWS(FrameReaderTells, WholeAndByteByByte, kTells, row) {
  for (const std::size_t pieceSize : {1 << 20, 1}) EXPECT_EQ(Reading(row.stream, pieceSize).told, row.told);
}

TEST(FrameReader, CountsWhatWaitsAtTheEnd) {
  const Reading reading("x" + std::string(kHdt) + "\xD3\x03\xE8\x3E\xD0" + std::string(kHdt));
  const Host::S_StreamTotals& atEnd = reading.reader.TotalsAtEnd();
  EXPECT_EQ(atEnd.bytesAccepted, kHdt.size());
  EXPECT_EQ(atEnd.bytesDiscarded, 1);
  EXPECT_EQ(reading.reader.QueuedAtEnd(), 5 + kHdt.size());
  EXPECT_EQ(atEnd.framesGood, 1);
  EXPECT_EQ(reading.reader.Totals().framesGood, 2);
}

// Whatever comes: each byte is in a frame, a line end behind one, or in a skipped range, once.
TEST(FrameReader, EveryByteHasOnePlace) {
  std::mt19937 random(7);
  const std::string session = ReadHostFile("samples/session.bin").substr(0, 60000);
  for (int round = 0; round < 40; ++round) {
    std::string damaged = session.substr(random() % 1000);
    for (int i = 0; i < 60; ++i) damaged[random() % damaged.size()] = static_cast<char>(random());
    const Reading reading(damaged, 1 + random() % 5000);
    const Host::S_StreamTotals& totals = reading.reader.Totals();
    EXPECT_EQ(totals.bytesAccepted + totals.bytesDiscarded, damaged.size());
    EXPECT_EQ(reading.skipped, totals.bytesDiscarded);
    EXPECT_GT(totals.framesGood, 300);
  }
}

}  // namespace
