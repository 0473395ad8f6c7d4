#include "apps/velagnss/input/ByteSource.h"

namespace Host {

const S_LinkChange& C_ByteSource::Change() const {
  static const S_LinkChange kNone;
  return kNone;
}

}  // namespace Host
