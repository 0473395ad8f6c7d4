#include "apps/velagnss/input/live/NtripLink.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "apps/velagnss/input/live/PositionFeed.h"
#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/ntrip/NtripClient.h"
#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/net/ntrip/SourceTable.h"
#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eFailure = S_LinkFailure::eKind;
using eAnswer = S_NtripAnswer::eKind;
using t_Time = C_Await::t_Time;

// Mounts that choose their stream by the position of the reader may need this long for the first bytes.
constexpr std::chrono::milliseconds kIdleTime = 60s;

// Public casters ban addresses that come back sooner or more often.
constexpr S_RetryRules kRetryRules = {.first = 5s,
                                      .longest = 300s,
                                      .firstRefused = kRefusalPause,
                                      .longestRefused = 600s,
                                      .goodAfter = 60s,
                                      .least = 5s,
                                      .idleTimeout = kIdleTime};

constexpr auto kPositionPeriod = 10s;
constexpr auto kPositionLook = 1s;  // as long as there is none

S_LinkFailure Lost(std::string text) { return {eFailure::Lost, std::move(text), {}}; }
S_LinkFailure Refused(std::string text, std::chrono::seconds pause) {
  return {eFailure::Refused, std::move(text), pause};
}

class C_NtripLink : public C_Link {
 public:
  C_NtripLink(const S_Address& address, const S_LiveOptions& options, C_Await& await)
      : m_name(address.Shown()),
        m_address(WithNtripPort(address)),
        m_options(options),
        m_client(await),
        m_version(OptionOf(address, "version") == "1" ? 1 : 2),
        m_mayFallBack(OptionOf(address, "version").empty()),
        m_sendsPosition(!options.position.empty() && OptionOf(address, "gga") != "no"),
        m_position(ReadFixedPosition(options.position)) {}

  std::optional<S_LinkFailure> Open() override;
  S_Read Read(t_Time deadline) override;
  void Close() override { m_client.Close(); }
  std::string Peer() const override;
  S_RetryRules RetryRules() const override { return kRetryRules; }

 private:
  std::optional<std::string> Position() const;
  void SendPosition(t_Time now);
  S_LinkFailure FailureOf(const S_NtripAnswer& answer);
  S_LinkFailure NotAStream(std::string text);
  std::string FallBack(std::string text);
  void WarnOnce();

  const std::string m_name;  // of the source, whose own positions are not sent back
  const S_Address m_address;
  const S_LiveOptions m_options;
  C_NtripClient m_client;
  unsigned int m_version;
  bool m_mayFallBack;  // to version 1: once
  const bool m_sendsPosition;
  const std::optional<S_FixedPosition> m_position;  // none: that of another source
  bool m_hasWarned = false;
  bool m_hasData = false;
  t_Time m_opened;
  t_Time m_nextPosition;
};

std::optional<S_LinkFailure> C_NtripLink::Open() {
  WarnOnce();
  S_Address address = m_address;
  std::string error = FillAccount(address, m_options.credentials);
  if (error.empty()) error = CheckAccount(address.user, address.password);
  if (!error.empty()) return S_LinkFailure{eFailure::Final, error, {}};
  const S_NtripAnswer answer = m_client.Get(address, m_version, Position().value_or(""));
  m_hasData = false;
  m_opened = m_nextPosition = C_Await::t_Clock::now();
  if (answer.kind != eAnswer::Good) return FailureOf(answer);
  SendPosition(m_opened);
  return std::nullopt;
}

void C_NtripLink::WarnOnce() {
  if (std::exchange(m_hasWarned, true)) return;
  if (!m_address.password.empty())
    Notify("the password in the address may stay in the history of the shell; --credentials FILE avoids that");
  if (m_address.options.contains("insecure"))
    Notify("INSECURE: the certificate is not verified, and anybody between here and the caster can read the password");
}

S_LinkFailure C_NtripLink::FailureOf(const S_NtripAnswer& answer) {
  if (answer.kind == eAnswer::Table || answer.kind == eAnswer::Page) return NotAStream({});
  std::string text = answer.mayBeVersion ? FallBack(answer.text) : answer.text;
  return {answer.kind == eAnswer::Refused ? eFailure::Refused : eFailure::Lost, std::move(text), answer.retryAfter};
}

