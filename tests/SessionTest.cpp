// The sample session read as a careful host reads it, against the manifest that its generator wrote without the
// library. What the messages hold is compared where the host program shows it.
#include <algorithm>
#include <array>
#include <memory>
#include <nlohmann/json.hpp>

#include "binproto/VelaBin_Decode.h"
#include "tests/CarefulHost.h"
#include "tests/Cases.h"
#include "tests/HostData.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace {

const std::string kSession = ReadHostFile("samples/session.bin");
const nlohmann::json kManifest = nlohmann::json::parse(ReadHostFile("samples/session.json"));

using t_Row = std::array<std::size_t, 4>;  // offset, length, protocol, message type
const std::vector<t_Row> kFrames = kManifest.at("frameList").get<std::vector<t_Row>>();

struct S_PieceCase {
  const char* name;
  std::size_t size;
};

constexpr S_PieceCase kPieces[] = {
    {"Bytes", 1}, {"Sevens", 7}, {"Prime251", 251}, {"Prime1021", 1021}, {"AsMuchAsFits", 65535},
};

TEST_ROWS(Session, DeliversExactlyTheGoodFrames, kPieces, piece) {
  CarefulHost host;
  host.Feed(kSession, piece.size);
  EXPECT_TRUE(host.isInOrder);
  ASSERT_EQ(host.found.size(), kFrames.size());
  for (std::size_t i = 0; i < kFrames.size(); ++i) {
    const auto [from, protocol, type, bytes] = host.found[i];
    ASSERT_EQ((t_Row{from, bytes.size(), protocol, type}), kFrames[i]);
    ASSERT_EQ(bytes, kSession.substr(from, bytes.size()));
  }
  EXPECT_EQ(host.Counters().bytesAccepted, kManifest.at("bytesAccepted"));
  EXPECT_EQ(host.Counters().bytesDiscarded, kManifest.at("bytesDiscarded"));
  EXPECT_EQ(host.Queued(), 0U);
  for (const nlohmann::json& fault : kManifest.at("faults")) {
    const unsigned int refusal = host.refusals[fault.at("offset")];
    EXPECT_EQ(refusal == 0 ? 1 : refusal, fault.at("result")) << fault.at("what");
  }
}

// --- Decoding: the results for all frames of a protocol ---

struct S_DecodingCase {
  const char* name;
  C_RawDataMessage::eProtocols protocol;
  unsigned int (*decode)(ExactCopy& frame, std::size_t type);
  unsigned int (*expected)(const std::string& frame, std::size_t type);
};

// Through `MakeDecodable`, as a host decodes it.
unsigned int DecodeNmea(ExactCopy& frame, std::size_t type) {
  C_NMEA_EncodeDecode decoder;
  U_EcdDcdData record;
  unsigned char text[1024];
  unsigned short length = 0;
  const unsigned int result = C_NMEA_EncodeDecode::MakeDecodable(frame.Data(), frame.Size(), text, length);
  if (result != 0) return result;
  return decoder.Decode(text, length, static_cast<C_RawDataMessage::eNMEA0183Messages>(type), record);
}

unsigned int DecodeBin(ExactCopy& frame, std::size_t type) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(2314, 604638.0, ALGO::GNSS_GPS);  // the session's start
  const auto record = std::make_unique<U_VelaBIN_EcdDcdData>();
  unsigned short number = 0;
  const unsigned int result = decoder.Decode(frame.Data(), frame.Size(), number, *record);
  EXPECT_EQ(number, type);
  return result;
}

unsigned int DecodePkvn(ExactCopy& frame, std::size_t type) {
  C_VelaPKVN_Decode decoder;
  U_VelaPKVN_EcdDcdData record;
  auto decoded = VelaPKVN_Messages::ePkvnUnknown;
  const unsigned int result = decoder.Decode(frame.Data(), frame.Size(), decoded, record);
  EXPECT_EQ(decoded, type);
  return result;
}

unsigned int DecodeRd(ExactCopy& frame, std::size_t type) {
  C_VelaRD_Decode decoder;
  U_VelaRD_EcdDcdData record;
  unsigned short version = 0;
  const unsigned int result = decoder.Decode(frame.Data(), frame.Size(), version, record);
  EXPECT_EQ(version, type);
  return result;
}

unsigned int ExpectedOfBin(const std::string&, std::size_t type) {
  constexpr std::size_t kDecodable[] = {1, 2, 3, 5, 16, 25, 34, 35, 36, 44, 45, 65, 66, 76, 93, 94, 95, 122, 180, 209};
  return std::find(std::begin(kDecodable), std::end(kDecodable), type) != std::end(kDecodable) ? 0 : 5;
}

// Of NMEA sentences eight kinds have a decoder. A sentence delivered without its checksum does not pass the decoder's
// own test.
const S_DecodingCase kDecodings[] = {
    {"Nmea", C_RawDataMessage::eNMEA0183, DecodeNmea,
     [](const std::string& frame, std::size_t) {
       constexpr std::string_view kDecodable = "GGA GLL GNS GSA GSV RMC VTG ZDA";
       return kDecodable.find(frame.substr(3, 3)) != std::string_view::npos ? 0U : 2U;
     }},
    {"Bin", C_RawDataMessage::eVelaBIN, DecodeBin, ExpectedOfBin},
    {"Pkvn", C_RawDataMessage::ePKVN, DecodePkvn,
     [](const std::string& frame, std::size_t) { return frame[frame.size() - 3] == '*' ? 0U : 4U; }},
    {"Rd", C_RawDataMessage::eVelaRD, DecodeRd, [](const std::string&, std::size_t) { return 0U; }},
};

TEST_ROWS(SessionDecoding, GivesTheStatedResults, kDecodings, c) {
  for (const auto& [offset, length, protocol, type] : kFrames) {
    if (protocol != c.protocol) continue;
    const std::string bytes = kSession.substr(offset, length);
    ExactCopy frame(bytes);
    EXPECT_EQ(c.decode(frame, type), c.expected(bytes, type)) << bytes;
  }
}

}  // namespace
