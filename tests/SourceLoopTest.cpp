#include "apps/velagnss/input/SourceLoop.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <functional>

namespace {

using namespace std::chrono_literals;
using Host::S_Chunk;
using testing::ElementsAre;

// A source over a pipe whose other end the test holds.
class PipeSource : public Host::C_ByteSource {
 public:
  explicit PipeSource(std::string name) : m_name(std::move(name)) { EXPECT_EQ(::pipe(m_ends), 0); }
  ~PipeSource() override {
    Hangup();
    ::close(m_ends[0]);
  }
  PipeSource(const PipeSource&) = delete;
  PipeSource& operator=(const PipeSource&) = delete;

  void Send(std::string_view bytes) {
    EXPECT_EQ(::write(m_ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void Hangup() { ::close(std::exchange(m_ends[1], -1)); }

  const std::string& Name() const override { return m_name; }
  int Descriptor() const override { return m_ends[0]; }
  std::optional<std::chrono::milliseconds> QuietTime() const override { return quietTime; }
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override {
    const ssize_t count = ::read(m_ends[0], buffer.data(), buffer.size());
    chunk = {buffer.first(static_cast<std::size_t>(std::max<ssize_t>(count, 0))), S_Chunk::t_Clock::now()};
    return count > 0 ? eRead::Bytes : count == 0 ? eRead::End : eRead::Failed;
  }

  std::optional<std::chrono::milliseconds> quietTime;

 private:
  std::string m_name;
  int m_ends[2] = {-1, -1};
};

// Writes a log that several jobs share, and calls the test back.
struct Job : Host::C_StreamJob {
  explicit Job(std::vector<std::string>& sharedLog) : log(sharedLog) {}

  void BeginInput(const std::string& given) override { log.push_back((name = given) + " begins"); }
  void Feed(const S_Chunk& chunk) override {
    log.push_back(name + " " + std::string(chunk.bytes.begin(), chunk.bytes.end()));
    arrival = chunk.arrival;
    if (onFeed) onFeed();
  }
  void EndInput() override { log.push_back(name + " ends"); }
  bool WantsMore() const override { return wantsMore; }
  void OnQuiet() override {
    log.push_back(name + " is quiet");
    if (onQuiet) onQuiet();
  }

  std::vector<std::string>& log;
  std::string name;
  S_Chunk::t_Clock::time_point arrival;
  bool wantsMore = true;
  std::function<void()> onFeed;
  std::function<void()> onQuiet;
};

// A source that waits does not hold the others up, and a job that has enough leaves its source alone.
TEST(SourceLoop, ReadsSourcesAsTheyHaveSomething) {
  std::vector<std::string> log;
  PipeSource a("a"), b("b");
  Job jobA(log), jobB(log);
  Host::C_SourceLoop loop(16);
  b.quietTime = 1ms;
  b.Send("1");
  jobB.onFeed = [&] { a.Send("2"); };
  jobA.onFeed = [&] { jobA.wantsMore = false; };
  jobB.onQuiet = [&] { b.Hangup(); };
  const auto before = S_Chunk::t_Clock::now();
  const Host::S_SourceAndJob streams[] = {{a, jobA}, {b, jobB}};
  EXPECT_TRUE(loop.Run(streams));
  EXPECT_THAT(log, ElementsAre("a begins", "b begins", "b 1", "a 2", "a ends", "b is quiet", "b ends"));
  EXPECT_LE(before, jobB.arrival);
  EXPECT_LE(jobB.arrival, jobA.arrival);
  EXPECT_LE(jobA.arrival, S_Chunk::t_Clock::now());
}

}  // namespace
