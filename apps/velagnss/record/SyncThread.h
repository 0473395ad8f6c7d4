// Waits for the disk so that nobody else has to: memory cards can stop for seconds.
#ifndef VELAGNSS_APPS_SYNC_THREAD_H
#define VELAGNSS_APPS_SYNC_THREAD_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "apps/velagnss/record/RecordFile.h"

namespace Host {

class C_SyncThread {
 public:
  static constexpr std::chrono::seconds kEvery{10};  // what a power cut costs at most

  explicit C_SyncThread(std::chrono::milliseconds every = kEvery);
  ~C_SyncThread();  // after all that there is to do
  C_SyncThread(const C_SyncThread&) = delete;
  C_SyncThread& operator=(const C_SyncThread&) = delete;

  // The file is synchronized from time to time until it is settled.
  void Watch(std::shared_ptr<C_RecordFile> file);

  // Nobody writes to the file any more.
  void Settle(std::shared_ptr<C_RecordFile> file);

  // Waits until all files that were to be settled are.
  void Drain();

  // What failed since the last call; file and error number.
  struct S_Failure {
    std::string file;
    int error;
  };
  std::vector<S_Failure> TakeFailures();
  bool HasFailed() const { return m_hasFailed; }  // ever

 private:
  void Work();
  void Note(const C_RecordFile& file, int error);

  const std::chrono::milliseconds m_every;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<std::shared_ptr<C_RecordFile>> m_open;
  std::vector<std::shared_ptr<C_RecordFile>> m_complete;  // to be settled
  std::vector<S_Failure> m_failures;
  std::atomic<bool> m_hasFailed = false;
  bool m_isBusy = false;
  bool m_isEnding = false;
  std::thread m_thread;  // last: it uses the others
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SYNC_THREAD_H
