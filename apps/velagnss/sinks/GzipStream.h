// Compresses a stream of bytes, gzip (RFC 1952).
#ifndef VELAGNSS_APPS_GZIP_STREAM_H
#define VELAGNSS_APPS_GZIP_STREAM_H

#include <functional>
#include <memory>
#include <string_view>

struct z_stream_s;

namespace Host {

// The same bytes always give the same output: it holds no time and no name.
class C_GzipStream {
 public:
  // Takes compressed bytes; false when it could not.
  using t_Write = std::function<bool(std::string_view bytes)>;
  explicit C_GzipStream(t_Write write);

  // False when `write` answered false, or there is no memory.
  bool Write(std::string_view bytes);

  // Writes the end of the stream.
  bool Finish();

 private:
  struct S_Free {
    void operator()(z_stream_s* stream) const;
  };

  bool Compress(std::string_view bytes, int flush);

  t_Write m_write;
  std::unique_ptr<z_stream_s, S_Free> m_stream;  // none: there was no memory
};

}  // namespace Host

#endif  // VELAGNSS_APPS_GZIP_STREAM_H
