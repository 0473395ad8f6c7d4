// The times at which the bytes of a recording came, in a file beside it.
//
// All numbers are little endian. The file begins with a head of 32 bytes:
//
//   0  8 bytes  "VGNSSIDX"
//   8  u16      version, 1
//  10  u8       clock: 0 UTC, 1 not set when the file was begun
//  11  u8       0
//  12  u32      salt, a random number
//  16  u64      position in the data of the first byte that is indexed
//  24  u32      0
//  28  u32      CRC-32 (ISO 3309) of bytes 0 to 27
//
// Records of 16 bytes follow, each appended by one write after the data it describes:
//
//   0  u64      microseconds since 1970-01-01, UTC
//   8  u32      length in bits 0 to 27, kind in bits 28 to 31
//  12  u32      CRC-32 of bytes 0 to 11 and the four bytes of the salt
//
// The position of a piece in the data is the sum of the lengths before it, those of gaps left out. Times run on from
// that of the first piece by a clock that is never set; they jump only after a record that says so. Of a compressed
// recording, positions and lengths count the bytes before compression.
#ifndef VELAGNSS_APPS_ARRIVAL_INDEX_H
#define VELAGNSS_APPS_ARRIVAL_INDEX_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/record/RecordClock.h"

namespace Host {

struct S_IndexRecord {
  enum class eKind : std::uint8_t {
    Data,       // bytes that came at this time
    Gap,        // bytes that were lost here: they came and could not be written
    Reconnect,  // the source was opened anew; length 0
    ClockStep,  // the clock was set: times after this one are on another scale; length 0
    Unindexed,  // bytes whose times are lost
    End,        // the file was closed in good order; length 0
  };
  static constexpr std::uint32_t kMaxLength = (1U << 28) - 1;
  static constexpr std::size_t kSize = 16;

  t_RecordTime time;
  eKind kind;
  std::uint32_t length;

  bool HasData() const { return kind == eKind::Data || kind == eKind::Unindexed; }
};

struct S_IndexHead {
  static constexpr std::size_t kSize = 32;

  bool isClockSet;
  std::uint32_t salt;
  std::uint64_t firstPosition = 0;
};

std::string EncodeIndexHead(const S_IndexHead& head);
std::string EncodeIndexRecord(const S_IndexRecord& record, std::uint32_t salt);

// Reads an index from its beginning.
class C_IndexReader {
 public:
  // False when there is none, or it is not one.
  bool Open(const std::string& name);

  // Nothing at the end, and where the rest cannot be trusted: a torn or damaged record ends the index.
  std::optional<S_IndexRecord> Next();

  const S_IndexHead& Head() const { return m_head; }
  std::uint64_t DataSize() const { return m_dataSize; }  // of the records so far, with what comes before the first
  std::uint64_t Size() const { return m_size; }          // of the file up to the last record

 private:
  C_FileDescriptor m_file;
  S_IndexHead m_head{};
  std::uint64_t m_dataSize = 0;
  std::uint64_t m_size = 0;
};

// Makes an index whose writer did not finish agree with `dataSize` bytes of data: a damaged end is cut off, records of
// data that is not there go, data without records gets one without a time of its own. False (`errno`) when the file
// cannot be changed; true, and nothing done, when there is no index.
bool RepairIndex(const std::string& name, std::uint64_t dataSize);

}  // namespace Host

#endif  // VELAGNSS_APPS_ARRIVAL_INDEX_H
