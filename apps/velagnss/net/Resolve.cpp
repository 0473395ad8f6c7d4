#include "apps/velagnss/net/Resolve.h"

#include <fmt/core.h>
#include <netdb.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace Host {
namespace {

// A name server that is away keeps a look-up for some 10 to 30 seconds: no more of them than a few per source.
constexpr int kMaxLookUps = 64;

struct S_LookUp {
  std::mutex mutex;
  C_Await* waiter = nullptr;  // null once nobody waits any more
  bool isDone = false;
  S_Resolved result;
};

std::string ErrorText(int code) {
  if (code == EAI_SYSTEM) return fmt::format("cannot look the name up: {}", std::strerror(errno));
  if (code == EAI_NONAME || code == EAI_NODATA) return "there is no machine of this name; check how it is spelled";
  return fmt::format("cannot look the name up: {}", ::gai_strerror(code));
}

S_Resolved Ask(const std::string& host, const std::string& port, int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* found = nullptr;
  const int code = ::getaddrinfo(host.empty() ? nullptr : host.c_str(), port.c_str(), &hints, &found);
  if (code != 0) return {{}, ErrorText(code)};
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owner(found, &::freeaddrinfo);
  S_Resolved resolved;
  for (; found != nullptr; found = found->ai_next) {
    asio::ip::tcp::endpoint endpoint;
    if (found->ai_addrlen > endpoint.capacity()) continue;
    std::memcpy(endpoint.data(), found->ai_addr, found->ai_addrlen);
    endpoint.resize(found->ai_addrlen);
    resolved.endpoints.push_back(endpoint);
  }
  return resolved;
}

std::atomic<int>& NumLookUps() {
  static std::atomic<int> number = 0;
  return number;
}

// False when no thread can be had.
bool Begin(const std::shared_ptr<S_LookUp>& lookUp, const std::string& host, const std::string& port) try {
  if (++NumLookUps() > kMaxLookUps) return --NumLookUps(), false;
  std::thread([lookUp, host, port] {
    S_Resolved result = Ask(host, port, 0);
    --NumLookUps();
    const std::lock_guard lock(lookUp->mutex);
    lookUp->result = std::move(result);
    lookUp->isDone = true;
    if (lookUp->waiter != nullptr) lookUp->waiter->Post([] {});
  }).detach();
  return true;
} catch (const std::system_error&) {
  --NumLookUps();
  return false;
}

}  // namespace

S_Resolved Resolve(C_Await& await, const std::string& host, const std::string& port, C_Await::t_Time deadline) {
  S_Resolved numeric = Ask(host, port, AI_NUMERICHOST | AI_PASSIVE);
  if (numeric.error.empty()) return numeric;
  const auto lookUp = std::make_shared<S_LookUp>();
  lookUp->waiter = &await;
  if (!Begin(lookUp, host, port)) return {{}, "cannot look the name up: too many look-ups are waiting for an answer"};
  const auto isDone = [&lookUp] {
    const std::lock_guard lock(lookUp->mutex);
    return lookUp->isDone;
  };
  await.Until(deadline, isDone);
  const std::lock_guard lock(lookUp->mutex);
  lookUp->waiter = nullptr;
  if (lookUp->isDone) return std::move(lookUp->result);
  return {{}, await.IsStopping() ? "stopped" : "cannot look the name up: no answer from the name servers in time"};
}

std::string EndpointText(const asio::ip::address& address, std::uint16_t port) {
  const bool isV6 = address.is_v6();
  return fmt::format("{}{}{}:{}", isV6 ? "[" : "", address.to_string(), isV6 ? "]" : "", port);
}

}  // namespace Host