// `text`: what has been read of the table or page.
S_LinkFailure C_NtripLink::NotAStream(std::string text) {
  constexpr std::size_t kMaxPage = std::size_t{64} << 10;
  m_client.ReadText(text, kMaxSourceTable, C_Await::t_Clock::now() + kAnswerTime, [](std::string_view all) {
    return EndsSourceTable(all) || (all.starts_with('<') && all.size() >= kMaxPage);
  });
  if (BodyOf(text) != eNtripBody::Page) {
    const S_SourceTable table = ReadSourceTable(text);
    const std::string_view mount = MountOf(m_address);
    return Refused(WhyTable(table, mount), table.Find(mount) != nullptr ? kRefusalPause : kAccountPause);
  }
  const std::string title = TitleOf(text);
  return Refused(fmt::format("a page for people instead of a stream{}{}: a portal, a ban, or not a caster",
                             title.empty() ? "" : ", ", title),
                 kAccountPause);
}

std::string C_NtripLink::FallBack(std::string text) {
  if (!std::exchange(m_mayFallBack, false)) return text;
  m_version = 1;
  return text + "; next with version 1 of NTRIP";
}

C_Link::S_Read C_NtripLink::Read(t_Time deadline) {
  const t_Time now = C_Await::t_Clock::now();
  SendPosition(now);
  const C_Transport::S_Read read = m_client.Read(m_sendsPosition ? std::min(deadline, m_nextPosition) : deadline);
  if (read.bytes.empty() && m_client.HasBadChunks()) {
    constexpr const char* kText = "the chunks of the stream are damaged";
    return {{}, Lost(m_hasData ? kText : FallBack(kText))};
  }
  if (!read.error.empty()) return {{}, Lost(read.error)};
  if (read.hasEnded) return {{}, Lost("the caster has ended the stream")};
  const std::string_view text(reinterpret_cast<const char*>(read.bytes.data()), read.bytes.size());
  if (!text.empty() && !std::exchange(m_hasData, true)) {
    const eNtripBody body = BodyOf(text);
    if (body == eNtripBody::Table || body == eNtripBody::Page) return {{}, NotAStream(std::string(text))};
  }
  const bool isSilent = !m_hasData && !m_options.idleTimeout && C_Await::t_Clock::now() - m_opened >= kIdleTime;
  if (isSilent && !m_sendsPosition)
    return {{}, Lost("no data for 60 s; if the mount chooses its stream by a position, give one with --position")};
  return {read.bytes, {}};
}

std::string C_NtripLink::Peer() const {
  const S_HttpHead& head = m_client.Head();
  const bool isV2 = head.kind == S_HttpHead::eKind::Http && !head.isHttp10;
  const std::string server = Printable(head.Field("server").substr(0, 60));
  return fmt::format("NTRIP {}{}{}{}", isV2 ? 2 : 1, m_address.scheme == "ntrips" ? " over TLS" : "",
                     server.empty() ? "" : ", ", server);
}

std::optional<std::string> C_NtripLink::Position() const {
  if (!m_sendsPosition) return std::nullopt;
  if (m_position) return FixedGga(*m_position, std::chrono::system_clock::now());
  return m_options.positions->Latest(m_name, C_PositionFeed::t_Clock::now());
}

void C_NtripLink::SendPosition(t_Time now) {
  if (!m_sendsPosition || now < m_nextPosition) return;
  const std::optional<std::string> gga = Position();
  if (gga) m_client.Send(*gga + "\r\n");
  m_nextPosition = now + (gga ? t_Time::duration(kPositionPeriod) : t_Time::duration(kPositionLook));
}

std::unique_ptr<C_Link> MakeNtripLink(const S_Address& address, const S_LiveOptions& options, C_Await& await) {
  return std::make_unique<C_NtripLink>(address, options, await);
}

}  // namespace

const S_LinkKind kNtripLink = {kNtripForm, &MakeNtripLink};
const S_LinkKind kNtripTlsLink = {kNtripTlsForm, &MakeNtripLink};

}  // namespace Host
