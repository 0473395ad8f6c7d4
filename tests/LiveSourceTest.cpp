#include "apps/velagnss/input/live/LiveSource.h"

#include <gmock/gmock.h>
#include <poll.h>

#include "apps/velagnss/input/live/RetryPauses.h"
#include "tests/Cases.h"

namespace {

using namespace std::chrono_literals;
using Host::C_ByteSource;
using Host::S_LinkFailure;
using std::chrono::milliseconds;
using testing::ElementsAre;

constexpr auto kLost = S_LinkFailure::eKind::Lost;
constexpr auto kRefused = S_LinkFailure::eKind::Refused;

// One try to open, and what comes after it.
struct S_Try {
  std::optional<S_LinkFailure> openFails;
  std::vector<std::string> pieces;
  std::optional<S_LinkFailure> readFails;  // none: silence
};

// Does what its script says, and after the end of it waits for the program to stop.
class ScriptedLink : public Host::C_Link {
 public:
  ScriptedLink(std::vector<S_Try> script, Host::C_Await& await) : m_script(std::move(script)), m_await(await) {}

  std::optional<S_LinkFailure> Open() override { return Present().openFails; }
  S_Read Read(Host::C_Await::t_Time deadline) override {
    if (m_piece < Present().pieces.size()) {
      m_read = Present().pieces[m_piece++];
      return {{reinterpret_cast<const unsigned char*>(m_read.data()), m_read.size()}, {}};
    }
    if (Present().readFails) return {{}, Present().readFails};
    m_await.Until(deadline, [] { return false; });
    return {};
  }
  void Close() override {
    ++m_try;
    m_piece = 0;
  }
  std::string Peer() const override { return "the device"; }
  Host::S_RetryRules RetryRules() const override { return {1ms, 2ms, 3ms, 4ms, 1h, {}}; }

 private:
  const S_Try& Present() const { return m_try < m_script.size() ? m_script[m_try] : m_silence; }

  std::vector<S_Try> m_script;
  S_Try m_silence;
  Host::C_Await& m_await;
  std::size_t m_try = 0;
  std::size_t m_piece = 0;
  std::string m_read;
};

Host::C_LiveSource::t_MakeLink Scripted(std::vector<S_Try> script) {
  return [script](Host::C_Await& await) { return std::make_unique<ScriptedLink>(script, await); };
}

// Everything that the source has until a change of the state `last`, bytes as they are and changes as "<words>".
std::string ReadUntil(C_ByteSource& source, Host::S_LinkChange::eState last) {
  constexpr const char* kStates[] = {"connecting", "connected", "lost", "refused", "failed"};
  std::vector<unsigned char> buffer(Host::C_ChunkQueue::kMaxPiece);
  std::string all;
  while (true) {
    pollfd waiting{source.Descriptor(), POLLIN, 0};
    if (::poll(&waiting, 1, 10'000) != 1) return all + "<silence>";
    Host::S_Chunk chunk;
    const C_ByteSource::eRead read = source.Read(buffer, chunk);
    if (read == C_ByteSource::eRead::Bytes) all.append(chunk.bytes.begin(), chunk.bytes.end());
    EXPECT_TRUE(read != C_ByteSource::eRead::Bytes || chunk.isLive);
    if (read != C_ByteSource::eRead::Change) continue;
    const Host::S_LinkChange& change = source.Change();
    all += std::string("<") + kStates[static_cast<std::size_t>(change.state)] + (change.text.empty() ? "" : " ") +
           change.text + (change.failures > 0 ? " " + std::to_string(change.failures) : "") + ">";
    if (change.state == last) return all;
  }
}

TEST(LiveSource, ConnectsAgainAndKeepsTheOrderOfBytesAndChanges) {
  Host::S_LiveOptions options;
  options.maxTries = 4;
  Host::C_LiveSource source("x", options,
                            Scripted({{S_LinkFailure{kLost, "away", {}}, {}, {}},
                                      {{}, {"ab", "c"}, S_LinkFailure{kLost, "gone", {}}},
                                      {S_LinkFailure{kRefused, "no", {}}, {}, {}},
                                      {{}, {"d"}, S_LinkFailure{kLost, "gone", {}}}}));
  EXPECT_EQ(ReadUntil(source, Host::S_LinkChange::eState::Failed),
            "<connecting><lost away 1><connecting 1><connected the device 1>abc<lost gone 2>"
            "<connecting 2><refused no 3><connecting 3><connected the device 3>d<failed gone 4>");
}

TEST(LiveSource, OpensASilentLinkAnewAndGivesUpWhatIsOfNoUse) {
  Host::S_LiveOptions options;
  options.idleTimeout = 20ms;
  Host::C_LiveSource source(
      "x", options, Scripted({{{}, {"a"}, {}}, {S_LinkFailure{S_LinkFailure::eKind::Final, "never", {}}, {}, {}}}));
  EXPECT_EQ(ReadUntil(source, Host::S_LinkChange::eState::Failed),
            "<connecting><connected the device>a<lost no data for 0.02 s 1><connecting 1><failed never 2>");
}

// The queue is bounded: a source ahead of its reader waits, and still stops at once.
TEST(LiveSource, WaitsForAReaderThatIsBehind) {
  const std::string megabyte(1 << 20, 'x');
  Host::C_LiveSource source("x", {},
                            Scripted({{{}, std::vector<std::string>(8, megabyte), S_LinkFailure{kLost, "gone", {}}}}));
  const std::string all = ReadUntil(source, Host::S_LinkChange::eState::Lost);
  EXPECT_EQ(std::count(all.begin(), all.end(), 'x'), 8 << 20);
  Host::C_LiveSource unread("x", {}, Scripted({{{}, std::vector<std::string>(8, megabyte), {}}}));
}

struct S_PauseRow {
  const char* name;
  S_LinkFailure failure;
  milliseconds goodFor;      // before each
  std::vector<int> seconds;  // least pauses
};
const S_PauseRow kPauses[] = {
    {"DoublesToTheLongest", {kLost, "", {}}, 0s, {1, 2, 4, 8, 10, 10}},
    {"BeginsAgainAfterAGoodTime", {kLost, "", {}}, 60s, {1, 1, 1}},
    {"AShortGoodTimeIsNone", {kLost, "", {}}, 59s, {1, 2, 4}},
    {"RefusalsWaitLonger", {kRefused, "", {}}, 0s, {20, 40, 80, 90, 90}},
    {"TheOtherSideMayAskForMore", {kLost, "", 30s}, 0s, {30, 30}},
    {"ButNotForLess", {kRefused, "", 5s}, 0s, {20, 40}},
};

TEST_ROWS(RetryPauses, Next, kPauses, row) {
  Host::C_RetryPauses pauses({1s, 10s, 20s, 90s, 60s, {}}, 1);
  for (const int seconds : row.seconds) {
    const milliseconds pause = pauses.Next(row.failure, row.goodFor);
    EXPECT_GE(pause, std::chrono::seconds(seconds));
    EXPECT_LE(pause, milliseconds(seconds * 1500));
  }
}

TEST(RetryPauses, NoPauseIsNoFailure) {
  Host::C_RetryPauses pauses({.first = {}, .idleTimeout = {}});
  EXPECT_EQ(pauses.Next({kLost, "", {}}, 0ms), 0ms);
  EXPECT_EQ(pauses.Failures(), 0u);
  EXPECT_GE(pauses.Next({kLost, "", 5s}, 0ms), 5s);
  EXPECT_EQ(pauses.Failures(), 1u);
}

}  // namespace
