// Which frames a user wants to see.
#ifndef VELAGNSS_APPS_MESSAGE_FILTER_H
#define VELAGNSS_APPS_MESSAGE_FILTER_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/text/MessageNames.h"

namespace Host {

// A frame passes when its protocol was named, or its message was, or nothing was named at all.
//
// A message may be named with a period, "GGA:10": it passes when at least that many seconds of the stream's own time
// have gone since the last one that passed. All messages of one epoch pass or none, so that a group of GSV stays whole.
// Before the stream has carried a time, everything passes.
class C_MessageFilter {
 public:
  // Take lists with commas. They return an error text for the user, or nothing when the whole list is understood.
  std::optional<std::string> AddProtocols(std::string_view list);
  std::optional<std::string> AddMessages(std::string_view list);

  // Whether `AddMessages` takes names of sentences that are not listed as well. On at first.
  void AcceptUnlisted(bool on) { m_acceptsUnlisted = on; }

  // Ready for another stream, whose time begins anew.
  void Restart();

  // Whether `Passes` depends on the stream's time.
  bool UsesTime() const { return m_usesTime; }

  // Whether all frames of an input that a period was given for came before its first time, so that all of them passed.
  bool HasIgnoredPeriod() const { return m_hasIgnoredPeriod || m_isTimeMissing; }

  // `streamSeconds`: the stream's time on any scale without jumps, NaN while there is none.
  bool Passes(const velagnss::Frame& frame, double streamSeconds);

 private:
  struct S_Rule {
    S_MessageKey key;
    double period;  // s, 0 for every one
    double lastPassed;
  };
  std::optional<std::string> AddMessage(std::string_view item);

  std::array<bool, kNumProtocols> m_protocols{};
  std::vector<S_Rule> m_rules;
  bool m_isEmpty = true;
  bool m_acceptsUnlisted = true;
  bool m_usesTime = false;
  bool m_isTimeMissing = false;     // in this input
  bool m_hasIgnoredPeriod = false;  // in one before
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_FILTER_H
