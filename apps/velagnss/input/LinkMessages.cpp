#include "apps/velagnss/input/LinkMessages.h"

#include <fmt/core.h>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// "connected to 127.0.0.1:5015 after 3 failures"
std::string ConnectedText(const S_LinkChange& change) {
  return fmt::format("connected{}{}{}{}", change.text.empty() ? "" : " to ", change.text,
                     change.failures > 0 ? " after " : "",
                     change.failures > 0 ? Counted(change.failures, "failure") : "");
}

// A link that others connect to is ready for the next one at once.
std::string RetryText(std::chrono::milliseconds retryIn) {
  if (retryIn.count() == 0) return "waiting for the next connection";
  return fmt::format("trying again in {:.1f} s", static_cast<double>(retryIn.count()) / 1000);
}

}  // namespace

void C_LinkMessages::Report(const std::string& source, const S_LinkChange& change) {
  using eState = S_LinkChange::eState;
  switch (change.state) {
    case eState::Connecting:
      return ReportDetail(fmt::format("{}: connecting", source));
    case eState::Connected:
      m_lastFailure.clear();
      return ReportNotice(fmt::format("{}: {}", source, ConnectedText(change)));
    case eState::Notice:
      return ReportNotice(fmt::format("{}: {}", source, change.text));
    case eState::Failed:
      return ReportError(fmt::format("{}: {}", source, change.text));
    case eState::Lost:
    case eState::Refused:
      break;
  }
  const std::string text = fmt::format("{}: {}; {}", source, change.text, RetryText(change.retryIn));
  const bool isNews = m_lastFailure != change.text;
  m_lastFailure = change.text;
  isNews ? ReportWarning(text) : ReportDetail(text);
}

}  // namespace Host
