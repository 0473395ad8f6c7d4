// Frames that are not listed: which bytes are one, where it ends, and that no listed frame is lost to them.
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "stream/FrameReader.h"
#include "tests/Cases.h"
#include "tests/RecognizerTwins.h"

namespace {

using namespace RecognizerTwins;

struct Found {
  std::uint64_t offset;
  std::string bytes;
  friend bool operator==(const Found&, const Found&) = default;
};

std::vector<Found> Read(std::string_view stream, bool acceptsUnlisted, std::size_t piece = 1 << 20) {
  velagnss::FrameReader reader;
  reader.AcceptUnlisted(acceptsUnlisted);
  std::vector<Found> found;
  const auto take = [&] {
    while (const velagnss::Frame* frame = reader.NextFrame())
      found.push_back({frame->offset, {frame->data, frame->data + frame->length}});
  };
  for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size()))) {
    ExactCopy bytes(stream.substr(0, piece));
    reader.Feed(bytes.Data(), std::min(piece, stream.size()));
    take();
  }
  reader.Finish();
  take();
  return found;
}

// The sentence with its digits in lower case.
std::string LowerSum(std::string sentence) {
  for (std::size_t at = sentence.size() - 4; at < sentence.size() - 2; ++at)
    if (sentence[at] >= 'A') sentence[at] |= ' ';
  return sentence;
}
std::string Encapsulated(const std::string& body) {
  std::string line = Sentence(body);
  line[0] = '!';
  return line;
}
std::string LineOf(std::size_t length) { return LineTo(length, "GPXYZ,", true); }

struct S_Case {
  const char* name;
  std::string stream;
  std::vector<std::uint64_t> offsets;  // of the frames found
};
const std::string kHdt = Sentence("GPHDT,274.07,T");
const std::string kTxt = Sentence("GPTXT,01,01,02,ANTENNA OK");
const S_Case kCases[] = {
    {"AnyFormatter", kTxt + kHdt, {0, kTxt.size()}},
    {"Proprietary", Sentence("PGRME,15.0,M,45.0,M,25.0,M"), {0}},
    {"Encapsulated", Encapsulated("AIVDM,1,1,,A,14eG;o@034o8sd<L9i:a;WF>062D,0"), {0}},
    {"ShortestSentence", Sentence("A,"), {0}},
    {"DigitsOfEitherCase", LowerSum(Sentence("GPHDT,1.5,T,N")) + LowerSum(kTxt), {0, 19}},
    {"BelowTheLeastLength", Sentence("IIHDT,,T") + kHdt, {0, 14}},
    {"BelowTheLeastLengthAlone", Sentence("GPALM,1"), {0}},
    {"AboveTheGreatestLength", LineTo(26 + 10, "GPROT,", true), {0}},
    {"AsLongAsAllowed", LineOf(1024), {0}},
    {"TooLong", LineOf(1025) + kHdt, {1026}},
    {"NamesOfOtherProtocols", Sentence("RD1,1,2") + Sentence("PKVN,XYZ,1,2,3,4") + Sentence("JROX,1"), {0, 13, 35}},
    {"WrongSum", "$GPTXT,1*00\r\n" + kHdt, {13}},
    {"WrongDigit", "$GPTXT,1*4G\r\n" + kHdt, {13}},
    {"NoSum", "$GPTXT,1\r\n" + kHdt, {10}},
    {"NoAddress", Sentence(",1") + Sentence("gptxt,1") + Sentence("GPTXT") + kHdt, {8 + 13 + 11}},
    {"SumNotBeforeTheLineEnd", "$GPTXT,1*" + Sentence("GPTXT,1").substr(9, 2) + " \r\n" + kHdt, {14}},
    {"ControlCharacter", Sentence("GPTXT,\t1") + kHdt, {14}},
    {"AnyRtcmNumber", RtcmFrame(RtcmPayload(1, 2)) + RtcmFrame(RtcmPayload(1067, 1023)), {0, 8}},
    {"RtcmWithoutNumber", RtcmFrame("") + RtcmFrame("\x3F") + RtcmFrame(RtcmPayload(1067, 3)), {13}},
    {"RtcmReservedBits", "\xD3\x04" + RtcmFrame(RtcmPayload(1067, 3)), {2}},
    {"DamagedRtcm", "\xD3" + RtcmFrame(RtcmPayload(1067, 3)) + "\xD3\0\4\x42\xB0zz123"s + kHdt, {1, 20}},
    {"ListedInARtcmFrame", RtcmFrame(RtcmPayload(1067, 3) + kHdt), {6}},
    // The same sum is right for both.
    {"ListedAtTheEndOfASentence", "$GPTXT,0w" + kHdt, {9}},
    {"UnlistedInAnUnlistedOne", RtcmFrame(RtcmPayload(1067, 3) + kTxt), {0}},
    {"ListedBeginsInsideAndEndsAfter",
     RtcmFrame(RtcmPayload(1067, 2) + "$BIN\x61\0\x1C\0"s) + std::string(99, 'x'),
     {0}},
    {"LastLineWithoutItsEnd", kHdt + "$GPTXT,01*62", {0, 20}},
    {"WaitsForNoLongerPattern", kHdt + Sentence("A,1"), {0, 20}},
};
TEST_ROWS(UnlistedFrames, WholeAndInEveryCut, kCases, row) {
  for (std::size_t piece = 1; piece <= std::min<std::size_t>(row.stream.size(), 40); ++piece) {
    std::vector<std::uint64_t> offsets;
    for (const Found& frame : Read(row.stream, true, piece)) offsets.push_back(frame.offset);
    ASSERT_EQ(offsets, row.offsets) << "pieces of " << piece;
  }
}

// Listed, unlisted, damaged and nested frames. Two frames that overlap are the one exception: there the stream says
// nothing of which one was meant.
TEST(UnlistedFrames, LoseNoListedFrame) {
  unsigned more = 0;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    Random random(seed);
    std::string stream;
    for (unsigned pieces = 1 + random.Below(20); pieces > 0; --pieces) stream += random.Piece();
    const std::vector<Found> listed = Read(stream, false);
    const std::vector<Found> all = Read(stream, true);
    ASSERT_EQ(Read(stream, true, 1 + random.Below(40)), all) << "seed " << seed;
    for (const Found& frame : listed) {
      const auto isExcused = [&frame](const Found& other) {
        return other.offset <= frame.offset && other.offset + other.bytes.size() > frame.offset &&
               other.offset + other.bytes.size() < frame.offset + frame.bytes.size();
      };
      const bool isKept = std::find(all.begin(), all.end(), frame) != all.end();
      ASSERT_TRUE(isKept || std::any_of(all.begin(), all.end(), isExcused)) << "seed " << seed << " " << frame.offset;
    }
    more += static_cast<unsigned>(all.size() - std::min(all.size(), listed.size()));
  }
  EXPECT_GT(more, 1500U);
}

}  // namespace
