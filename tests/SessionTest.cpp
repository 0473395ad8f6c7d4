// The sample session read as a careful host reads it, against the manifest that its generator wrote without the
// library.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "binproto/VelaBin_Decode.h"
#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace {

std::string FileContent(const char* name) {
  std::ifstream file(std::string(VELAGNSS_SAMPLES_DIR "/") + name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

const std::string& SessionBytes() {
  static const std::string bytes = FileContent("session.bin");
  return bytes;
}

const nlohmann::json& Manifest() {
  static const nlohmann::json manifest = nlohmann::json::parse(FileContent("session.json"));
  return manifest;
}

using t_Row = std::array<std::size_t, 4>;  // offset, length, protocol, message type

std::vector<t_Row> ExpectedFrames() { return Manifest().at("frameList").get<std::vector<t_Row>>(); }

// What a reader reports of the session.
struct S_Report {
  std::vector<t_Row> frames;
  std::map<std::size_t, unsigned int> refusals;  // offset of the false start: result 4 or 5
  S_RecognizerStatistics counters{};
  unsigned int queued = 0;
  bool bytesAgree = true;  // the frames' bytes are those of the session
};

// Feeds pieces of `pieceSize` bytes, or of what fits.
class C_Reader {
 public:
  C_Reader() : m_recognizer(nullptr, static_cast<eCircBufOvrflowHandling>(0), true) {
    m_recognizer.SetPatientSearch(true);
    m_recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
  }

  S_Report Read(std::size_t pieceSize) {
    const std::string& bytes = SessionBytes();
    while (m_fed < bytes.size()) {
      const std::size_t count =
          std::min({pieceSize, bytes.size() - m_fed, static_cast<std::size_t>(m_recognizer.GetFreeSpace())});
      Feed(bytes.data() + m_fed, count);
    }
    m_report.counters = *m_recognizer.GetStatistics();
    m_report.queued = Queued();
    return m_report;
  }

 private:
  unsigned int Queued() const { return m_recognizer.GetMaxFrameLength() + 32U - m_recognizer.GetFreeSpace(); }

  void Feed(const char* piece, std::size_t count) {
    m_fed += count;
    eRecognitionResult result = m_recognizer.DoRecognition(reinterpret_cast<const unsigned char*>(piece),
                                                           static_cast<unsigned short>(count), m_message);
    for (; result != eRecNoNewData; result = m_recognizer.DoRecognition(nullptr, 0, m_message)) Note(result);
  }

  void Note(eRecognitionResult result) {
    const std::size_t head = m_fed - Queued();  // offset of the oldest byte that is still queued
    if (result == eRecChecksumError || result == eRecFrameRejected) m_report.refusals[head - 1] = result;
    if (result != eRecFrameComplete) return;
    const std::size_t offset = head - m_message.length;
    m_report.frames.push_back({offset, m_message.length, m_message.protocol, m_message.messageType});
    if (std::memcmp(m_message.data, SessionBytes().data() + offset, m_message.length) != 0) m_report.bytesAgree = false;
  }

  C_FrameRecognizer m_recognizer;
  unsigned char m_buffer[2048];
  C_RawDataMessage m_message{m_buffer, sizeof m_buffer};
  std::size_t m_fed = 0;
  S_Report m_report;
};

struct S_PieceCase {
  const char* name;
  std::size_t size;
};

constexpr S_PieceCase kPieces[] = {
    {"Bytes", 1}, {"Sevens", 7}, {"Prime251", 251}, {"Prime1021", 1021}, {"AsMuchAsFits", 65535},
};

class Session : public testing::TestWithParam<S_PieceCase> {};

TEST_P(Session, DeliversExactlyTheGoodFrames) {
  const S_Report report = C_Reader().Read(GetParam().size);
  const std::vector<t_Row> expected = ExpectedFrames();
  const auto [got, want] = std::mismatch(report.frames.begin(), report.frames.end(), expected.begin(), expected.end());
  EXPECT_TRUE(got == report.frames.end() && want == expected.end())
      << "first difference: " << testing::PrintToString(got == report.frames.end() ? t_Row{} : *got) << " for "
      << testing::PrintToString(want == expected.end() ? t_Row{} : *want);
  EXPECT_TRUE(report.bytesAgree);
  EXPECT_EQ(report.counters.framesGood, expected.size());
  EXPECT_EQ(report.counters.bytesAccepted, Manifest().at("bytesAccepted"));
  EXPECT_EQ(report.counters.bytesDiscarded, Manifest().at("bytesDiscarded"));
  EXPECT_EQ(report.queued, 0U);
}

TEST_P(Session, RefusesEachFaultForItsReason) {
  S_Report report = C_Reader().Read(GetParam().size);
  for (const nlohmann::json& fault : Manifest().at("faults")) {
    const auto refusal = report.refusals.find(fault.at("offset"));
    const unsigned int result = refusal == report.refusals.end() ? 1 : refusal->second;
    EXPECT_EQ(result, fault.at("result")) << fault.at("what");
  }
}

INSTANTIATE_TEST_SUITE_P(Pieces, Session, testing::ValuesIn(kPieces), CaseName<S_PieceCase>);

// --- Decoding ---

ExactCopy FrameAt(std::size_t offset, std::size_t length) {
  return ExactCopy(std::string_view(SessionBytes()).substr(offset, length));
}

constexpr unsigned short kWeek = 2314;  // of the session's start; it ends in the next one
constexpr double kStart = 604638.0;     // s of week

// A number of the manifest, by its JSON pointer, in units of `scale`.
template <class Record>
struct S_NumberRow {
  const char* name;
  double scale;
  double (*get)(const Record&);
};

template <class Record, auto Member>
double Get(const Record& record) {
  return static_cast<double>(record.*Member);
}
template <auto Member>
constexpr auto kKepler = &Get<S_IFKeplerEphRec, Member>;
template <auto Member>
constexpr auto kPva = &Get<S_IFPvaEphRec, Member>;
template <auto Member>
constexpr auto kGga = &Get<S_GGA_Data, Member>;

constexpr double kSemicircle = 3.14159265358979;  // rad
using K = S_IFKeplerEphRec;
using P = S_IFPvaEphRec;

// IS-GPS-200, tables 20-I and 20-III.
const S_NumberRow<K> kKeplerRows[] = {
    {"/satellite", 1, kKepler<&K::SvId>},
    {"/sixSecondCount", 6, kKepler<&K::TxTime>},
    {"/codeOnL2", 1, kKepler<&K::CodeOnL2>},
    {"/health", 1, kKepler<&K::SvHealth>},
    {"/iodc", 1, kKepler<&K::Iodc>},
    {"/l2Flag", 1, kKepler<&K::L2PDataFlag>},
    {"/tgd", 0x1p-31, kKepler<&K::Tgd>},
    {"/toc", 16, kKepler<&K::Toc>},
    {"/af2", 0x1p-55, kKepler<&K::Af2>},
    {"/af1", 0x1p-43, kKepler<&K::Af1>},
    {"/af0", 0x1p-31, kKepler<&K::Af0>},
    {"/iode", 1, kKepler<&K::Iode>},
    {"/crs", 0x1p-5, kKepler<&K::Crs>},
    {"/deltaN", 0x1p-43 * kSemicircle, kKepler<&K::DeltaN>},
    {"/m0", 0x1p-31 * kSemicircle, kKepler<&K::M0>},
    {"/cuc", 0x1p-29, kKepler<&K::Cuc>},
    {"/eccentricity", 0x1p-33, kKepler<&K::Ecc>},
    {"/cus", 0x1p-29, kKepler<&K::Cus>},
    {"/sqrtA", 0x1p-19, kKepler<&K::SqrtA>},
    {"/toe", 16, kKepler<&K::Toe>},
    {"/cic", 0x1p-29, kKepler<&K::Cic>},
    {"/omega0", 0x1p-31 * kSemicircle, kKepler<&K::Omega0>},
    {"/cis", 0x1p-29, kKepler<&K::Cis>},
    {"/i0", 0x1p-31 * kSemicircle, kKepler<&K::I0>},
    {"/crc", 0x1p-5, kKepler<&K::Crc>},
    {"/omega", 0x1p-31 * kSemicircle, kKepler<&K::Omega>},
    {"/omegaDot", 0x1p-43 * kSemicircle, kKepler<&K::OmegaDot>},
    {"/iDot", 0x1p-43 * kSemicircle, kKepler<&K::IDot>},
};

// GLONASS ICD, table 4.5; km made m.
const S_NumberRow<P> kGlonassRows[] = {
    {"/slot", 1, kPva<&P::SvId>},
    {"/slot", 1, kPva<&P::N>},
    {"/channel", 1, kPva<&P::FreqChannel>},
    {"/p1", 1, kPva<&P::P1>},
    {"/bn", 1, kPva<&P::BnBits>},
    {"/p2", 1, kPva<&P::P2>},
    {"/tb", 1, kPva<&P::Tb>},
    {"/tb", 900, kPva<&P::RefTime>},  // the session's day in Moscow is the first of its week
    {"/p3", 1, kPva<&P::P3>},
    {"/gammaN", 0x1p-40, kPva<&P::GammaN>},
    {"/p", 1, kPva<&P::P>},
    {"/ln", 1, kPva<&P::Ln>},
    {"/tauN", 0x1p-30, kPva<&P::TauN>},
    {"/deltaTauN", 0x1p-30, kPva<&P::DeltaTauN>},
    {"/en", 1, kPva<&P::En>},
    {"/p4", 1, kPva<&P::P4>},
    {"/ft", 1, kPva<&P::Ft>},
    {"/nt", 1, kPva<&P::Nt>},
    {"/m", 1, kPva<&P::M>},
    {"/tauC", 0x1p-31, kPva<&P::TauC>},
    {"/n4", 1, kPva<&P::N4>},
    {"/tauGps", 0x1p-30, kPva<&P::TauGps>},
    {"/position/0", 0x1p-11 * 1000, kPva<&P::PosX>},
    {"/position/1", 0x1p-11 * 1000, kPva<&P::PosY>},
    {"/position/2", 0x1p-11 * 1000, kPva<&P::PosZ>},
    {"/velocity/0", 0x1p-20 * 1000, kPva<&P::VelX>},
    {"/velocity/1", 0x1p-20 * 1000, kPva<&P::VelY>},
    {"/velocity/2", 0x1p-20 * 1000, kPva<&P::VelZ>},
    {"/acceleration/0", 0x1p-30 * 1000, kPva<&P::AccX>},
    {"/acceleration/1", 0x1p-30 * 1000, kPva<&P::AccY>},
    {"/acceleration/2", 0x1p-30 * 1000, kPva<&P::AccZ>},
};

// RTCA DO-229, message type 9.
const S_NumberRow<P> kSbasRows[] = {
    {"/satellite", 1, kPva<&P::SvId>},
    {"/second", 1, kPva<&P::FrameTime>},
    {"/issue", 1, kPva<&P::Iod>},
    {"/accuracy", 1, kPva<&P::Ft>},
    {"/week", 1, kPva<&P::RefWeek>},
    {"/reference", 1, kPva<&P::RefTime>},
    {"/motion/0", 0.08, kPva<&P::PosX>},
    {"/motion/1", 0.08, kPva<&P::PosY>},
    {"/motion/2", 0.4, kPva<&P::PosZ>},
    {"/motion/3", 0.000625, kPva<&P::VelX>},
    {"/motion/4", 0.000625, kPva<&P::VelY>},
    {"/motion/5", 0.004, kPva<&P::VelZ>},
    {"/motion/6", 0.0000125, kPva<&P::AccX>},
    {"/motion/7", 0.0000125, kPva<&P::AccY>},
    {"/motion/8", 0.0000625, kPva<&P::AccZ>},
    {"/clock/0", 0x1p-31, kPva<&P::TauN>},
    {"/clock/1", 0x1p-40, kPva<&P::GammaN>},
};

constexpr double kAngleUnit = 1e-7 / 60;  // degrees

const S_NumberRow<S_GGA_Data> kGgaRows[] = {
    {"/secondOfDay", 1, kGga<&S_GGA_Data::timeOfDay>},
    {"/latitude", kAngleUnit, kGga<&S_GGA_Data::latitude>},
    {"/longitude", kAngleUnit, kGga<&S_GGA_Data::longitude>},
    {"/altitude", 0.001, kGga<&S_GGA_Data::altitude>},
};

template <class Record, std::size_t N>
void ExpectNumbers(const nlohmann::json& numbers, const Record& record, const S_NumberRow<Record> (&rows)[N]) {
  for (const S_NumberRow<Record>& row : rows) {
    const double expected = numbers.at(nlohmann::json::json_pointer(row.name)).get<double>() * row.scale;
    EXPECT_NEAR(row.get(record), expected, std::abs(expected) * 1e-14) << row.name << " of " << numbers;
  }
}

// Weeks are full ones: a time in the second half of a week belongs to the week that ends in the session.
unsigned int WeekOf(double second) { return second > 302400 ? kWeek : kWeek + 1U; }

void ExpectKepler(const nlohmann::json& numbers, const S_IFKeplerEphRec& record) {
  ExpectNumbers(numbers, record, kKeplerRows);
  EXPECT_EQ(record.TxWeek, 2048 + numbers.at("week").get<int>()) << numbers;
  EXPECT_EQ(record.ToeWeek, WeekOf(record.Toe)) << numbers;
  EXPECT_EQ(record.TocWeek, WeekOf(record.Toc)) << numbers;
}

void ExpectGlonass(const nlohmann::json& numbers, const S_IFPvaEphRec& record) {
  ExpectNumbers(numbers, record, kGlonassRows);
  const unsigned int tk = numbers.at("tk");
  EXPECT_EQ(record.FrameTime, (tk >> 7) * 3600 + (tk >> 1 & 63) * 60 + (tk & 1) * 30) << numbers;
  EXPECT_EQ(record.FrameWeek, kWeek + 1) << numbers;
  EXPECT_EQ(record.RefWeek, kWeek + 1) << numbers;
}

void ExpectSbas(const nlohmann::json& numbers, const S_IFPvaEphRec& record) {
  ExpectNumbers(numbers, record, kSbasRows);
  EXPECT_EQ(record.FrameWeek, WeekOf(record.FrameTime)) << numbers;
}

TEST(SessionDecoding, EphemeridesHoldWhatTheSatellitesSend) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(kWeek, kStart, ALGO::GNSS_GPS);
  const auto record = std::make_unique<U_VelaBIN_EcdDcdData>();
  int decoded = 0;
  for (const nlohmann::json& numbers : Manifest().at("numbers")) {
    if (numbers.at("message") == "GGA") continue;
    ExactCopy frame = FrameAt(numbers.at("offset"), numbers.at("length"));
    unsigned short number = 0;
    ASSERT_EQ(decoder.Decode(frame.Data(), frame.Size(), number, *record), 0U) << numbers;
    ++decoded;
    if (number == 65)
      ExpectGlonass(numbers, record->pvaEph);
    else if (number == 93)
      ExpectSbas(numbers, record->pvaEph);
    else
      ExpectKepler(numbers, record->keplerEph);
  }
  EXPECT_GT(decoded, 100);
}

// A sentence through `MakeDecodable`, as a host decodes it.
unsigned int DecodedSentence(C_NMEA_EncodeDecode& decoder, ExactCopy frame, std::size_t type, U_EcdDcdData& record) {
  unsigned char text[1024];
  unsigned short length = 0;
  const unsigned int result = C_NMEA_EncodeDecode::MakeDecodable(frame.Data(), frame.Size(), text, length);
  if (result != 0) return result;
  return decoder.Decode(text, length, static_cast<C_RawDataMessage::eNMEA0183Messages>(type), record);
}

TEST(SessionDecoding, PositionsAreThoseOfTheTrack) {
  C_NMEA_EncodeDecode decoder;
  U_EcdDcdData record;
  int decoded = 0;
  for (const nlohmann::json& numbers : Manifest().at("numbers")) {
    if (numbers.at("message") != "GGA") continue;
    ASSERT_EQ(DecodedSentence(decoder, FrameAt(numbers.at("offset"), numbers.at("length")), C_RawDataMessage::eNmeaGGA,
                              record),
              0U)
        << numbers;
    ExpectNumbers(numbers, record.gga, kGgaRows);
    ++decoded;
  }
  EXPECT_GT(decoded, 300);
}

// Those without a decoder are not of the eight kinds (2).
TEST(SessionDecoding, SentencesDecodeOrAreOfNoKnownKind) {
  C_NMEA_EncodeDecode decoder;
  U_EcdDcdData record;
  for (const t_Row& row : ExpectedFrames()) {
    if (row[2] != C_RawDataMessage::eNMEA0183) continue;
    const std::string name = SessionBytes().substr(row[0] + 3, 3);
    const bool isDecodable = std::string("GGA GLL GNS GSA GSV RMC VTG ZDA").find(name) != std::string::npos;
    EXPECT_EQ(DecodedSentence(decoder, FrameAt(row[0], row[1]), row[3], record), isDecodable ? 0U : 2U)
        << SessionBytes().substr(row[0], row[1]);
  }
}

bool IsDecodable(std::size_t block) {
  constexpr std::size_t kDecodable[] = {1, 2, 3, 5, 16, 25, 34, 35, 36, 44, 45, 65, 66, 76, 93, 94, 95, 122, 180, 209};
  return std::find(std::begin(kDecodable), std::end(kDecodable), block) != std::end(kDecodable);
}

TEST(SessionDecoding, BlocksDecodeOrAreUnknown) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(kWeek, kStart, ALGO::GNSS_GPS);
  const auto record = std::make_unique<U_VelaBIN_EcdDcdData>();
  for (const t_Row& row : ExpectedFrames()) {
    if (row[2] != C_RawDataMessage::eVelaBIN) continue;
    ExactCopy frame = FrameAt(row[0], row[1]);
    unsigned short number = 0;
    EXPECT_EQ(decoder.Decode(frame.Data(), frame.Size(), number, *record), IsDecodable(row[3]) ? 0U : 5U)
        << "block " << row[3] << " at " << row[0];
  }
}

