// What went wrong with a server, in words that say what to do about it.
#ifndef VELAGNSS_APPS_NATS_FAILURE_H
#define VELAGNSS_APPS_NATS_FAILURE_H

#include <nats/nats.h>

#include <optional>
#include <string>

namespace Host {

struct S_NatsFailure {
  enum class eKind {
    Lost,     // trouble that may pass by itself
    Refused,  // somebody must change the server, the stream or the address
  };
  eKind kind = eKind::Lost;
  std::string text;  // no address, no password
};

// None: all went well. It holds S_NatsFailure otherwise.
using t_NatsResult = std::optional<S_NatsFailure>;

// What a status means, and the error code of JetStream where there is one. Called on the thread of the failed call,
// whose last error is read.
t_NatsResult NatsResult(natsStatus status, jsErrCode code = jsErrCode(0));

// Of an error that the server has sent, with its own description.
S_NatsFailure ServerFailure(jsErrCode code, const std::string& description);

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_FAILURE_H
