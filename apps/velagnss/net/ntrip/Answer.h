// What the answer of a caster means, and what to do after it.
#ifndef VELAGNSS_APPS_NTRIP_ANSWER_H
#define VELAGNSS_APPS_NTRIP_ANSWER_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/net/ntrip/HttpHead.h"

namespace Host {

struct S_NtripAnswer {
  enum class eKind {
    Good,     // a body follows; a pusher may begin
    Table,    // a source table follows
    Page,     // a page for people follows
    Moved,    // to `text`
    Lost,     // trouble that may pass
    Refused,  // the caster said no; asking again soon may get this machine banned
  };

  eKind kind = eKind::Good;
  std::string text = {};                                // why; safe to show
  std::optional<std::chrono::seconds> retryAfter = {};  // not before
  bool mayBeVersion = false;                            // another version of NTRIP may help
};

// `now` is for a Retry-After that is a date.
S_NtripAnswer MeaningOf(const S_HttpHead& head, std::chrono::system_clock::time_point now);

// What a body is by its first bytes: casters often name its type wrongly, or not at all.
enum class eNtripBody { Undecided, Data, Table, Page };
eNtripBody BodyOf(std::string_view first);

// The text of the element `title` of a page, cut to what fits a message and safe to show; may be empty.
std::string TitleOf(std::string_view page);

// Nothing for what is neither a number of seconds nor a date of RFC 9110, 5.6.7. At most a day.
std::optional<std::chrono::seconds> ReadRetryAfter(std::string_view text, std::chrono::system_clock::time_point now);

// Public casters ban addresses that ask again soon after these.
inline constexpr std::chrono::seconds kAccountPause{600};
inline constexpr std::chrono::seconds kRefusalPause{30};

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_ANSWER_H
