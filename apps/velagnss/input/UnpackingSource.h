// A source whose bytes may be compressed: gzip, bzip2, xz or Zstandard, recognized by content.
#ifndef VELAGNSS_APPS_UNPACKING_SOURCE_H
#define VELAGNSS_APPS_UNPACKING_SOURCE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/input/Unpacker.h"

namespace Host {

// Plain bytes pass through unchanged, and as soon as they come. Compressed data may consist of several members or
// frames. Another container is a failure that names it. Of data that is damaged or cut off, what could be unpacked
// before is delivered, and then the failure.
class C_UnpackingSource : public C_ByteSource {
 public:
  // For data that is compressed more than once, one of these reads another.
  enum class eLayer {
    Outer,  // the input itself
    Inner,  // what a layer above has unpacked, or plain bytes
    Last    // likewise, and it is not unpacked any further
  };
  explicit C_UnpackingSource(C_ByteSource& source, eLayer layer = eLayer::Outer) : m_source(source), m_layer(layer) {}

  const std::string& Name() const override { return m_source.Name(); }
  std::uint64_t Size() const override { return m_source.Size(); }
  std::uint64_t Consumed() const override { return m_source.Consumed(); }
  std::string Identity() const override { return m_source.Identity(); }

  // Unpacked bytes may be ready although the source has none: from then on `Read` waits itself.
  int Descriptor() const override { return m_state == eState::Unpacking ? -1 : m_source.Descriptor(); }

  // `buffer` must hold at least a signature.
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;

 private:
  enum class eState { Guessing, Plain, Unpacking };

  eRead Guess(std::span<unsigned char> buffer, S_Chunk& chunk);
  eRead Unpack(std::span<unsigned char> buffer, S_Chunk& chunk);
  bool BeginMember();
  bool Refill();
  void WaitForSource() const;
  eRead End() const;
  eRead RefuseContainer(const S_FileKind& kind) const;
  eRead ReportFault(std::string_view what) const;

  C_ByteSource& m_source;
  eLayer m_layer;
  eState m_state = eState::Guessing;
  const S_FileKind* m_kind = nullptr;
  std::vector<unsigned char> m_packed;  // bytes of the source that are not plain, or not known to be yet
  std::size_t m_used = 0;               // of these
  std::uint64_t m_usedBefore = 0;       // bytes unpacked that are no longer held
  bool m_sourceFailed = false;          // reported
  std::unique_ptr<C_Unpacker> m_unpacker;
  C_Unpacker::eOutcome m_outcome = C_Unpacker::eOutcome::More;  // that has not been dealt with
};

}  // namespace Host

#endif  // VELAGNSS_APPS_UNPACKING_SOURCE_H