// Packed sentences are not text (6); a sentence delivered without its checksum does not pass the decoder's own test
// (4).
TEST(SessionDecoding, OwnSentencesDecode) {
  C_VelaPKVN_Decode decoder;
  U_VelaPKVN_EcdDcdData record;
  for (const t_Row& row : ExpectedFrames()) {
    if (row[2] != C_RawDataMessage::ePKVN) continue;
    ExactCopy frame = FrameAt(row[0], row[1]);
    const bool hasSum = frame.Data()[row[1] - 3] == '*';
    auto type = VelaPKVN_Messages::ePkvnUnknown;
    EXPECT_EQ(decoder.Decode(frame.Data(), frame.Size(), type, record), hasSum ? 0U : 4U)
        << SessionBytes().substr(row[0], row[1]);
    EXPECT_EQ(type, row[3]);
  }
}

TEST(SessionDecoding, DiagnosticsDecode) {
  C_VelaRD_Decode decoder;
  U_VelaRD_EcdDcdData record;
  for (const t_Row& row : ExpectedFrames()) {
    if (row[2] != C_RawDataMessage::eVelaRD) continue;
    ExactCopy frame = FrameAt(row[0], row[1]);
    unsigned short version = 0;
    EXPECT_EQ(decoder.Decode(frame.Data(), frame.Size(), version, record), 0U) << SessionBytes().substr(row[0], row[1]);
  }
}

}  // namespace
