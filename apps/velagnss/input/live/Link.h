// One connection to where live bytes come from: a serial port, a socket, a stream of a caster.
//
// A new kind is a class with this interface, in a file of its own, and a row in Links.cpp. It opens and reads; when to
// try again is decided in one place for all of them (LiveSource.h).
#ifndef VELAGNSS_APPS_LINK_H
#define VELAGNSS_APPS_LINK_H

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/net/Await.h"

namespace Host {

// Why a link could not be opened, or has ended.
struct S_LinkFailure {
  enum class eKind {
    Lost,     // trouble that may pass: try again soon
    Refused,  // the other side said no: try again, but slowly
    Final,    // trying again is of no use
    Ended,    // no failure at all: nothing more will come
  };
  eKind kind;
  std::string text;                                     // "connection refused"; no name, no password
  std::optional<std::chrono::seconds> retryAfter = {};  // what the other side asked for

  static S_LinkFailure Lost(std::string text) { return {eKind::Lost, std::move(text), {}}; }
  static S_LinkFailure Final(std::string text) { return {eKind::Final, std::move(text), {}}; }
};

// The pauses between tries: doubled from `first` to `longest`, each with a random part of itself added, and back to
// `first` once the link has been good for `goodAfter`.
struct S_RetryRules {
  std::chrono::milliseconds first{500};
  std::chrono::milliseconds longest{30'000};
  std::chrono::milliseconds firstRefused{10'000};  // after `Refused`
  std::chrono::milliseconds longestRefused{600'000};
  std::chrono::milliseconds goodAfter{5'000};
  std::chrono::milliseconds least{0};                         // whatever pause the user wants
  std::optional<std::chrono::milliseconds> idleTimeout = {};  // without a byte, unless the user chose another
};

// Used by one thread. All waits are those of the C_Await that it is made with.
class C_Link {
 public:
  virtual ~C_Link() = default;

  // Opens the link, by its own deadlines. None: it is open.
  virtual std::optional<S_LinkFailure> Open() = 0;

  // Waits for bytes until the deadline. They stay until the next call. Neither bytes nor a failure: none came.
  struct S_Read {
    std::span<const unsigned char> bytes;
    std::optional<S_LinkFailure> failure;
  };
  virtual S_Read Read(C_Await::t_Time deadline) = 0;

  // Closes what is open; it can be opened again.
  virtual void Close() = 0;

  // The other end, once open: "127.0.0.1:5015", "/dev/ttyUSB0 at 115200 8N1"; may be empty.
  virtual std::string Peer() const { return {}; }

  virtual S_RetryRules RetryRules() const { return {}; }

  // Called within the other calls with what the user should know although nothing has failed: "listens at ...".
  using t_Notice = std::function<void(const std::string& text)>;
  void SetNotice(t_Notice notice) { m_notice = std::move(notice); }

 protected:
  void Notify(const std::string& text) const {
    if (m_notice) m_notice(text);
  }

 private:
  t_Notice m_notice;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LINK_H
