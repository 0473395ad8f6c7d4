// A file of a web server, read from some byte on as it comes.
#ifndef VELAGNSS_APPS_HTTP_TRANSFER_H
#define VELAGNSS_APPS_HTTP_TRANSFER_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/velagnss/net/http/HttpAddress.h"

namespace Host {

struct S_HttpRange {
  std::uint64_t offset = 0;
  std::optional<std::uint64_t> end = {};  // none: up to the end of the file
};

// What the server says about the file.
struct S_HttpFile {
  std::string etag;                   // what identifies this version of the file; may be empty
  std::string modified;               // when it was changed last, as the server writes it; may be empty
  std::optional<std::uint64_t> size;  // none: unknown

  // Whether both descriptions may be of the same bytes.
  bool IsSame(const S_HttpFile& other) const;
};

// One request and its answer. All waits end with a signal (os/Signals.h). A redirection is followed within the scheme.
class C_HttpTransfer {
 public:
  C_HttpTransfer(const S_HttpAddress& address, const S_HttpRange& range);
  ~C_HttpTransfer();
  C_HttpTransfer(const C_HttpTransfer&) = delete;
  C_HttpTransfer& operator=(const C_HttpTransfer&) = delete;

  enum class eState {
    Bytes,
    Interrupted,  // by a signal
    End,          // of what was asked for
    Broken,       // on the way or by a server in trouble: it can be tried again
    Refused,      // for good
  };

  // Waits for bytes until `limit` has passed without any.
  struct S_Read {
    eState state;
    std::size_t size = 0;                                 // bytes in `buffer`
    std::string error = {};                               // broken or refused: why, and what to do about it
    std::optional<std::chrono::seconds> retryAfter = {};  // broken: what the server asked for
  };
  S_Read Read(std::span<unsigned char> buffer, std::chrono::milliseconds limit);

  // From the first byte on.
  const S_HttpFile& File() const;

  // Likewise: where the first byte is in the file. A server that knows no ranges begins at 0.
  std::uint64_t Begin() const;

 private:
  struct S_Exchange;
  std::unique_ptr<S_Exchange> m_exchange;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_HTTP_TRANSFER_H
