#include "apps/velagnss/input/FileKinds.h"

#include <algorithm>

namespace Host {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kFirst = "unpack it first";
constexpr std::string_view kUnpack = "unpack it, and name the files in it";
constexpr std::string_view kDecompress = "decompress it first";
constexpr std::string_view kPackets = "save the payload of its packets as raw bytes first";

// clang-format off
constexpr S_FileKind kKinds[] = {
    {"\x1f\x8b\x08"sv,                         0,   "gzip data",              eCodec::Gzip, kFirst},  // RFC 1952, 2.3: deflate is the only method
    {"BZh?1AY&SY"sv,                           0,   "bzip2 data",             eCodec::Bzip2, kFirst},
    {"BZh?\x17rE8P\x90"sv,                     0,   "bzip2 data",             eCodec::Bzip2, kFirst},  // of nothing
    {"\xfd" "7zXZ\0"sv,                        0,   "xz data",                eCodec::Xz, kFirst},
    {"\x28\xb5\x2f\xfd"sv,                     0,   "Zstandard data",         eCodec::Zstd, kFirst},  // RFC 8878, 3.1.1
    {"\x50\x2a\x4d\x18"sv,                     0,   "Zstandard data",         eCodec::Zstd, kFirst},  // 3.1.2: a frame to be skipped
    {"\x5e\x2a\x4d\x18"sv,                     0,   "Zstandard data",         eCodec::Zstd, kFirst},  // likewise, a table of frames
    {"\x04\x22\x4d\x18"sv,                     0,   "LZ4 data",               eCodec::None, kDecompress},
    {"LZIP\x01"sv,                             0,   "lzip data",              eCodec::None, kDecompress},
    {"\x1f\x9d\x90"sv,                         0,   "compress (.Z) data",     eCodec::None, kDecompress},
    {"PK\x03\x04"sv,                           0,   "a zip archive",          eCodec::None, kUnpack},
    {"PK\x05\x06"sv,                           0,   "an empty zip archive",   eCodec::None, kUnpack},
    {"7z\xbc\xaf\x27\x1c"sv,                   0,   "a 7z archive",           eCodec::None, kUnpack},
    {"Rar!\x1a\x07"sv,                         0,   "a rar archive",          eCodec::None, kUnpack},
    {"ustar"sv,                                257, "a tar archive",          eCodec::None, kUnpack},
    {"\xd4\xc3\xb2\xa1"sv,                     0,   "a pcap packet capture",  eCodec::None, kPackets},
    {"\xa1\xb2\xc3\xd4"sv,                     0,   "a pcap packet capture",  eCodec::None, kPackets},
    {"\x4d\x3c\xb2\xa1"sv,                     0,   "a pcap packet capture",  eCodec::None, kPackets},  // times in nanoseconds
    {"\xa1\xb2\x3c\x4d"sv,                     0,   "a pcap packet capture",  eCodec::None, kPackets},
    {"\n\r\r\n????\x4d\x3c\x2b\x1a"sv,         0,   "a pcapng packet capture", eCodec::None, kPackets},
    {"\n\r\r\n????\x1a\x2b\x3c\x4d"sv,         0,   "a pcapng packet capture", eCodec::None, kPackets},
};
// clang-format on

bool IsSame(char signature, unsigned char byte) {
  return signature == '?' || static_cast<unsigned char>(signature) == byte;
}

}  // namespace

// A live stream must not be held up for a signature far into it: it is only looked for in what has come anyway.
S_KindGuess GuessKind(std::span<const unsigned char> head) {
  S_KindGuess guess;
  for (const S_FileKind& kind : kKinds) {
    if (kind.offset > 0 && head.size() < kind.offset + kind.signature.size()) continue;
    const std::span<const unsigned char> there = head.subspan(kind.offset);
    const std::size_t size = std::min(there.size(), kind.signature.size());
    if (!std::equal(kind.signature.begin(), kind.signature.begin() + static_cast<std::ptrdiff_t>(size), there.begin(),
                    &IsSame))
      continue;
    if (size == kind.signature.size()) return {&kind, false};
    guess.needsMore = true;
  }
  return guess;
}

}  // namespace Host
