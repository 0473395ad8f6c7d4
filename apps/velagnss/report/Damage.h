// Where and when a stream is damaged.
#ifndef VELAGNSS_APPS_DAMAGE_H
#define VELAGNSS_APPS_DAMAGE_H

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "apps/velagnss/account/BoundedList.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/report/SeriesJson.h"

namespace Host {

// A false start, or bytes in no frame.
struct S_DamageEvent {
  std::uint64_t offset;
  std::optional<std::uint64_t> length;  // of skipped bytes
  double seconds;                       // time of the last frame before it; NaN before the first time
  std::string_view why;
};

// TAG blocks are not damage, as in the account.
class C_Damage {
 public:
  // `bin` is that of the frame's time.
  void NoteFrame(double seconds, const std::optional<S_TimeBin>& bin);
  void Note(const velagnss::RejectedStart& start);
  void Note(const velagnss::SkippedRange& range);

  // `clock` is that of the end of the stream.
  void Write(C_JsonWriter& json, const C_TimeBins& axis, const velagnss::StreamClock& clock) const;

 private:
  double m_seconds = std::numeric_limits<double>::quiet_NaN();  // of the last frame
  std::optional<S_TimeBin> m_bin;                               // likewise
  C_BoundedList<S_DamageEvent> m_events;
  C_Series m_bytes;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_DAMAGE_H
