#include "apps/velagnss/sinks/database/DatabaseSink.h"

#include <fmt/format.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/sinks/database/RowStore.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using t_Clock = std::chrono::steady_clock;

constexpr std::size_t kMostUncommitted = 50'000;  // units
constexpr std::size_t kMostUncommittedBytes = 64 << 20;
constexpr auto kLongestUncommitted = 1s;
constexpr auto kQuiet = 200ms;  // nothing has come for so long: what is there is committed

// Bytes of lines that may wait. A live source goes on while another program holds a lock; a file waits.
constexpr std::size_t kMostWaiting = 64 << 20;
constexpr std::size_t kFull = 4 << 20;

// The database has a thread of its own, because the disk, or another program's lock, may hold it up.
class C_DatabaseSink : public C_Sink {
 public:
  C_DatabaseSink(std::string file, bool canWait, C_SinkThread& messages)
      : m_file(std::move(file)), m_canWait(canWait), m_messages(messages) {}
  ~C_DatabaseSink() override;
  C_DatabaseSink(const C_DatabaseSink&) = delete;
  C_DatabaseSink& operator=(const C_DatabaseSink&) = delete;

  const std::string& Name() const override { return m_file; }
  bool Open() override;
  void Put(const t_Piece& piece) override;
  bool IsFull() const override { return m_canWait && m_waitingBytes > kFull; }
  bool HasEnded() const override { return m_hasFailed; }
  void Finish() override;
  bool IsFinished() const override { return m_isFinished || m_hasFailed; }
  bool HasFailed() const override { return m_hasFailed || m_dropped > 0; }
  S_SinkTotals Totals() const override;

 private:
  void Work();
  void StoreAll();
  t_Piece Next();
  void Store(const t_Piece& piece);
  void CommitIfDue();
  void Commit();
  void Fail(const char* why);

  const std::string m_file;
  const bool m_canWait;
  C_SinkThread& m_messages;
  std::unique_ptr<C_RowStore> m_store;

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<t_Piece> m_pieces;
  bool m_isFinishing = false;
  std::atomic<bool> m_isStopping = false;

  std::atomic<std::size_t> m_waitingBytes = 0;  // that are not stored yet
  std::atomic<std::uint64_t> m_waiting = 0;     // units that are not committed yet
  std::atomic<std::uint64_t> m_units = 0;       // committed
  std::atomic<std::uint64_t> m_bytes = 0;       // likewise
  std::atomic<std::uint64_t> m_dropped = 0;     // units
  std::atomic<bool> m_hasFailed = false;
  std::atomic<bool> m_isFinished = false;

  std::size_t m_uncommitted = 0;  // units
  std::size_t m_uncommittedBytes = 0;
  t_Clock::time_point m_firstUncommitted;
  std::thread m_thread;  // last: it uses the others
};

// What is stored by now is committed; what waits is given up.
C_DatabaseSink::~C_DatabaseSink() {
  m_isStopping = true;
  { const std::lock_guard lock(m_mutex); }
  m_changed.notify_all();
  if (m_thread.joinable()) m_thread.join();
}

bool C_DatabaseSink::Open() try {
  m_store = std::make_unique<C_RowStore>(m_file, m_isStopping, !m_canWait);
  m_thread = StartWithoutSignals([this] { Work(); });
  return true;
} catch (const C_SqliteError& error) {
  ReportError(fmt::format("{}: {}", m_file, error.what()));
  return false;
}

void C_DatabaseSink::Put(const t_Piece& piece) {
  if (m_hasFailed || (!m_canWait && m_waitingBytes + piece->bytes.size() > kMostWaiting)) {
    if (m_dropped == 0 && !m_hasFailed)
      ReportWarning(fmt::format("{}: does not keep up with the source, units are dropped", m_file));
    m_dropped += piece->ends.size();
    return;
  }
  m_waitingBytes += piece->bytes.size();
  m_waiting += piece->ends.size();
  {
    const std::lock_guard lock(m_mutex);
    m_pieces.push_back(piece);
  }
  m_changed.notify_all();
}

void C_DatabaseSink::Finish() {
  {
    const std::lock_guard lock(m_mutex);
    m_isFinishing = true;
  }
  m_changed.notify_all();
}

S_SinkTotals C_DatabaseSink::Totals() const {
  S_SinkTotals totals;
  totals.units = m_units;
  totals.bytes = m_bytes;
  totals.dropped = m_dropped;
  totals.waiting = m_waiting;
  return totals;
}

void C_DatabaseSink::Work() {
  try {
    StoreAll();
    m_messages.Say(S_SinkMessage::eWeight::Detail,
                   fmt::format("{}: {} written, {} there already", m_file, Counted(m_store->RowsNew(), "row"),
                               m_store->RowsKnown()));
    m_store.reset();
  } catch (const std::exception& error) {
    Fail(error.what());
  }
  m_isFinished = true;
  m_messages.Wake();
}

void C_DatabaseSink::StoreAll() {
  while (const t_Piece piece = Next()) Store(piece);
  Commit();
}

// Null: there will be no more.
t_Piece C_DatabaseSink::Next() {
  const auto mayGoOn = [this] { return !m_pieces.empty() || m_isFinishing || m_isStopping; };
  std::unique_lock lock(m_mutex);
  if (!m_changed.wait_for(lock, kQuiet, mayGoOn)) {
    lock.unlock();
    Commit();
    lock.lock();
    m_changed.wait(lock, mayGoOn);
  }
  if (m_isStopping || m_pieces.empty()) return nullptr;
  t_Piece piece = std::move(m_pieces.front());
  m_pieces.pop_front();
  return piece;
}

void C_DatabaseSink::Store(const t_Piece& piece) {
  if (m_uncommitted == 0) m_firstUncommitted = t_Clock::now();
  m_store->Put(*piece);
  m_uncommitted += piece->ends.size();
  m_uncommittedBytes += piece->bytes.size();
  const std::size_t before = m_waitingBytes.fetch_sub(piece->bytes.size());
  const std::size_t after = before - piece->bytes.size();
  if (before > kFull / 2 && after <= kFull / 2) m_messages.Wake();
  CommitIfDue();
}

void C_DatabaseSink::CommitIfDue() {
  const bool isMuch = m_uncommitted >= kMostUncommitted || m_uncommittedBytes >= kMostUncommittedBytes;
  if (isMuch || t_Clock::now() - m_firstUncommitted >= kLongestUncommitted) Commit();
}

void C_DatabaseSink::Commit() {
  m_store->Commit();
  m_units += m_uncommitted;
  m_bytes += m_uncommittedBytes;
  m_waiting -= m_uncommitted;
  m_uncommitted = m_uncommittedBytes = 0;
}

// The transaction is rolled back, and the connection closed: other programs need not wait for it.
void C_DatabaseSink::Fail(const char* why) {
  m_hasFailed = true;
  m_messages.Say(S_SinkMessage::eWeight::Error, fmt::format("{}: {}", m_file, why));
  m_store.reset();
}

}  // namespace

std::unique_ptr<C_Sink> MakeDatabaseSink(const std::string& file, bool canWait, C_SinkThread& messages) {
  return std::make_unique<C_DatabaseSink>(file, canWait, messages);
}

}  // namespace Host
