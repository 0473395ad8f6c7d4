#include "apps/velagnss/net/nats/NatsFailure.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

using eKind = S_NatsFailure::eKind;

constexpr std::string_view kNoJetStream =
    "JetStream does not answer: it is not enabled for the server (-js) or the account, or has stopped at a full disk";
constexpr std::string_view kNoRoom = "JetStream has no room left; raise its limits, or delete streams or messages";

struct S_StatusText {
  natsStatus status;
  eKind kind;
  std::string_view text;
};
constexpr S_StatusText kStatuses[] = {
    {NATS_NO_SERVER, eKind::Lost, "no server answers there"},
    {NATS_TIMEOUT, eKind::Lost, "no answer in time"},
    {NATS_CONNECTION_CLOSED, eKind::Lost, "the connection was lost"},
    {NATS_CONNECTION_DISCONNECTED, eKind::Lost, "the connection was lost"},
    {NATS_STALE_CONNECTION, eKind::Lost, "the server has stopped answering"},
    {NATS_CONNECTION_AUTH_FAILED, eKind::Refused,
     "the server rejects the account; check user and password, creds= or token="},
    {NATS_NOT_PERMITTED, eKind::Refused, "the account lacks the permission for this"},
    {NATS_SECURE_CONNECTION_REQUIRED, eKind::Refused, "the server requires TLS: write natss://"},
    {NATS_SECURE_CONNECTION_WANTED, eKind::Refused, "the server does not offer TLS: write nats://"},
    {NATS_NO_RESPONDERS, eKind::Refused, kNoJetStream},
    {NATS_MAX_PAYLOAD, eKind::Refused, "the message is longer than the server accepts (max_payload)"},
};

struct S_CodeText {
  jsErrCode code;
  eKind kind;
  std::string_view text;
};
constexpr S_CodeText kCodes[] = {
    {JSNotEnabledErr, eKind::Refused, kNoJetStream},
    {JSNotEnabledForAccountErr, eKind::Refused, kNoJetStream},
    {JSNoLimitsErr, eKind::Refused, kNoJetStream},
    {JSStreamNotFoundErr, eKind::Refused, "there is no stream of this name"},
    {JSStreamSubjectOverlapErr, eKind::Refused, "another stream already takes these subjects"},
    {JSStreamMessageExceedsMaximumErr, eKind::Refused, "the message is longer than the stream accepts (max_msg_size)"},
    {JSAccountResourcesExceededErr, eKind::Refused, kNoRoom},
    {JSInsufficientResourcesErr, eKind::Refused, kNoRoom},
    {JSMemoryResourcesExceededErr, eKind::Refused, kNoRoom},
    {JSStorageResourcesExceededErr, eKind::Refused, kNoRoom},
    {JSMaximumStreamsLimitErr, eKind::Refused, "the account can have no more streams"},
    {JSStreamSealedErr, eKind::Refused, "the stream is sealed"},
    {JSClusterNotAvailErr, eKind::Lost, "JetStream is not available at the moment"},
    {JSClusterNoPeersErr, eKind::Lost, "the cluster has too few servers for the stream"},
    {JSStreamOfflineErr, eKind::Lost, "the stream is offline"},
};

// libnats says in words what the status alone does not, such as why a certificate is rejected. It does so for the last
// failed call of the thread, which is the one with this status. "(conn.c:733): " comes first: places in its own
// sources.
std::string LastError(natsStatus status) {
  natsStatus last = NATS_OK;
  const char* const given = nats_GetLastError(&last);
  if (last != status || given == nullptr) return {};
  const std::string_view text = given;
  const std::size_t end = text.starts_with('(') ? text.find("): ") : std::string_view::npos;
  return Printable(end == std::string_view::npos ? text : text.substr(end + 3));
}

std::string WithDetail(std::string_view text, const std::string& detail) {
  return detail.empty() ? std::string(text) : fmt::format("{}: {}", text, detail);
}

}  // namespace

t_NatsResult NatsResult(natsStatus status, jsErrCode code) {
  if (status == NATS_OK) return std::nullopt;
  const std::string detail = LastError(status);
  if (code != 0) return ServerFailure(code, detail);
  const auto* const row = std::ranges::find(kStatuses, status, &S_StatusText::status);
  if (row != std::end(kStatuses)) return S_NatsFailure{row->kind, std::string(row->text)};
  if (status == NATS_SSL_ERROR) return S_NatsFailure{eKind::Refused, WithDetail("TLS", detail)};
  return S_NatsFailure{eKind::Lost, WithDetail(natsStatus_GetText(status), detail)};
}

S_NatsFailure ServerFailure(jsErrCode code, const std::string& description) {
  const auto* const row = std::ranges::find(kCodes, code, &S_CodeText::code);
  if (row != std::end(kCodes)) return {row->kind, std::string(row->text)};
  const std::string text = Printable(description);
  return {eKind::Refused, text.empty() ? fmt::format("the server reports error {}", static_cast<int>(code))
                                       : fmt::format("the server reports: {}", text)};
}

}  // namespace Host
