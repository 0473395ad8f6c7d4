// How addresses of casters are written, and the connections that they ask for.
#ifndef VELAGNSS_APPS_NTRIP_ADDRESS_H
#define VELAGNSS_APPS_NTRIP_ADDRESS_H

#include <memory>
#include <string>
#include <string_view>

#include "apps/velagnss/net/AddressForm.h"
#include "apps/velagnss/net/Transport.h"

namespace Host {

// Of a stream, "ntrip://USER@HOST:PORT/MOUNT", and of the source table, which has no mount. The scheme is "ntrip" or
// "ntrips".
extern const S_AddressForm kNtripForm;
extern const S_AddressForm kNtripTlsForm;
extern const S_AddressForm kNtripTableForm;
extern const S_AddressForm kNtripTlsTableForm;

// The value of an option of an address; empty where there is none.
std::string_view OptionOf(const S_Address& address, const std::string& name);

// `address` with the usual port where it has none. It is 2101 for both schemes: casters have TLS at many ports, 2101,
// 2102 and 443 among them, and none of them is usual.
S_Address WithNtripPort(S_Address address);

// The mount without its slash; empty for the source table.
std::string_view MountOf(const S_Address& address);

// Not yet connected: TLS for "ntrips", as the options `insecure` and `ca=FILE` want it.
std::unique_ptr<C_Transport> MakeNtripTransport(C_Await& await, const S_Address& address);

// Where `from` is moved to by the `location` of an answer. Another scheme is not followed, nor another host or port
// when `from` has an account: it would get the password. Returns an error text, empty when good.
std::string Redirect(const S_Address& from, std::string_view location, S_Address& to);

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_ADDRESS_H
