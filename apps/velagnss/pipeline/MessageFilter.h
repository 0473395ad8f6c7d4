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

  // Ready for another stream, whose time begins anew.
  void Restart();

  // Whether `Passes` depends on the stream's time.
  bool UsesTime() const { return m_usesTime; }

  // `streamSeconds`: the stream's time on any scale without jumps, NaN while there is none.
  bool Passes(C_RawDataMessage::eProtocols protocol, unsigned int messageType, double streamSeconds);

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
  bool m_usesTime = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_FILTER_H
