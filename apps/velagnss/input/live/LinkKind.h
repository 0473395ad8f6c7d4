// A kind of live source: how its addresses are written, and how its link is made.
#ifndef VELAGNSS_APPS_LINK_KIND_H
#define VELAGNSS_APPS_LINK_KIND_H

#include <memory>

#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/net/AddressForm.h"

namespace Host {

struct S_LinkKind {
  S_AddressForm form;
  std::unique_ptr<C_Link> (*make)(const S_Address& address, const S_LiveOptions& options, C_Await& await);
};

// `make` of a link that needs nothing but its address.
template <class Link>
std::unique_ptr<C_Link> MakeLinkOf(const S_Address& address, const S_LiveOptions&, C_Await& await) {
  return std::make_unique<Link>(address, await);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_LINK_KIND_H
