// What the recognizer makes of single frames and faults: the whole path from bytes to results and counters.
#include <map>

#include "tests/CarefulHost.h"
#include "tests/Cases.h"
#include "tests/Streams.h"

namespace {

// In the order of the stream: "<protocol>/<type>:<length>" of each frame, the result of each false start.
std::string Trace(const CarefulHost& host) {
  std::map<std::size_t, std::string> events;
  for (const S_Found& frame : host.found) {
    const std::string type = frame.type == 0xFFFFFFFF ? "-" : std::to_string(frame.type);
    events[frame.from] = std::to_string(frame.protocol) + "/" + type + ":" + std::to_string(frame.bytes.size());
  }
  for (const auto& [from, result] : host.refusals) events[from] = std::to_string(result);
  std::string trace;
  for (const auto& [from, event] : events) trace += (trace.empty() ? "" : " ") + event;
  return trace;
}

std::string Counters(const CarefulHost& host) {
  const S_RecognizerStatistics& s = host.Counters();
  return std::to_string(s.bytesAccepted) + " " + std::to_string(s.bytesDiscarded) + " " + std::to_string(s.framesGood) +
         " " + std::to_string(s.framesBad);
}

struct S_ScanCase {
  const char* name;
  std::string stream;
  const char* trace;
  const char* counters;  // accepted, discarded, good, bad
};

const std::string kHdt = Sentence("GPHDT,274.07,T");  // 20 bytes with CR LF
const std::string kGga = Sentence("GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,");
const std::string kRtcm = RtcmFrame(RtcmPayload(1005, 19));
const std::string kHpr = Sentence("PKVN,HPR,123519.00,271.5,-1.25,0.5,N");
const std::string kRd1 = "$RD1,1000.0,3,1575.42,0,12-34,45.5,1,2\r\n";
const std::string kRaw4 = "$PKVN,RAW,1,4," + Packed("abcd") + "\r\n";

std::string Flipped(std::string frame, std::size_t at) {
  frame[at] = static_cast<char>(frame[at] ^ 1);
  return frame;
}

const S_ScanCase kScanCases[] = {
    {"TwoSentences", kHdt + kHdt, "2/6:19 2/6:19", "40 0 2 0"},
    {"NoiseBefore", "xyz" + kHdt, "2/6:19", "20 3 1 0"},
    {"LineEndsBehindText", kHdt + "\r\n\n" + kHdt, "2/6:19 2/6:19", "43 0 2 0"},
    {"NoiseEndsTheAllowance", kHdt + "x\r\n", "2/6:19", "20 3 1 0"},
    {"LineEndBehindRtcmIsNoise", kRtcm + "\r\n", "1/1005:25", "25 2 1 0"},
    {"RtcmWithoutPayload", RtcmFrame("") + kHdt + "0000000000000", "5 2/6:19", "20 19 1 0"},
    {"RtcmLongest", RtcmFrame(RtcmPayload(1077, 1023)), "1/1077:1029", "1029 0 1 0"},
    {"ReservedBitsSet", "\xD3\x04" + kRtcm, "1/1005:25", "25 2 1 0"},
    {"WrongSum", Flipped(kHdt, 8), "4", "0 20 0 1"},
    {"StartInsideAFrame", "$GPGGA,1235$GPG" + kGga, "4 2/8:66", "67 15 1 1"},
    {"LoneLineFeedEndsText", kHdt.substr(0, 18) + "\n" + kHdt, "2/6:19 2/6:19", "39 0 2 0"},
    {"BinVariableLength", BinFrame(103, std::string(64, 'a')) + BinFrame(103, std::string(93, 'a')),
     "3/103:74 3/103:103", "177 0 2 0"},
    {"PkvnWithoutItsLineEnd", kHpr, "4/3:40", "42 0 1 0"},
    {"PkvnWithoutSum", "$PKVN,HPR,123519.00,271.5,-1.25,0.5,N\r\n", "4/3:38", "39 0 1 0"},
    {"RawEven", kRaw4, "4/0:23", "23 0 1 0"},
    {"RawOdd", "$PKVN,RAW,1,3," + Packed("abc") + "\r\n", "4/0:23", "23 0 1 0"},
    {"RawWrongCount", "$PKVN,RAW,1,5," + Packed("abcd") + "\r\n", "4", "0 23 0 1"},
    {"RawWithoutThirdComma", "$PKVN,RAW,1000000000\r\n", "5", "0 22 0 1"},
    {"Rd1WithSum", Sentence("RD1,1000.0,3,1575.42,0,12-34,45.5,1,2"), "5/1:42", "43 0 1 0"},
    {"Rd0IsAlwaysTooLong", "$RD0,1000.0,3,1575.42,0,12-34,45.5,1,2\r\n", "5", "0 40 0 1"},
    {"Jrox", "$JROX," + Packed("abcdef") + "\r\n", "0/-:18", "18 0 1 0"},
};

TEST_ROWS(FrameScan, DoesNotDependOnTheCut, kScanCases, c) {
  for (const std::size_t piece : {1, 2, 3, 7, 19, 64, 2000}) {
    CarefulHost host;
    host.Feed(c.stream, piece);
    EXPECT_TRUE(host.isInOrder);
    EXPECT_EQ(Trace(host), c.trace) << "pieces of " << piece;
    EXPECT_EQ(Counters(host), c.counters) << "pieces of " << piece;
  }
}

// Scans read ahead of what is queued. The end of an earlier sentence, still in the same place of the queue's memory,
// must not end this one.
TEST(FrameScan, TakesNoByteThatIsNotQueued) {
  const std::string sentence = Sentence("GPGSA," + std::string(86, '1')).substr(0, 97);  // up to its CR
  CarefulHost host;
  for (std::size_t i = 0; i < 300; ++i) {
    host.Feed(sentence.substr(0, 96));
    ASSERT_EQ(host.found.size(), i);
    host.Feed(sentence.substr(96));
  }
  EXPECT_EQ(host.found.size(), 300U);
}

}  // namespace
