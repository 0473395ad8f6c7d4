// A live source: a link that is opened, read, and opened again whenever it is lost, on a thread of its own.
#ifndef VELAGNSS_APPS_LIVE_SOURCE_H
#define VELAGNSS_APPS_LIVE_SOURCE_H

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/input/live/ChunkQueue.h"
#include "apps/velagnss/input/live/Link.h"
#include "apps/velagnss/input/live/PositionFeed.h"

namespace Host {

// What the user has chosen for all live sources.
struct S_LiveOptions {
  std::optional<std::chrono::milliseconds> quietTime = std::chrono::milliseconds(500);  // none: a pause means nothing
  std::optional<std::chrono::milliseconds> idleTimeout;  // then the link is opened anew; none: what its kind does
  std::optional<std::chrono::milliseconds> retryPause;   // after each loss; none: they grow as its kind wants
  unsigned int maxTries = 0;                             // that fail in a row; 0: without end
  std::string credentials;                               // the name of a file; may be empty
  std::string position;                                  // "latitude,longitude,height" for casters, or "stream"
  std::shared_ptr<C_PositionFeed> positions = std::make_shared<C_PositionFeed>();  // what "stream" means
};

class C_LiveSource : public C_ByteSource {
 public:
  using t_MakeLink = std::function<std::unique_ptr<C_Link>(C_Await& await)>;

  // `shownName` is that of messages and records. Begins to connect at once. `makeLink` runs on the source's thread.
  C_LiveSource(std::string shownName, const S_LiveOptions& options, t_MakeLink makeLink);
  ~C_LiveSource() override;
  C_LiveSource(const C_LiveSource&) = delete;
  C_LiveSource& operator=(const C_LiveSource&) = delete;

  const std::string& Name() const override { return m_name; }
  int Descriptor() const override { return m_queue.Descriptor(); }

  // Never waits. `buffer` must hold a piece of C_ChunkQueue.
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;
  const S_LinkChange& Change() const override { return m_change; }
  std::optional<std::chrono::milliseconds> QuietTime() const override { return m_options.quietTime; }

 private:
  void Work(const t_MakeLink& makeLink);
  void KeepOpen(C_Link& link);
  S_LinkFailure Stream(C_Link& link, std::chrono::milliseconds& goodFor);

  const std::string m_name;
  const S_LiveOptions m_options;
  C_Await m_await;
  C_ChunkQueue m_queue;
  C_PositionScanner m_positions;
  S_LinkChange m_change;
  std::thread m_thread;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LIVE_SOURCE_H
