// How addresses of NATS servers are written: "nats://USER@HOST:PORT/STREAM?...", and "natss://" over TLS.
#ifndef VELAGNSS_APPS_NATS_ADDRESS_H
#define VELAGNSS_APPS_NATS_ADDRESS_H

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "apps/velagnss/net/AddressForm.h"

namespace Host {

// What every address of a server may hold: files that are read for TLS and the account.
//   ca=FILE       certificates that are trusted instead of the system's (natss)
//   cert=FILE     the client's certificate, with key=FILE (natss)
//   insecure      any certificate of the server will do (natss)
//   creds=FILE    a user's JWT and key
//   token=FILE    a token, alone in its file
extern const std::array<S_AddressOption, 6> kNatsOptions;

// The options of an address of one kind: those of every address, and `more`.
template <std::size_t N>
std::array<S_AddressOption, 6 + N> WithNatsOptions(const std::array<S_AddressOption, N>& more) {
  std::array<S_AddressOption, 6 + N> all{};
  std::copy(more.begin(), more.end(), std::copy(kNatsOptions.begin(), kNatsOptions.end(), all.begin()));
  return all;
}

// How an address of `scheme` is written that ends in the name of a stream.
S_AddressForm NatsForm(std::string_view scheme, std::string_view example, std::span<const S_AddressOption> options);

// What a table row cannot say, for every kind: options that need TLS or each other, the name of the stream. Returns an
// error text, empty when good.
std::string CheckNats(const S_Address& address);

// Whether its scheme is one of the two.
bool IsNats(const S_Address& address);

// The value of an option; empty when it is not given.
std::string NatsOption(const S_Address& address, const std::string& name);

// With the usual port, 4222, where it has none.
S_Address WithNatsPort(S_Address address);

// The name in the path; CheckNats has found it good.
std::string StreamOf(const S_Address& address);

// A part of a subject: what is not a letter, a digit, '-' or '_' becomes '_'. Never empty, and of bounded length.
std::string SubjectToken(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_ADDRESS_H
