// Bodies in chunks, the transfer coding of HTTP/1.1 (RFC 9112, 7.1), which NTRIP 2 uses for streams.
#ifndef VELAGNSS_APPS_CHUNK_DECODER_H
#define VELAGNSS_APPS_CHUNK_DECODER_H

#include <cstddef>
#include <span>
#include <vector>

namespace Host {

// Takes the body in any pieces: the borders of chunks fall anywhere in frames and segments.
class C_ChunkDecoder {
 public:
  // Appends to `data` what of `bytes` is data. Nothing more is read after the end or a failure.
  void Decode(std::span<const unsigned char> bytes, std::vector<unsigned char>& data);

  bool HasEnded() const { return m_state == eState::End; }
  bool HasFailed() const { return m_state == eState::Failed; }

  // 16 MiB. A larger number is not a size but data.
  static constexpr std::size_t kMaxChunk = std::size_t{1} << 24;

 private:
  enum class eState {
    Size,       // before and in the digits
    Extension,  // after them, up to the line end
    Data,
    DataEnd,       // the line end after the data
    TrailerStart,  // after the chunk of size 0: at the start of a line
    Trailer,       // in a line
    End,
    Failed,
  };

  void TakeMark(unsigned char byte);
  void TakeDigit(unsigned char byte);
  void EndSizeLine();

  eState m_state = eState::Size;
  std::size_t m_size = 0;       // of the chunk, then what of it is to come
  std::size_t m_lineBytes = 0;  // of a size line or of all trailers
  bool m_hasDigit = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CHUNK_DECODER_H
