// A value with the time when it came.
#ifndef VELAGNSS_APPS_NOTED_H
#define VELAGNSS_APPS_NOTED_H

#include <optional>

#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

// The time against which values age, s on the scale on which they were noted; NaN while there is none.
struct S_AgeClock {
  double now = kNoAge;
  double patience = 0;  // s after which a value is stale

  // The clock of a machine may be set back.
  double AgeOf(double at) const { return now < at ? 0 : now - at; }
  bool IsStale(double at) const { return AgeOf(at) > patience; }
};

template <class Value>
struct S_Noted {
  Value value;
  double at;  // s

  S_Aged<Value> Aged(const S_AgeClock& clock) const { return {value, clock.AgeOf(at), clock.IsStale(at)}; }
};

template <class Value>
std::optional<S_Aged<Value>> Aged(const std::optional<S_Noted<Value>>& noted, const S_AgeClock& clock) {
  if (!noted) return std::nullopt;
  return noted->Aged(clock);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_NOTED_H
