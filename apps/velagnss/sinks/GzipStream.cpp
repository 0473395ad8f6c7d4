#include "apps/velagnss/sinks/GzipStream.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace Host {

void C_GzipStream::S_Free::operator()(z_stream_s* stream) const {
  deflateEnd(stream);
  delete stream;
}

C_GzipStream::C_GzipStream(t_Write write) : m_write(std::move(write)) {
  constexpr int kGzip = 16;        // added to the window size: gzip, not zlib
  constexpr int kMemoryLevel = 8;  // the default of deflateInit
  auto stream = std::make_unique<z_stream>();
  const int result = deflateInit2(stream.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzip, kMemoryLevel,
                                  Z_DEFAULT_STRATEGY);
  if (result == Z_OK) m_stream.reset(stream.release());
}

bool C_GzipStream::Write(std::string_view bytes) {
  constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kMost)))
    if (!Compress(bytes.substr(0, kMost), Z_NO_FLUSH)) return false;
  return true;
}

bool C_GzipStream::Finish() { return Compress({}, Z_FINISH); }

// Room that is left in the output means that the input is used up.
bool C_GzipStream::Compress(std::string_view bytes, int flush) {
  if (m_stream == nullptr) return false;
  // zlib changes no input, whatever the type says.
  m_stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  m_stream->avail_in = static_cast<uInt>(bytes.size());
  std::array<char, 1U << 16> compressed;
  do {
    m_stream->next_out = reinterpret_cast<Bytef*>(compressed.data());
    m_stream->avail_out = static_cast<uInt>(compressed.size());
    if (deflate(m_stream.get(), flush) == Z_STREAM_ERROR) return false;
    if (!m_write({compressed.data(), compressed.size() - m_stream->avail_out})) return false;
  } while (m_stream->avail_out == 0);
  return true;
}

}  // namespace Host
