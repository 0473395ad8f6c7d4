#include "apps/velagnss/input/UnpackingSource.h"

#include <archive.h>
#include <archive_entry.h>
#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <new>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

constexpr std::size_t kPackedSize = 1 << 16;  // bytes to read at once

}  // namespace

void C_UnpackingSource::S_Free::operator()(archive* reader) const { ::archive_read_free(reader); }

C_ByteSource::eRead C_UnpackingSource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  if (m_state == eState::Plain) return m_source.Read(buffer, chunk);
  return m_state == eState::Guessing ? Guess(buffer, chunk) : Unpack(buffer, chunk);
}

// Bytes that may begin a signature wait for those after them.
C_ByteSource::eRead C_UnpackingSource::Guess(std::span<unsigned char> buffer, S_Chunk& chunk) {
  const auto rest = std::copy(m_head.begin(), m_head.end(), buffer.begin());
  const eRead read = m_source.Read({rest, buffer.end()}, chunk);
  if (read == eRead::Nothing || read == eRead::Failed) return read;
  const std::size_t size = m_head.size() + (read == eRead::Bytes ? chunk.bytes.size() : 0);
  const S_KindGuess guess = GuessKind(buffer.first(size));
  m_head.assign(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(size));
  if (guess.kind == nullptr && guess.needsMore && read == eRead::Bytes) return eRead::Nothing;
  if (guess.kind != nullptr && !guess.kind->advice.empty()) return RefuseContainer(*guess.kind, "is");
  if (guess.kind != nullptr) {
    m_kind = guess.kind;
    return BeginUnpacking(buffer, chunk);
  }
  m_state = eState::Plain;
  m_head.clear();
  chunk = {buffer.first(size), S_Chunk::t_Clock::now()};
  return size == 0 ? eRead::End : eRead::Bytes;
}

C_ByteSource::eRead C_UnpackingSource::BeginUnpacking(std::span<unsigned char> buffer, S_Chunk& chunk) {
  m_state = eState::Unpacking;
  m_packed.resize(kPackedSize);
  m_reader.reset(::archive_read_new());
  if (m_reader == nullptr) throw std::bad_alloc();
  for (const auto supportFilter : {&::archive_read_support_filter_gzip, &::archive_read_support_filter_bzip2,
                                   &::archive_read_support_filter_xz, &::archive_read_support_filter_zstd})
    supportFilter(m_reader.get());
  ::archive_read_support_format_raw(m_reader.get());
  ::archive_read_support_format_empty(m_reader.get());
  archive_entry* entry = nullptr;
  if (::archive_read_open(m_reader.get(), this, nullptr, &TakePacked, nullptr) != ARCHIVE_OK) return ReportDamage();
  const int result = ::archive_read_next_header(m_reader.get(), &entry);
  if (result == ARCHIVE_EOF) return End();
  return result == ARCHIVE_OK ? Unpack(buffer, chunk) : ReportDamage();
}

C_ByteSource::eRead C_UnpackingSource::Unpack(std::span<unsigned char> buffer, S_Chunk& chunk) {
  const la_ssize_t size = ::archive_read_data(m_reader.get(), buffer.data(), buffer.size());
  if (size == ARCHIVE_RETRY || SignalReceived() != 0) return eRead::Nothing;
  if (size < 0) return ReportDamage();
  if (size == 0) return End();
  chunk = {buffer.first(static_cast<std::size_t>(size)), S_Chunk::t_Clock::now()};
  if (!std::exchange(m_isFirst, false)) return eRead::Bytes;
  const S_FileKind* const kind = GuessKind(chunk.bytes).kind;
  return kind == nullptr ? eRead::Bytes : RefuseContainer(*kind, "contains");
}

// What follows may be padding, or data that somebody misses.
C_ByteSource::eRead C_UnpackingSource::End() {
  const auto used = static_cast<std::uint64_t>(std::max<la_int64_t>(::archive_filter_bytes(m_reader.get(), -1), 0));
  if (used < m_packedSize || ReadPacked() > 0)
    ReportWarning(fmt::format("{}: what follows its {} from byte {} on is ignored", Name(), m_kind->name, used));
  return m_sourceFailed ? eRead::Failed : eRead::End;
}

C_ByteSource::eRead C_UnpackingSource::RefuseContainer(const S_FileKind& kind, std::string_view where) {
  ReportError(
      fmt::format("{}: {} {}; {}", Name(), where, kind.name, kind.advice.empty() ? "unpack it first" : kind.advice));
  return eRead::Failed;
}

// The unpacker reads blocks and does not know the exact place of a fault.
C_ByteSource::eRead C_UnpackingSource::ReportDamage() {
  if (m_sourceFailed) return eRead::Failed;
  const char* const reason = ::archive_error_string(m_reader.get());
  ReportError(fmt::format(
      "{}: the {} are damaged or cut short in the first {} bytes: {}; what was unpacked before is in the output",
      Name(), m_kind->name, m_packedSize, reason == nullptr ? "no reason known" : reason));
  return eRead::Failed;
}

long C_UnpackingSource::TakePacked(archive*, void* self, const void** bytes) {
  auto& source = *static_cast<C_UnpackingSource*>(self);
  *bytes = source.m_packed.data();
  return source.ReadPacked();
}

// The number of bytes that `m_packed` now holds; 0 at the end, after a failure and after a signal.
long C_UnpackingSource::ReadPacked() {
  std::size_t size = std::min(m_head.size(), m_packed.size());
  if (size > 0) {
    std::copy_n(m_head.begin(), size, m_packed.begin());
    m_head.erase(m_head.begin(), m_head.begin() + static_cast<std::ptrdiff_t>(size));
  }
  while (size == 0 && SignalReceived() == 0) {
    S_Chunk chunk;
    const eRead read = m_source.Read(m_packed, chunk);
    m_sourceFailed = read == eRead::Failed;
    if (read == eRead::Bytes) size = chunk.bytes.size();
    if (read == eRead::End || read == eRead::Failed) break;
    if (read == eRead::Nothing) WaitForSource();
  }
  m_packedSize += size;
  return static_cast<long>(size);
}

void C_UnpackingSource::WaitForSource() const {
  pollfd waiting[] = {{m_source.Descriptor(), POLLIN, 0}, {SignalDescriptor(), POLLIN, 0}};
  ::poll(waiting, 2, -1);
}

}  // namespace Host
