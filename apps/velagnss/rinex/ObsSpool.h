// Epochs and changes of the station in the order of the stream, kept in bounded memory.
#ifndef VELAGNSS_APPS_OBS_SPOOL_H
#define VELAGNSS_APPS_OBS_SPOOL_H

#include <functional>
#include <string>
#include <string_view>

#include "apps/velagnss/rinex/ObsEpoch.h"
#include "apps/velagnss/text/SpilledText.h"

namespace Host {

class C_ObsSpool {
 public:
  // A header line that is to say something else from here on.
  struct S_Change {
    std::string_view label;
    std::string_view content;
  };

  void Add(const S_ObsEpoch& epoch);
  void Add(const S_Change& change);
  bool IsEmpty() const { return m_bytes.IsEmpty(); }

  // Hands over everything; it may be called again. What is handed over may be changed.
  using t_OnEpoch = std::function<void(S_ObsEpoch& epoch)>;
  using t_OnChange = std::function<void(const S_Change& change)>;
  void ForEach(const t_OnEpoch& onEpoch, const t_OnChange& onChange);

 private:
  C_SpilledText m_bytes;
  S_ObsEpoch m_epoch;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OBS_SPOOL_H
