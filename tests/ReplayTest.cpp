// Replays: the pieces and the rhythm of a recording.
#include <gmock/gmock.h>

#include <random>

#include "HostData.h"
#include "Recordings.h"
#include "Streams.h"
#include "apps/velagnss/record/ReplaySource.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class Replay : public Recordings {};

TEST_F(Replay, HasThePiecesOfTheRecording) {
  for (const bool isCompressed : {false, true}) {
    Host::S_RecorderOptions options = Options(isCompressed ? "x.gz" : "x.bin");
    options.isCompressed = isCompressed;
    Begin(options);
    std::mt19937 random(3);
    std::vector<std::pair<std::string, std::chrono::microseconds>> sent;
    const Host::t_RecordTime begin = m_now.utc;
    for (int i = 0; i < 200; ++i) {
      sent.emplace_back(std::string(1 + random() % 300, static_cast<char>(i)), m_now.utc - begin);
      Send(sent.back().first);
      m_recorder->BeforeWait();
      Pass(std::chrono::microseconds(10'000 + random() % 5'000'000));
    }
    End();
    const auto pieces = PiecesOf(options.pattern);
    ASSERT_EQ(pieces.size(), sent.size());
    for (std::size_t i = 0; i < sent.size(); ++i) {
      EXPECT_EQ(std::string(pieces[i].bytes.begin(), pieces[i].bytes.end()), sent[i].first) << i;
      EXPECT_EQ(pieces[i].at, sent[i].second) << i;
      EXPECT_EQ(pieces[i].arrival, begin + sent[i].second) << i;
    }
    EXPECT_EQ(PiecesOf(options.pattern, 1ms).back().at, 199ms);
  }
}

std::string Zda(const char* time) { return Sentence(std::string("GPZDA,") + time + ",18,05,2024,00,00"); }

TEST_F(Replay, GoesByTheTimesOfTheDataWithoutAnIndex) {
  const std::string first = "noise" + Zda("115959.5") + Sentence("GPTXT,01,01,02,on");
  const std::string second = Zda("120001") + Zda("120001");
  Write("x", first + second + Zda("120000") + Zda("120101"));
  const auto pieces = PiecesOf(m_directory / "x");
  ASSERT_EQ(pieces.size(), 5u);
  const auto at = [&](std::size_t i) { return pieces[i].at; };
  const auto bytes = [&](std::size_t i) { return std::string(pieces[i].bytes.begin(), pieces[i].bytes.end()); };
  EXPECT_EQ(bytes(0) + bytes(1), first);
  EXPECT_EQ(bytes(2), second);
  EXPECT_THAT((std::vector{at(0), at(1), at(2), at(3), at(4)}), ElementsAre(0s, 0s, 1500ms, 1500ms, 62500ms));
}

TEST_F(Replay, OfTheSessionIsTheSession) {
  EXPECT_EQ(Run("velagnss replay --speed max $S | cmp - $S").code, 0);
  EXPECT_EQ(Run("gzip -c $S > s.gz; velagnss replay --speed max -o out s.gz && cmp out $S").code, 0);
  const Outcome loop =
      Run("velagnss replay --speed max --loop $S | head -c 1000000 | tail -c +372292 | cmp -n 372291 - $S");
  EXPECT_EQ(loop.code, 0);
  EXPECT_THAT(loop.messages,
              HasSubstr("session.bin: begins again; from here on the times in the data have been before"));
  EXPECT_EQ(Run("velagnss replay missing").code, 3);
  EXPECT_EQ(Run("velagnss replay --speed 0 $S").code, 2);
}

// Two seconds a hundred times as fast take at least 20 ms, and the first piece comes before them.
TEST_F(Replay, KeepsTheRhythm) {
  Write("x", Zda("120000") + Zda("120002"));
  const auto begin = std::chrono::steady_clock::now();
  Host::C_ReplaySource source({{(m_directory / "x").native()}, 100, false, {}});
  std::vector<unsigned char> buffer(1 << 16);
  Host::S_Chunk chunk;
  std::vector<std::pair<std::size_t, bool>> pieces;  // size; whether it came late
  for (auto read = Host::C_ByteSource::eRead::Nothing; read != Host::C_ByteSource::eRead::End;) {
    read = source.Read(buffer, chunk);
    if (read == Host::C_ByteSource::eRead::Bytes)
      pieces.emplace_back(chunk.bytes.size(), std::chrono::steady_clock::now() - begin >= 20ms);
  }
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_THAT(pieces[1], testing::Pair(Zda("120002").size(), true));
}

}  // namespace
