// Compressed data unpacked piece by piece.
#ifndef VELAGNSS_APPS_UNPACKER_H
#define VELAGNSS_APPS_UNPACKER_H

#include <cstddef>
#include <memory>
#include <span>

#include "apps/velagnss/input/FileKinds.h"

namespace Host {

// One member of gzip data, or one stream or frame of another kind. What can be unpacked of the bytes so far is given
// out, so that data which is cut off loses no more than its format keeps together: nothing of gzip and xz, a block of
// bzip2 (up to 900 kB) and of Zstandard (up to 128 KiB). Checksums are verified where the format has them.
class C_Unpacker {
 public:
  enum class eOutcome {
    More,    // in the midst of it; without progress it needs more bytes
    End,     // all of it is unpacked
    Damaged  // what was given out before is good as far as can be seen
  };
  struct S_Step {
    std::size_t taken;  // of `packed`
    std::size_t given;  // in `plain`
    eOutcome outcome;
  };

  virtual ~C_Unpacker() = default;

  // `plain` is not empty.
  virtual S_Step Unpack(std::span<const unsigned char> packed, std::span<unsigned char> plain) = 0;
};

// Null for eCodec::None.
std::unique_ptr<C_Unpacker> MakeUnpacker(eCodec codec);

}  // namespace Host

#endif  // VELAGNSS_APPS_UNPACKER_H
