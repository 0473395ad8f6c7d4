#include "apps/velagnss/record/RecordFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <random>
#include <utility>

#include "apps/velagnss/input/Unpacker.h"
#include "apps/velagnss/record/FileNames.h"

namespace Host {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr mode_t kNewFile = 0666;  // less the umask
constexpr unsigned int kMaxNumber = 100'000;

// What a kill loses of compressed data at most.
constexpr std::uint64_t kMemberSize = 1 << 20;
constexpr auto kMemberTime = 10s;

// Bytes that come within this time are one piece of the index: a serial port hands a burst over byte by byte.
constexpr auto kPieceTime = 10ms;

std::string PartName(const std::string& name) { return name + std::string(kPartEnding); }
std::string IndexName(const std::string& name) { return name + std::string(kIndexEnding); }
fs::path DirectoryOf(const fs::path& file) { return file.has_parent_path() ? file.parent_path() : fs::path("."); }

bool Exists(const std::string& name) {
  struct stat status {};
  return ::lstat(name.c_str(), &status) == 0;
}

// Some file systems cannot synchronize what they need not.
int ErrorOf(int result) { return result == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno; }

int SyncDirectory(const std::string& file) {
  const C_FileDescriptor directory(::open(DirectoryOf(file).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return directory.IsOpen() ? ErrorOf(::fsync(directory.Get())) : errno;
}

// Never in the place of another file.
bool Rename(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  errno = EEXIST;
  return !Exists(to) && ::rename(from.c_str(), to.c_str()) == 0;
}

// The index first: a file with its final name has its index beside it. `name` becomes the one that was free. An index
// that has its name already stays where it is.
int GiveFinalName(const std::string& part, std::string& name) {
  const std::string wanted = name;
  for (unsigned int number = 1; number <= kMaxNumber; ++number) {
    name = NumberedName(wanted, number);
    if (Exists(name)) continue;
    if (Exists(IndexName(part)) && !Rename(IndexName(part), IndexName(name))) {
      if (errno == EEXIST) continue;
      return errno;
    }
    if (Rename(part, name)) return SyncDirectory(name);
    if (errno != EEXIST) return errno;
    Rename(IndexName(name), IndexName(part));
  }
  return EEXIST;
}

// Creates NAME.part under the first name that nothing has.
C_FileDescriptor CreatePart(std::string& name) {
  const std::string wanted = name;
  std::error_code ignored;
  fs::create_directories(DirectoryOf(wanted), ignored);
  for (unsigned int number = 1; number <= kMaxNumber; ++number) {
    name = NumberedName(wanted, number);
    const std::string part = PartName(name);
    C_FileDescriptor file(::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, kNewFile));
    if (!file.IsOpen() && errno != EEXIST) return file;
    if (!file.IsOpen()) continue;
    // Only now: what had the name PART until a moment ago may have become NAME.
    if (!Exists(name) && !Exists(IndexName(name))) {
      ::flock(file.Get(), LOCK_EX | LOCK_NB);
      return file;
    }
    ::unlink(part.c_str());
  }
  errno = EEXIST;
  return {};
}

}  // namespace

C_RecordFile::C_RecordFile(std::string name, bool isCompressed, const S_RecordMoment& now)
    : m_name(std::move(name)),
      m_begin(now),
      m_scale(now),
      m_salt(std::random_device()()),
      m_isCompressed(isCompressed) {}

std::shared_ptr<C_RecordFile> C_RecordFile::Create(const std::string& name, bool isCompressed,
                                                   const S_RecordMoment& now) {
  std::shared_ptr<C_RecordFile> file(new C_RecordFile(name, isCompressed, now));
  file->m_data = CreatePart(file->m_name);
  if (!file->m_data.IsOpen()) return nullptr;
  file->m_index = C_FileDescriptor(::open(IndexName(PartName(file->m_name)).c_str(),
                                          O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_NOFOLLOW | O_CLOEXEC, kNewFile));
  file->AppendToIndex(EncodeIndexHead({IsClockSet(now.utc), file->m_salt}));
  return file;
}

// A full disk takes a part of the bytes first, and reports the failure only for the next write.
bool C_RecordFile::Append(std::string_view bytes) {
  while (!bytes.empty() && m_error == 0) {
    const ssize_t written = ::write(m_data.Get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      m_error = written < 0 ? errno : EIO;
      break;
    }
    m_written += static_cast<std::uint64_t>(written);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return m_error == 0;
}

std::uint64_t C_RecordFile::Write(std::span<const unsigned char> bytes, t_SteadyTime came) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (m_isCompressed) return Compress(text, came);
  const std::uint64_t before = m_written;
  Append(text);
  const std::uint64_t taken = m_written - before;
  m_size += taken;
  NoteData(taken, came);
  return text.size() - taken;
}

std::uint64_t C_RecordFile::Compress(std::string_view bytes, t_SteadyTime came) {
  if (m_error != 0) return bytes.size();
  if (m_member == nullptr) {
    m_member = std::make_unique<C_GzipStream>([this](std::string_view packed) { return Append(packed); });
    m_memberBegin = m_written;
    m_memberTime = came;
  }
  m_memberSize += bytes.size();
  m_size += bytes.size();
  NoteData(bytes.size(), came);
  const bool isGood = m_member->Write(bytes);
  return isGood && m_memberSize < kMemberSize ? 0 : EndMember();
}

// After a failure the file ends with the last whole member.
std::uint64_t C_RecordFile::EndMember() {
  if (m_member == nullptr) return 0;
  if (m_error == 0 && !m_member->Finish() && m_error == 0) m_error = ENOMEM;
  m_member.reset();
  const std::uint64_t size = std::exchange(m_memberSize, 0);
  if (m_error == 0) {
    FlushIndex();
    return 0;
  }
  m_size -= size;
  m_piece.reset();
  m_indexWaiting.clear();
  [[maybe_unused]] const int ignored = ::ftruncate(m_data.Get(), static_cast<off_t>(m_memberBegin));
  return size;
}

std::uint64_t C_RecordFile::Flush(t_SteadyTime now) {
  if (m_member != nullptr) return now - m_memberTime >= kMemberTime ? EndMember() : 0;
  if (m_piece && TimeOf(now) - m_piece->time >= kPieceTime) FlushIndex();
  return 0;
}

void C_RecordFile::Mark(S_IndexRecord::eKind kind, std::uint64_t length, t_SteadyTime when) {
  NoteData(0, when);
  do {
    const auto part = static_cast<std::uint32_t>(std::min<std::uint64_t>(length, S_IndexRecord::kMaxLength));
    m_indexWaiting += EncodeIndexRecord({TimeOf(when), kind, part}, m_salt);
    length -= part;
  } while (length > 0);
  if (m_member == nullptr) FlushIndex();
}

void C_RecordFile::SetClock(const S_RecordMoment& now) {
  Mark(S_IndexRecord::eKind::ClockStep, 0, now.steady);
  m_scale = now;
}

std::uint64_t C_RecordFile::Complete(t_SteadyTime now) {
  const std::uint64_t lost = EndMember();
  Mark(S_IndexRecord::eKind::End, 0, now);
  return lost;
}

t_RecordTime C_RecordFile::TimeOf(t_SteadyTime steady) const {
  return m_scale.utc + std::chrono::duration_cast<std::chrono::microseconds>(steady - m_scale.steady);
}

// The piece that is being collected is closed by a later one, by one that would make it too long, and by size 0.
void C_RecordFile::NoteData(std::uint64_t size, t_SteadyTime came) {
  const t_RecordTime time = TimeOf(came);
  const bool joins =
      m_piece && size > 0 && time - m_piece->time < kPieceTime && size <= S_IndexRecord::kMaxLength - m_piece->length;
  if (m_piece && !joins) {
    m_indexWaiting += EncodeIndexRecord(*m_piece, m_salt);
    m_piece.reset();
    if (m_member == nullptr) AppendToIndex(std::exchange(m_indexWaiting, {}));
  }
  if (size == 0) return;
  if (!m_piece) m_piece = {time, S_IndexRecord::eKind::Data, 0};
  m_piece->length += static_cast<std::uint32_t>(size);
}

void C_RecordFile::FlushIndex() {
  NoteData(0, m_scale.steady);
  AppendToIndex(std::exchange(m_indexWaiting, {}));
}

// An index that could not be written has no further records: they would be at the wrong place.
void C_RecordFile::AppendToIndex(const std::string& bytes) {
  if (!m_index.IsOpen() || bytes.empty()) return;
  if (::write(m_index.Get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) m_index.Close();
}

int C_RecordFile::Sync() {
  if (!m_isDirectorySynced) SyncDirectory(m_name);
  m_isDirectorySynced = true;
  return ErrorOf(::fdatasync(m_data.Get()));
}

int C_RecordFile::Settle() {
  const std::string part = PartName(m_name);
  if (m_size == 0) {
    ::unlink(IndexName(part).c_str());
    return ::unlink(part.c_str()) == 0 ? 0 : errno;
  }
  const int lost = ErrorOf(::fsync(m_data.Get()));
  if (m_index.IsOpen()) ::fsync(m_index.Get());
  const int named = GiveFinalName(part, m_name);
  return lost != 0 ? lost : named;
}

namespace {

struct S_Whole {
  std::uint64_t packed = 0;  // bytes of the file
  std::uint64_t plain = 0;
};

// The whole members at the beginning of compressed data.
S_Whole FindWholeMembers(int file) {
  constexpr std::size_t kBufferSize = 1 << 16;
  std::vector<unsigned char> packed(kBufferSize), plain(kBufferSize);
  std::span<const unsigned char> rest;
  S_Whole whole, now;
  std::unique_ptr<C_Unpacker> unpacker = MakeUnpacker(eCodec::Gzip);
  for (;;) {
    if (rest.empty()) {
      const ssize_t got = ::read(file, packed.data(), packed.size());
      if (got <= 0) return whole;
      rest = std::span(packed).first(static_cast<std::size_t>(got));
    }
    const C_Unpacker::S_Step step = unpacker->Unpack(rest, plain);
    rest = rest.subspan(step.taken);
    now.packed += step.taken;
    now.plain += step.given;
    if (step.outcome == C_Unpacker::eOutcome::Damaged) return whole;
    if (step.outcome == C_Unpacker::eOutcome::More) continue;
    whole = now;
    unpacker = MakeUnpacker(eCodec::Gzip);
  }
}

// How many bytes were recorded in the file, uncompressed; damage at its end is cut off.
std::uint64_t RepairData(int file, bool isCompressed) {
  struct stat status {};
  if (::fstat(file, &status) != 0) return 0;
  if (!isCompressed) return static_cast<std::uint64_t>(status.st_size);
  const S_Whole whole = FindWholeMembers(file);
  [[maybe_unused]] const int ignored = ::ftruncate(file, static_cast<off_t>(whole.packed));
  return whole.plain;
}

}  // namespace

std::optional<S_Adopted> AdoptPart(const fs::path& path) {
  const std::string& part = path.native();
  // In a directory that others can write to, a link may lead to any file of ours, which repairing would cut.
  const C_FileDescriptor file(::open(part.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  if (::flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
  S_Adopted adopted;
  adopted.name = part.substr(0, part.size() - kPartEnding.size());
  adopted.size = RepairData(file.Get(), adopted.name.ends_with(kPackedEnding));
  if (adopted.size == 0) {
    ::unlink(IndexName(part).c_str());
    ::unlink(part.c_str());
    return S_Adopted{};
  }
  // The program may have stopped between the two renamings.
  const bool isIndexNamed = !Exists(IndexName(part)) && Exists(IndexName(adopted.name)) && !Exists(adopted.name);
  if (isIndexNamed) Rename(IndexName(adopted.name), IndexName(part));
  if (!RepairIndex(IndexName(part), adopted.size) || ::fsync(file.Get()) != 0) adopted.error = errno;
  if (adopted.error == 0) adopted.error = GiveFinalName(part, adopted.name);
  return adopted;
}

}  // namespace Host
