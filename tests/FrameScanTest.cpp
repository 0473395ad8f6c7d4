// What the recognizer makes of single frames and faults: the whole road from bytes to results and counters.
#include <cctype>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/Streams.h"

namespace {

using eProtocols = C_RawDataMessage::eProtocols;

// Results 3 to 7 of feeding `stream` in pieces of `piece` bytes: "<protocol>/<type>:<length>" for a frame, else the
// code.
std::string Trace(C_FrameRecognizer& recognizer, std::string_view stream, std::size_t piece) {
  std::vector<unsigned char> buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), static_cast<unsigned int>(buffer.size()));
  std::string trace;
  while (!stream.empty()) {
    const std::string_view part = stream.substr(0, piece);
    stream.remove_prefix(part.size());
    ExactCopy copy(part);
    eRecognitionResult result = recognizer.DoRecognition(copy.Data(), copy.Size(), message);
    for (; result != eRecNoNewData; result = recognizer.DoRecognition(nullptr, 0, message)) {
      if (result < eRecFrameComplete) continue;
      trace += trace.empty() ? "" : " ";
      if (result != eRecFrameComplete) {
        trace += std::to_string(result);
        continue;
      }
      const std::string type = message.messageType == 0xFFFFFFFF ? "-" : std::to_string(message.messageType);
      trace += std::to_string(message.protocol) + "/" + type + ":" + std::to_string(message.length);
    }
  }
  return trace;
}

