#include "apps/velagnss/sinks/nats/NatsSink.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "apps/velagnss/input/live/RetryPauses.h"
#include "apps/velagnss/net/nats/NatsAddress.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/nats/NatsPublisher.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eWeight = S_SinkMessage::eWeight;
using std::chrono::milliseconds;

constexpr std::size_t kUsualWindow = 4'096;
constexpr std::size_t kUsualDuplicates = 120;  // s, as servers have it

// Acknowledgments come within this time as a rule; a piece that comes meanwhile waits for the rest of it at most.
constexpr auto kAnswerWait = 10ms;

// A server that is started again, and a stream that was full, are found soon.
constexpr S_RetryRules kRetryRules = {.longest = 10s, .firstRefused = 1s, .longestRefused = 60s};

S_PublisherOptions OptionsOf(const S_SinkMaking& making) {
  const S_Address& address = making.address;
  const std::string prefix = NatsOption(address, "prefix");
  return {.prefix = prefix.empty() ? "gnss" : prefix,
          .session = NatsOption(address, "session"),
          .window = NumberOption(address, "window", kUsualWindow),
          .creates = NatsOption(address, "create") != "no",
          .resumes = making.isInOrder && NatsOption(address, "resume") != "no",
          .duplicates = static_cast<std::int64_t>(NumberOption(address, "duplicates", kUsualDuplicates)),
          .replicas = static_cast<std::int64_t>(NumberOption(address, "replicas", 1)),
          .credentials = making.credentials,
          .stall = making.limits.stall};
}

C_StationNames StationsOf(const S_Address& address) {
  const std::string pattern = NatsOption(address, "station");
  return C_StationNames(pattern.empty() ? "{input}" : pattern);
}

// Connecting and publishing may wait for the server, so they have a thread of their own. What waits for it is in a
// queue that the sink thread fills.
class C_NatsSink : public C_NetSink {
 public:
  explicit C_NatsSink(const S_SinkMaking& making)
      : C_NetSink(making.thread, making.address.Shown(), making.limits),
        m_address(making.address),
        m_options(OptionsOf(making)),
        m_stations(StationsOf(making.address)),
        m_queue(making.limits, Counters()) {}
  ~C_NatsSink() override {
    m_await.Stop();
    if (m_thread.joinable()) m_thread.join();
  }
  C_NatsSink(const C_NatsSink&) = delete;
  C_NatsSink& operator=(const C_NatsSink&) = delete;

  bool HasEnded() const override { return m_hasFailed; }
  bool HasFailed() const override { return m_hasFailed || (Limits().policy == ePolicy::Wait && m_hasDropped); }

 protected:
  bool Prepare() override;
  void Begin() override {
    m_thread = std::thread([this] { KeepPublishing(); });
  }
  void OnPiece(const t_Piece& piece) override;
  void OnTick(t_Clock::time_point) override {}
  void BeginFinish() override;

 private:
  // On the publishing thread.
  void KeepPublishing();
  t_NatsResult Publish(C_NatsPublisher& publisher);
  bool TakePiece(C_NatsPublisher& publisher);
  void WaitForPiece();
  void ReportFailure(const S_NatsFailure& failure, milliseconds pause, bool wasConnected);
  void SayPresent(const C_NatsPublisher& publisher);

  const S_Address m_address;
  const S_PublisherOptions m_options;
  C_StationNames m_stations;

  std::mutex m_mutex;
  C_SendQueue m_queue;  // with the mutex only, and so is the step from there to what the publisher has
  std::atomic<bool> m_hasPiece = false;
  std::atomic<bool> m_mustFinish = false;
  std::atomic<bool> m_hasFailed = false;
  std::atomic<bool> m_hasDropped = false;
  C_Await m_await;
  std::thread m_thread;
};

bool C_NatsSink::Prepare() {
  const std::string table = NatsOption(m_address, "stations");
  const std::string error = table.empty() ? std::string() : m_stations.ReadTable(table);
  if (!error.empty()) ReportError(fmt::format("{}: {}", Name(), error));
  return error.empty();
}

void C_NatsSink::OnPiece(const t_Piece& piece) {
  const std::lock_guard lock(m_mutex);
  if (m_hasFailed) return m_queue.Clear();  // nobody will ever take what waits
  if (!m_queue.Add(piece, t_Clock::now())) m_queue.Clear();
  if (!m_hasPiece.exchange(true)) m_await.Post([] {});
}

void C_NatsSink::BeginFinish() {
  const std::lock_guard lock(m_mutex);
  m_mustFinish = true;
  const bool isDone = m_hasFailed || Counters()->waiting == 0;
  if (isDone) m_await.Stop();
  m_await.Post([] {});
  if (isDone) NoteFinished();
}

