#include "apps/velagnss/input/HttpSource.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/input/InputIdentity.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::chrono::milliseconds kIdleTimeout{60'000};
constexpr unsigned int kUsualTries = 8;  // some 2 minutes: a file that cannot be had is a failure, not a quiet receiver

S_RetryRules RulesFor(const S_LiveOptions& options) {
  S_RetryRules rules;
  if (options.retryPause) rules.first = rules.longest = *options.retryPause;
  return rules;
}

}  // namespace

bool C_HttpSource::Open(const std::string& name, const S_LiveOptions& options) {
  m_name = ShownLive(name);
  m_idleTimeout = options.idleTimeout.value_or(kIdleTimeout);
  m_maxTries = options.maxTries > 0 ? options.maxTries : kUsualTries;
  m_pauses = std::make_unique<C_RetryPauses>(RulesFor(options));
  const std::string error = ReadHttp(name, options.credentials, m_address);
  if (!error.empty()) Fail(error);
  return error.empty();
}

C_ByteSource::eRead C_HttpSource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  if (m_transfer == nullptr) {
    m_transfer = std::make_unique<C_HttpTransfer>(m_address, S_HttpRange{m_offset});
    m_hasAnswer = false;
  }
  const C_HttpTransfer::S_Read read = m_transfer->Read(buffer, m_idleTimeout);
  switch (read.state) {
    case C_HttpTransfer::eState::Interrupted:
      return eRead::Nothing;
    case C_HttpTransfer::eState::End:
      return m_file.size && m_offset < *m_file.size
                 ? TryAgain({C_HttpTransfer::eState::Broken, 0, "the file ends early"})
                 : eRead::End;
    case C_HttpTransfer::eState::Broken:
      return TryAgain(read);
    case C_HttpTransfer::eState::Refused:
      return Fail(read.error);
    case C_HttpTransfer::eState::Bytes:
      break;
  }
  if (!m_hasAnswer && !IsContinued()) return Fail("the file has changed on the server while it was read; run it again");
  return Take(buffer.first(read.size), chunk);
}

// The first answer describes the file, and each further one must be of the same file.
bool C_HttpSource::IsContinued() {
  m_hasAnswer = true;
  m_skipped = m_transfer->Begin();
  if (m_offset == 0) m_file = m_transfer->File();
  return m_file.IsSame(m_transfer->File());
}

// A server that knows no ranges sends once more what has been given out.
C_ByteSource::eRead C_HttpSource::Take(std::span<const unsigned char> bytes, S_Chunk& chunk) {
  const std::size_t old = static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), m_offset - m_skipped));
  m_skipped += old;
  if (old == bytes.size()) return eRead::Nothing;
  chunk = {bytes.subspan(old), S_Chunk::t_Clock::now()};
  m_offset += chunk.bytes.size();
  m_skipped = m_offset;
  m_failures = 0;
  return eRead::Bytes;
}

C_ByteSource::eRead C_HttpSource::TryAgain(const C_HttpTransfer::S_Read& broken) {
  m_transfer.reset();
  const bool isProgress = m_failures == 0;
  if (++m_failures >= m_maxTries)
    return Fail(fmt::format("{}; given up after {}", broken.error, Counted(m_failures, "failure")));
  const std::chrono::milliseconds goodFor = isProgress ? S_RetryRules().goodAfter : std::chrono::milliseconds(0);
  S_LinkFailure failure = S_LinkFailure::Lost(broken.error);
  failure.retryAfter = broken.retryAfter;
  const std::chrono::milliseconds pause = m_pauses->Next(failure, goodFor);
  const std::string message = fmt::format("{}: {} at byte {}; next try in {:.1f} s", m_name, Printable(broken.error),
                                          m_offset, static_cast<double>(pause.count()) / 1000);
  if (isProgress)
    ReportWarning(message);
  else
    ReportDetail(message);
  PauseUntilSignal(pause);
  return eRead::Nothing;
}

C_ByteSource::eRead C_HttpSource::Fail(std::string_view why) const {
  ReportError(
      fmt::format("{}: {}{}", m_name, Printable(why), m_offset > 0 ? "; what was read before is in the output" : ""));
  return eRead::Failed;
}

// Of the same bytes as that of a copy on this machine, so a transfer of its own reads them.
std::string C_HttpSource::Identity() const {
  std::vector<unsigned char> head(kIdentityHead);
  std::size_t size = 0;
  C_HttpTransfer transfer(m_address, {0, kIdentityHead});
  while (size < head.size()) {
    const C_HttpTransfer::S_Read read = transfer.Read(std::span(head).subspan(size), m_idleTimeout);
    if (read.state == C_HttpTransfer::eState::Bytes)
      size += read.size;
    else if (read.state == C_HttpTransfer::eState::End)
      break;
    else
      return C_ByteSource::Identity();
  }
  return IdentityOfHead(std::span(head).first(size));
}

}  // namespace Host