std::string Counters(const C_FrameRecognizer& recognizer) {
  const S_RecognizerStatistics& s = *recognizer.GetStatistics();
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
    {"Nothing", "", "", "0 0 0 0"},
    {"TwoSentences", kHdt + kHdt, "2/6:19 2/6:19", "40 0 2 0"},
    {"NoiseBefore", "xyz" + kHdt, "2/6:19", "20 3 1 0"},
    {"LineEndsBehindText", kHdt + "\r\n\n" + kHdt, "2/6:19 2/6:19", "43 0 2 0"},
    {"NoiseEndsTheAllowance", kHdt + "x\r\n", "2/6:19", "20 3 1 0"},
    {"LineEndBehindRtcmIsNoise", kRtcm + "\r\n", "1/1005:25", "25 2 1 0"},
    {"RtcmBitFlip", Flipped(kRtcm, 10) + kRtcm, "4 1/1005:25", "25 25 1 1"},
    {"RtcmWithoutPayload", RtcmFrame("") + kHdt + "0000000000000", "5 2/6:19", "20 19 1 0"},
    {"RtcmOneByte", RtcmFrame("\x3F") + kHdt, "5 2/6:19", "20 7 1 0"},
    {"RtcmLongest", RtcmFrame(RtcmPayload(1077, 1023)), "1/1077:1029", "1029 0 1 0"},
    {"ReservedBitsSet", "\xD3\x04" + kRtcm, "1/1005:25", "25 2 1 0"},
    {"LowerCaseSum", "$GPHDT,271.07,T*3f\r\n", "5", "0 20 0 1"},
    {"WrongSum", Flipped(kHdt, 8), "4", "0 20 0 1"},
    {"NoSumInNmea", "$GPHDT,274.07,T,,,\r\n", "5", "0 20 0 1"},
    {"StartInsideAFrame", "$GPGGA,1235$GPG" + kGga, "4 2/8:66", "67 15 1 1"},
    {"UnknownFormatter", "$GPXYZ,1,2,3,4,5,6,7,8\r\n", "", "0 24 0 0"},
    {"ControlCharacter", "$GPHDT,27\x01.07,T*03\r\n", "5", "0 20 0 1"},
    {"LoneLineFeedEndsText", kHdt.substr(0, 18) + "\n" + kHdt, "2/6:19 2/6:19", "39 0 2 0"},
    {"Bin", BinFrame(97, std::string(28, '\xFF')) + "\r\n", "3/97:38", "40 0 1 0"},
    {"BinVariableLength", BinFrame(103, std::string(64, 'a')) + BinFrame(103, std::string(93, 'a')),
     "3/103:74 3/103:103", "177 0 2 0"},
    {"BinWrongSum", Flipped(BinFrame(97, std::string(28, 'a')), 20), "4", "0 38 0 1"},
    {"PkvnWithoutItsLineEnd", kHpr, "4/3:40", "42 0 1 0"},
    {"PkvnWithoutSum", "$PKVN,HPR,123519.00,271.5,-1.25,0.5,N\r\n", "4/3:38", "39 0 1 0"},
    {"PkvnWrongSum", Flipped(kHpr, 12), "5", "0 42 0 1"},
    {"PkvnNameIsComparedWhole", Sentence("PKVN,HPRX,123519.00,271.5,-1.25,0.5,N"), "5", "0 43 0 0"},
    {"RawEven", kRaw4, "4/0:23", "23 0 1 0"},
    {"RawOdd", "$PKVN,RAW,1,3," + Packed("abc") + "\r\n", "4/0:23", "23 0 1 0"},
    {"RawWrongCount", "$PKVN,RAW,1,5," + Packed("abcd") + "\r\n", "4", "0 23 0 1"},
    {"RawWithoutThirdComma", "$PKVN,RAW,1000000000\r\n", "5", "0 22 0 1"},
    {"Rd1", kRd1, "5/1:39", "40 0 1 0"},
    {"Rd1WithSum", Sentence("RD1,1000.0,3,1575.42,0,12-34,45.5,1,2"), "5/1:42", "43 0 1 0"},
    {"Rd0IsAlwaysTooLong", "$RD0,1000.0,3,1575.42,0,12-34,45.5,1,2\r\n", "5", "0 40 0 1"},
    {"JiReply", "$>JI,1810-2233-00,1,7,01102009,01/06/1998\r\n", "8/0:42", "43 0 1 0"},
    {"JqueryReply", "$>JQUERY,GUIDE,30,1,2\r\n", "9/0:22", "23 0 1 0"},
    {"JgeoReply", "$>JGEO,SENT=1575.42,USED=1575.42,SV=0,LON\r\n", "10/0:42", "43 0 1 0"},
    {"SiteRecord", "$>JSITERECORD,1,Field 7\r\n", "6/-:24", "25 0 1 0"},
    {"Jrox", "$JROX," + Packed("abcdef") + "\r\n", "0/-:18", "18 0 1 0"},
    {"JroxWrongSum", Flipped("$JROX," + Packed("abcdef") + "\r\n", 8), "4", "0 18 0 1"},
};

// Everything but acknowledgements, patiently: then the cut of the stream must not matter.
TEST_ROWS(FrameScan, DoesNotDependOnTheCut, kScanCases, c) {
  for (const std::size_t piece : {1, 2, 3, 7, 19, 64, 2000}) {
    C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, true);
    recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
    recognizer.SetPatientSearch(true);
    const std::string trace = Trace(recognizer, c.stream, piece);
    EXPECT_EQ(trace, c.trace) << "pieces of " << piece;
    EXPECT_EQ(Counters(recognizer), c.counters) << "pieces of " << piece;
  }
}

// Until a search is told to be patient, a start is judged by what is there: a reply that arrives in pieces is lost.
TEST(FrameSearch, JudgesAtOnceUnlessPatient) {
  for (const bool patient : {false, true}) {
    C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, true);
    recognizer.SetPatientSearch(patient);
    recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
    EXPECT_EQ(Trace(recognizer, kRd1, 5), patient ? "5/1:39" : "5") << patient;
  }
}

TEST(FrameSearch, AcknowledgementsHideGeoReplies) {
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, true);
  EXPECT_EQ(
      Trace(recognizer, "$>JGEO,SENT=1575.42,USED=1575.42,SV=0,LON\r\n$>JI,1810-2233-00,1,7,01102009,01/06\r\n", 500),
      "7/-:42 8/0:37");
}

}  // namespace
