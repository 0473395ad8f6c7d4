#include "apps/velagnss/record/SyncThread.h"

#include <utility>

#include "apps/velagnss/os/Signals.h"

namespace Host {
C_SyncThread::C_SyncThread(std::chrono::milliseconds every)
    : m_every(every), m_thread(StartWithoutSignals([this] { Work(); })) {}

C_SyncThread::~C_SyncThread() {
  {
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void C_SyncThread::Watch(std::shared_ptr<C_RecordFile> file) {
  const std::lock_guard lock(m_mutex);
  m_open.push_back(std::move(file));
}

void C_SyncThread::Settle(std::shared_ptr<C_RecordFile> file) {
  {
    const std::lock_guard lock(m_mutex);
    std::erase(m_open, file);
    m_complete.push_back(std::move(file));
  }
  m_changed.notify_all();
}

void C_SyncThread::Drain() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_complete.empty() && !m_isBusy; });
}

std::vector<C_SyncThread::S_Failure> C_SyncThread::TakeFailures() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_failures, {});
}

void C_SyncThread::Note(const C_RecordFile& file, int error) {
  if (error == 0) return;
  const std::lock_guard lock(m_mutex);
  m_failures.push_back({file.Name(), error});
  m_hasFailed = true;
}

// Without the lock while the disk is waited for.
void C_SyncThread::Work() {
  auto next = std::chrono::steady_clock::now() + m_every;
  for (std::unique_lock lock(m_mutex); !m_isEnding || !m_complete.empty();) {
    m_changed.wait_until(lock, next, [this] { return m_isEnding || !m_complete.empty(); });
    const auto complete = std::exchange(m_complete, {});
    const bool isTime = std::chrono::steady_clock::now() >= next;
    const auto open = isTime ? m_open : decltype(m_open){};
    if (isTime) next = std::chrono::steady_clock::now() + m_every;
    m_isBusy = true;
    lock.unlock();
    for (const auto& file : complete) Note(*file, file->Settle());
    for (const auto& file : open) Note(*file, file->Sync());
    lock.lock();
    m_isBusy = false;
    m_changed.notify_all();
  }
}

}  // namespace Host
