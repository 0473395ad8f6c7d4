// Waits for sources to have something to read.
#ifndef VELAGNSS_APPS_SOURCE_WAIT_H
#define VELAGNSS_APPS_SOURCE_WAIT_H

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "apps/velagnss/input/ByteSource.h"

namespace Host {

class C_SourceWait {
 public:
  using t_Limit = std::optional<std::chrono::milliseconds>;  // none: as long as it takes

  // `wake`: a descriptor that ends waits as a signal does when it is readable; -1 for none.
  explicit C_SourceWait(int wake = -1);

  // Sources are numbered in the order in which they are added. Each must live as long as the wait.
  void Add(const C_ByteSource& source);

  // An ended source is not waited for any more; its number stays.
  void Remove(std::size_t number);

  enum class eWait {
    Ready,        // at least one source
    TimeOver,     // none
    Interrupted,  // by a signal or `wake`, before that
  };

  // Waits until a source is ready, for at most `limit`.
  eWait Wait(t_Limit limit);

  // Whether the last `Wait` found that the source has bytes, has ended or has failed.
  bool IsReady(std::size_t number) const { return m_sources[number].isReady; }

 private:
  struct S_Source {
    const C_ByteSource* source;  // null once it has ended
    bool isReady;

    bool NeverWaits() const { return source != nullptr && source->Descriptor() < 0; }
  };

  std::vector<S_Source> m_sources;
  static constexpr int kNumOthers = 2;
  std::vector<pollfd> m_polled;  // one for each source, then `wake` and the signals'
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_WAIT_H
