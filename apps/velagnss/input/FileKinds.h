// Kinds of files by their first bytes: compressed data, and containers that hold no stream of a receiver as such.
#ifndef VELAGNSS_APPS_FILE_KINDS_H
#define VELAGNSS_APPS_FILE_KINDS_H

#include <span>
#include <string_view>

namespace Host {

// How compressed data is packed; none: it cannot be unpacked here.
enum class eCodec { None, Gzip, Bzip2, Xz, Zstd };

struct S_FileKind {
  std::string_view signature;  // a '?' is any byte
  std::size_t offset;
  std::string_view name;  // "gzip data"
  eCodec codec;
  std::string_view advice;  // how to get at the stream in it
};

struct S_KindGuess {
  const S_FileKind* kind = nullptr;  // none: a plain stream
  bool needsMore = false;            // bytes, before the guess is good: these are the beginning of a signature
};

S_KindGuess GuessKind(std::span<const unsigned char> head);

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_KINDS_H
