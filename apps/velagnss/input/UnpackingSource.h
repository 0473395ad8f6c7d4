// A source whose bytes may be compressed: gzip, bzip2, xz or Zstandard, recognized by content.
#ifndef VELAGNSS_APPS_UNPACKING_SOURCE_H
#define VELAGNSS_APPS_UNPACKING_SOURCE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/input/FileKinds.h"

struct archive;

namespace Host {

// Plain bytes pass through unchanged, and as soon as they come. Compressed data may consist of several members or
// frames and may be compressed more than once. Another container is a failure that names it. Of data that is damaged or
// cut short, what could be unpacked before is delivered, and then the failure.
class C_UnpackingSource : public C_ByteSource {
 public:
  explicit C_UnpackingSource(C_ByteSource& source) : m_source(source) {}

  const std::string& Name() const override { return m_source.Name(); }
  std::uint64_t Size() const override { return m_source.Size(); }
  std::uint64_t Consumed() const override { return m_source.Consumed(); }

  // Unpacked bytes may be ready although the source has none: from then on `Read` waits itself.
  int Descriptor() const override { return m_state == eState::Unpacking ? -1 : m_source.Descriptor(); }

  // `buffer` must hold at least a signature.
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;

 private:
  enum class eState { Guessing, Plain, Unpacking };
  struct S_Free {
    void operator()(archive* reader) const;
  };

  eRead Guess(std::span<unsigned char> buffer, S_Chunk& chunk);
  eRead BeginUnpacking(std::span<unsigned char> buffer, S_Chunk& chunk);
  eRead Unpack(std::span<unsigned char> buffer, S_Chunk& chunk);
  eRead End();
  eRead RefuseContainer(const S_FileKind& kind, std::string_view where);
  eRead ReportDamage();
  static long TakePacked(archive*, void* self, const void** bytes);
  long ReadPacked();
  void WaitForSource() const;

  C_ByteSource& m_source;
  eState m_state = eState::Guessing;
  const S_FileKind* m_kind = nullptr;
  std::vector<unsigned char> m_head;    // read, but not handed on
  std::vector<unsigned char> m_packed;  // that the unpacker works on
  std::uint64_t m_packedSize = 0;       // bytes given to the unpacker
  bool m_isFirst = true;                // no unpacked byte has come yet
  bool m_sourceFailed = false;          // reported
  std::unique_ptr<archive, S_Free> m_reader;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_UNPACKING_SOURCE_H
