// One file of a recording, with the index of its times: from its first byte to its final name.
#ifndef VELAGNSS_APPS_RECORD_FILE_H
#define VELAGNSS_APPS_RECORD_FILE_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/record/ArrivalIndex.h"
#include "apps/velagnss/sinks/GzipStream.h"

namespace Host {

// As long as it is written it is called NAME.part and locked. Bytes go to the operating system as they come, so that
// they survive the program; compressed ones as members of their own, which are ended from time to time. The index only
// ever speaks of bytes that have been written.
class C_RecordFile {
 public:
  // A new file called `name`, or `name` with a number where that is taken. Null (`errno`) when it cannot be created.
  static std::shared_ptr<C_RecordFile> Create(const std::string& name, bool isCompressed, const S_RecordMoment& now);

  const std::string& Name() const { return m_name; }
  std::uint64_t Size() const { return m_size; }  // bytes it was given, before compression
  t_RecordTime BeginTime() const { return m_begin.utc; }
  t_SteadyTime BeginSteady() const { return m_begin.steady; }

  // What could not be written of these bytes and of those that still waited for compression: 0, or the file takes no
  // more and `Error` tells why.
  std::uint64_t Write(std::span<const unsigned char> bytes, t_SteadyTime came);

  // Ends what is being compressed once there is enough of it, or it has waited long enough. Returns as `Write` does.
  std::uint64_t Flush(t_SteadyTime now);

  // Notes in the index what happened here.
  void Mark(S_IndexRecord::eKind kind, std::uint64_t length, t_SteadyTime when);

  // The clock was set: from now on times are by its new state.
  void SetClock(const S_RecordMoment& now);

  // The last of the data and of the index. Returns as `Write` does.
  std::uint64_t Complete(t_SteadyTime now);

  int Error() const { return m_error; }
  bool HasWholeIndex() const { return m_index.IsOpen(); }

  // For the thread that waits for the disk: what is written is made to survive a power cut. Returns 0 or an error.
  int Sync();

  // After `Complete`: the same, and the file gets its final name; one without a byte is removed. Returns 0 or an error.
  int Settle();

 private:
  C_RecordFile(std::string name, bool isCompressed, const S_RecordMoment& now);

  bool Append(std::string_view bytes);
  std::uint64_t Compress(std::string_view bytes, t_SteadyTime came);
  std::uint64_t EndMember();
  void AppendToIndex(const std::string& bytes);
  void NoteData(std::uint64_t size, t_SteadyTime came);
  void FlushIndex();
  t_RecordTime TimeOf(t_SteadyTime steady) const;

  std::string m_name;
  const S_RecordMoment m_begin;
  S_RecordMoment m_scale;  // of the times in the index
  C_FileDescriptor m_data;
  C_FileDescriptor m_index;
  std::uint32_t m_salt;
  int m_error = 0;
  std::uint64_t m_size = 0;
  std::uint64_t m_written = 0;           // in the data file
  std::string m_indexWaiting;            // records of bytes that are not written yet
  std::optional<S_IndexRecord> m_piece;  // to which what follows at once is added
  bool m_isDirectorySynced = false;

  const bool m_isCompressed;
  std::unique_ptr<C_GzipStream> m_member;
  std::uint64_t m_memberBegin = 0;  // in the data file
  std::uint64_t m_memberSize = 0;   // before compression
  t_SteadyTime m_memberTime;
};

// Brings a file that was being written when the program stopped to a good end: a compressed one is cut after its last
// whole member, its index is repaired, and it gets its final name. Nothing when another program still writes it;
// otherwise the name, empty when there was nothing in it.
struct S_Adopted {
  std::string name;
  std::uint64_t size = 0;  // bytes in the file
  int error = 0;
};
std::optional<S_Adopted> AdoptPart(const std::filesystem::path& part);

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_FILE_H
