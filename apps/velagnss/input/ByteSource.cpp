#include "apps/velagnss/input/ByteSource.h"

#include "apps/velagnss/input/InputIdentity.h"

namespace Host {

const S_LinkChange& C_ByteSource::Change() const {
  static const S_LinkChange kNone;
  return kNone;
}

std::string C_ByteSource::Identity() const { return IdentityOfInput(Name()); }

}  // namespace Host
