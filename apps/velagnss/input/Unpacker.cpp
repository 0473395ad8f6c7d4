#include "apps/velagnss/input/Unpacker.h"

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <limits>
#include <new>

namespace Host {
namespace {

using eOutcome = C_Unpacker::eOutcome;
using t_Packed = std::span<const unsigned char>;
using t_Plain = std::span<unsigned char>;

void RequireMemory(bool isThere) {
  if (!isThere) throw std::bad_alloc();
}

// zlib and bzip2 count bytes in unsigned int.
template <class Bytes>
Bytes Countable(Bytes bytes) {
  return bytes.first(std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max()));
}

// RFC 1952: CRC-32 and length at the end of each member.
class C_GzipUnpacker : public C_Unpacker {
 public:
  C_GzipUnpacker() { RequireMemory(::inflateInit2(&m_stream, MAX_WBITS + kGzipOnly) == Z_OK); }
  ~C_GzipUnpacker() override { ::inflateEnd(&m_stream); }

  S_Step Unpack(t_Packed packed, t_Plain plain) override {
    packed = Countable(packed);
    plain = Countable(plain);
    m_stream.next_in = const_cast<unsigned char*>(packed.data());  // zlib does not write there
    m_stream.avail_in = static_cast<unsigned int>(packed.size());
    m_stream.next_out = plain.data();
    m_stream.avail_out = static_cast<unsigned int>(plain.size());
    const int result = ::inflate(&m_stream, Z_NO_FLUSH);
    RequireMemory(result != Z_MEM_ERROR);
    return {packed.size() - m_stream.avail_in, plain.size() - m_stream.avail_out,
            result == Z_STREAM_END                    ? eOutcome::End
            : result == Z_OK || result == Z_BUF_ERROR ? eOutcome::More
                                                      : eOutcome::Damaged};
  }

 private:
  static constexpr int kGzipOnly = 16;

  z_stream m_stream{};
};

class C_Bzip2Unpacker : public C_Unpacker {
 public:
  C_Bzip2Unpacker() { RequireMemory(::BZ2_bzDecompressInit(&m_stream, 0, 0) == BZ_OK); }
  ~C_Bzip2Unpacker() override { ::BZ2_bzDecompressEnd(&m_stream); }

  S_Step Unpack(t_Packed packed, t_Plain plain) override {
    packed = Countable(packed);
    plain = Countable(plain);
    m_stream.next_in = reinterpret_cast<char*>(const_cast<unsigned char*>(packed.data()));  // not written to
    m_stream.avail_in = static_cast<unsigned int>(packed.size());
    m_stream.next_out = reinterpret_cast<char*>(plain.data());
    m_stream.avail_out = static_cast<unsigned int>(plain.size());
    const int result = ::BZ2_bzDecompress(&m_stream);
    RequireMemory(result != BZ_MEM_ERROR);
    return {packed.size() - m_stream.avail_in, plain.size() - m_stream.avail_out,
            result == BZ_STREAM_END ? eOutcome::End
            : result == BZ_OK       ? eOutcome::More
                                    : eOutcome::Damaged};
  }

 private:
  bz_stream m_stream{};
};

class C_XzUnpacker : public C_Unpacker {
 public:
  C_XzUnpacker() { RequireMemory(::lzma_stream_decoder(&m_stream, kMemoryLimit, 0) == LZMA_OK); }
  ~C_XzUnpacker() override { ::lzma_end(&m_stream); }

  S_Step Unpack(t_Packed packed, t_Plain plain) override {
    m_stream.next_in = packed.data();
    m_stream.avail_in = packed.size();
    m_stream.next_out = plain.data();
    m_stream.avail_out = plain.size();
    const lzma_ret result = ::lzma_code(&m_stream, LZMA_RUN);
    RequireMemory(result != LZMA_MEM_ERROR && result != LZMA_MEMLIMIT_ERROR);
    return {packed.size() - m_stream.avail_in, plain.size() - m_stream.avail_out,
            result == LZMA_STREAM_END                       ? eOutcome::End
            : result == LZMA_OK || result == LZMA_BUF_ERROR ? eOutcome::More
                                                            : eOutcome::Damaged};
  }

 private:
  static constexpr std::uint64_t kMemoryLimit = std::uint64_t{1} << 30;

  lzma_stream m_stream = LZMA_STREAM_INIT;
};

class C_ZstdUnpacker : public C_Unpacker {
 public:
  C_ZstdUnpacker() : m_stream(::ZSTD_createDStream()) { RequireMemory(m_stream != nullptr); }
  ~C_ZstdUnpacker() override { ::ZSTD_freeDStream(m_stream); }
  C_ZstdUnpacker(const C_ZstdUnpacker&) = delete;
  C_ZstdUnpacker& operator=(const C_ZstdUnpacker&) = delete;

  S_Step Unpack(t_Packed packed, t_Plain plain) override {
    ZSTD_inBuffer in = {packed.data(), std::min(packed.size(), kPiece), 0};
    ZSTD_outBuffer out = {plain.data(), plain.size(), 0};
    const std::size_t result = ::ZSTD_decompressStream(m_stream, &out, &in);
    return {in.pos, out.pos,
            ::ZSTD_isError(result) != 0 ? eOutcome::Damaged
            : result == 0               ? eOutcome::End
                                        : eOutcome::More};
  }

 private:
  // A frame that is there as a whole would be unpacked as a whole, and damage in it would take all of it.
  static constexpr std::size_t kPiece = 4096;

  ZSTD_DStream* m_stream;
};

}  // namespace

std::unique_ptr<C_Unpacker> MakeUnpacker(eCodec codec) {
  switch (codec) {
    case eCodec::Gzip:
      return std::make_unique<C_GzipUnpacker>();
    case eCodec::Bzip2:
      return std::make_unique<C_Bzip2Unpacker>();
    case eCodec::Xz:
      return std::make_unique<C_XzUnpacker>();
    case eCodec::Zstd:
      return std::make_unique<C_ZstdUnpacker>();
    default:
      return nullptr;
  }
}

}  // namespace Host
