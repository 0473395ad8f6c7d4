#include "apps/velagnss/record/ArrivalIndex.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string_view>

namespace Host {
namespace {

constexpr std::string_view kMagic = "VGNSSIDX";
constexpr std::uint16_t kVersion = 1;
constexpr unsigned int kKindShift = 28;
constexpr std::size_t kHeadChecked = 28;    // bytes before the checksum
constexpr std::size_t kRecordChecked = 12;  // likewise

// Times beyond it, which nothing was recorded at, would overflow where pauses are computed.
constexpr t_RecordTime kLastTime = std::chrono::sys_days(std::chrono::year(2200) / 1 / 1);

template <class Number>
void AppendNumber(std::string& bytes, Number number) {
  for (std::size_t i = 0; i < sizeof(Number); ++i) bytes += static_cast<char>((number >> (8 * i)) & 0xFF);
}

template <class Number>
Number ReadNumber(std::string_view bytes, std::size_t at) {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;)
    number = static_cast<Number>((number << 8) | static_cast<unsigned char>(bytes[at + i]));
  return number;
}

std::uint32_t Crc(std::string_view bytes) {
  return static_cast<std::uint32_t>(
      ::crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

// The salt keeps the records of an older file, on blocks of the disk that were used again, from passing for ours.
std::uint32_t RecordCrc(std::string_view bytes, std::uint32_t salt) {
  std::string checked(bytes.substr(0, kRecordChecked));
  AppendNumber(checked, salt);
  return Crc(checked);
}

bool ReadHead(std::string_view bytes, S_IndexHead& head) {
  if (!bytes.starts_with(kMagic) || ReadNumber<std::uint16_t>(bytes, 8) != kVersion) return false;
  if (ReadNumber<std::uint32_t>(bytes, kHeadChecked) != Crc(bytes.substr(0, kHeadChecked))) return false;
  head = {bytes[10] == 0, ReadNumber<std::uint32_t>(bytes, 12), ReadNumber<std::uint64_t>(bytes, 16)};
  return true;
}

// A record from `bytes`; nothing when it is damaged or of a kind that is not known.
std::optional<S_IndexRecord> ReadRecord(std::string_view bytes, std::uint32_t salt) {
  if (ReadNumber<std::uint32_t>(bytes, kRecordChecked) != RecordCrc(bytes, salt)) return std::nullopt;
  const auto word = ReadNumber<std::uint32_t>(bytes, 8);
  const std::uint32_t kind = word >> kKindShift;
  if (kind > static_cast<std::uint32_t>(S_IndexRecord::eKind::End)) return std::nullopt;
  const auto time = static_cast<std::int64_t>(ReadNumber<std::uint64_t>(bytes, 0));
  if (time < 0 || time > kLastTime.time_since_epoch().count()) return std::nullopt;
  return S_IndexRecord{t_RecordTime(std::chrono::microseconds(time)), S_IndexRecord::eKind{static_cast<uint8_t>(kind)},
                       word & S_IndexRecord::kMaxLength};
}

bool ReadAll(int descriptor, std::span<char> bytes) {
  std::size_t have = 0;
  while (have < bytes.size()) {
    const ssize_t got = ::read(descriptor, bytes.data() + have, bytes.size() - have);
    if (got <= 0) return false;
    have += static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

std::string EncodeIndexHead(const S_IndexHead& head) {
  std::string bytes(kMagic);
  AppendNumber(bytes, kVersion);
  AppendNumber(bytes, static_cast<std::uint16_t>(head.isClockSet ? 0 : 1));
  AppendNumber(bytes, head.salt);
  AppendNumber(bytes, head.firstPosition);
  AppendNumber(bytes, std::uint32_t{0});
  AppendNumber(bytes, Crc(bytes));
  return bytes;
}

std::string EncodeIndexRecord(const S_IndexRecord& record, std::uint32_t salt) {
  std::string bytes;
  AppendNumber(bytes, static_cast<std::uint64_t>(record.time.time_since_epoch().count()));
  AppendNumber(bytes, record.length | static_cast<std::uint32_t>(record.kind) << kKindShift);
  AppendNumber(bytes, RecordCrc(bytes, salt));
  return bytes;
}

bool C_IndexReader::Open(const std::string& name) {
  m_file = C_FileDescriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, S_IndexHead::kSize> bytes{};
  if (!m_file.IsOpen() || !ReadAll(m_file.Get(), bytes) || !ReadHead({bytes.data(), bytes.size()}, m_head))
    return false;
  m_size = bytes.size();
  m_dataSize = m_head.firstPosition;
  return true;
}

std::optional<S_IndexRecord> C_IndexReader::Next() {
  std::array<char, S_IndexRecord::kSize> bytes{};
  if (!ReadAll(m_file.Get(), bytes)) return std::nullopt;
  const std::optional<S_IndexRecord> record = ReadRecord({bytes.data(), bytes.size()}, m_head.salt);
  if (!record) return std::nullopt;
  m_size += bytes.size();
  if (record->HasData()) m_dataSize += record->length;
  return record;
}

namespace {

// What an index says of `dataSize` bytes of data: the size of the index up to the last record that is true of them, and
// how many bytes these records leave over.
struct S_Agreement {
  std::uint64_t size;
  std::uint64_t dataSize;
  t_RecordTime lastTime;
};

S_Agreement FindAgreement(C_IndexReader& index, std::uint64_t dataSize) {
  S_Agreement good{index.Size(), index.DataSize(), {}};
  while (const std::optional<S_IndexRecord> record = index.Next()) {
    if (index.DataSize() > dataSize) break;
    good = {index.Size(), index.DataSize(), record->time};
    if (record->kind == S_IndexRecord::eKind::End) break;
  }
  return good;
}

}  // namespace

bool RepairIndex(const std::string& name, std::uint64_t dataSize) {
  C_IndexReader index;
  if (!index.Open(name)) return true;
  const S_Agreement good = FindAgreement(index, dataSize);
  const C_FileDescriptor file(::open(name.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC));
  if (!file.IsOpen() || ::ftruncate(file.Get(), static_cast<off_t>(good.size)) != 0) return false;
  std::string records;
  for (std::uint64_t left = dataSize - std::min(dataSize, good.dataSize); left > 0;) {
    const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, S_IndexRecord::kMaxLength));
    records += EncodeIndexRecord({good.lastTime, S_IndexRecord::eKind::Unindexed, length}, index.Head().salt);
    left -= length;
  }
  return ::write(file.Get(), records.data(), records.size()) == static_cast<ssize_t>(records.size()) &&
         ::fsync(file.Get()) == 0;
}

}  // namespace Host