void C_NatsSink::KeepPublishing() try {
  C_NatsPublisher publisher(m_address, m_options, m_stations, Counters(),
                            [this](const std::string& text) { Say(eWeight::Notice, text); });
  C_RetryPauses pauses(kRetryRules);
  bool wasConnected = false;
  while (!m_await.IsStopping()) {
    const auto begin = t_Clock::now();
    t_NatsResult result = publisher.Open();
    if (!result) {
      wasConnected = true;
      SayConnected(publisher.Peer());
      ++Counters()->accepted;
      Counters()->readers = 1;
      result = Publish(publisher);
      Counters()->readers = 0;
    }
    publisher.Close();
    if (!result) break;
    const auto kind =
        result->kind == S_NatsFailure::eKind::Lost ? S_LinkFailure::eKind::Lost : S_LinkFailure::eKind::Refused;
    const auto goodFor = std::chrono::duration_cast<milliseconds>(t_Clock::now() - begin);
    const milliseconds pause = pauses.Next({kind, result->text}, goodFor);
    ReportFailure(*result, pause, wasConnected);
    if (m_hasFailed) return;
    m_await.Sleep(pause);
  }
  SayPresent(publisher);
  Thread().Post([this] { NoteFinished(); });
} catch (const std::exception& error) {  // what the system refuses: memory, threads
  ReportFailure({S_NatsFailure::eKind::Refused, error.what()}, {}, false);
}

// Until the connection fails; none when there is nothing more to do.
t_NatsResult C_NatsSink::Publish(C_NatsPublisher& publisher) {
  while (!m_await.IsStopping()) {
    const bool hasPiece = publisher.WantsPiece() && TakePiece(publisher);
    if (!hasPiece && publisher.IsIdle()) {
      if (m_mustFinish) return std::nullopt;
      WaitForPiece();
      continue;
    }
    const bool mayTakeMore = publisher.WantsPiece() && m_hasPiece;
    if (t_NatsResult result = publisher.Pump(mayTakeMore ? 0ms : kAnswerWait)) return result;
    m_hasDropped = publisher.NumTooLong() > 0;
  }
  return std::nullopt;
}

bool C_NatsSink::TakePiece(C_NatsPublisher& publisher) {
  const std::lock_guard lock(m_mutex);
  const t_Piece piece = m_queue.Take(t_Clock::now());
  m_hasPiece = piece != nullptr;
  if (piece == nullptr) return false;
  publisher.Add(piece);
  Counters()->waiting += piece->ends.size();
  if (Limits().policy == ePolicy::Wait) Thread().Wake();
  return true;
}

// A lost connection is noticed by the next message.
void C_NatsSink::WaitForPiece() {
  m_await.Until(C_Await::t_Time::max(), [this] { return m_hasPiece || m_mustFinish; });
}

// What is wrong before anything was right is a mistake in the address or in the set-up of the server: waiting for it to
// go away would hide it.
void C_NatsSink::ReportFailure(const S_NatsFailure& failure, milliseconds pause, bool wasConnected) {
  if (wasConnected || failure.kind == S_NatsFailure::eKind::Lost) return SayFailure(failure.text, pause);
  Say(eWeight::Error, failure.text);  // before anybody learns that there is nothing to wait for
  {
    const std::lock_guard lock(m_mutex);
    m_hasFailed = true;
    m_queue.Clear();
  }
  Thread().Post([this] { NoteFinished(); });
}

void C_NatsSink::SayPresent(const C_NatsPublisher& publisher) {
  if (publisher.NumPresent() == 0) return;
  Say(eWeight::Notice,
      fmt::format("{} not stored again: the stream has them", Counted(publisher.NumPresent(), "unit")));
}

bool IsText(const std::string& value) { return !value.empty(); }
bool IsNo(const std::string& value) { return value == "no"; }

// Tokens between dots.
bool IsPrefix(const std::string& value) {
  if (value.starts_with('.') || value.ends_with('.') || value.find("..") != std::string::npos) return false;
  std::string words = value;
  std::erase(words, '.');
  return !words.empty() && words == SubjectToken(words);
}

const auto kOptions = WithNatsOptions(std::array<S_AddressOption, 9>{{
    {"station", "a name, in which {input} is that of the input", &IsText},
    {"stations", "the name of a file", &IsText},
    {"session", "a name", &IsText},
    {"prefix", "words of letters, digits, '-' and '_' with dots between them", &IsPrefix},
    {"window", "a number of messages from 1 to 60000", &IsNumber<1, 60'000>},  // libnats queues 65536 answers
    {"create", "no", &IsNo},
    {"resume", "no", &IsNo},
    {"duplicates", "a number of seconds from 1 to 86400", &IsNumber<1, 86'400>},
    {"replicas", "a number from 1 to 5", &IsNumber<1, 5>},
}});

S_SinkKind KindOf(std::string_view scheme, std::string_view example) {
  return {NatsForm(scheme, example, kOptions),
          &MakeSinkOf<C_NatsSink>,
          eRawUse::Never,
          {.bytes = std::size_t{64} << 20, .age = 1h}};
}

}  // namespace

const S_SinkKind kNatsSink = KindOf("nats", "nats://USER@HOST:PORT/STREAM");
const S_SinkKind kNatsTlsSink = KindOf("natss", "natss://USER@HOST:PORT/STREAM");

}  // namespace Host
