// The sample session read as a careful host reads it, against the manifest that its generator wrote without the
// library. What the messages decode to is compared where the record decoder and the host program show it.
#include <array>
#include <nlohmann/json.hpp>

#include "tests/CarefulHost.h"
#include "tests/Cases.h"
#include "tests/HostData.h"

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

}  // namespace
