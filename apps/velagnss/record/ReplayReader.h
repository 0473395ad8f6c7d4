// The pieces of recordings and the times between them.
#ifndef VELAGNSS_APPS_REPLAY_READER_H
#define VELAGNSS_APPS_REPLAY_READER_H

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "apps/velagnss/input/FileSource.h"
#include "apps/velagnss/input/UnpackingSource.h"
#include "apps/velagnss/record/ArrivalIndex.h"
#include "apps/velagnss/record/FrameBorders.h"

namespace Host {

// Bytes that came at once: by the index of times beside the file; without one, the frames from one time of the stream
// to the next.
struct S_ReplayPiece {
  std::vector<unsigned char> bytes;
  std::chrono::microseconds at{};       // since the first piece, less what was cut from pauses
  std::optional<t_RecordTime> arrival;  // when they came; by the index only
};

class C_ReplayReader {
 public:
  using t_MaxGap = std::optional<std::chrono::microseconds>;

  // The files are one recording, in this order. Longer pauses than `maxGap` are shortened to it.
  C_ReplayReader(std::vector<std::string> files, t_MaxGap maxGap);

  enum class eRead { Piece, End, Failed };

  // Failed: reported.
  eRead Next(S_ReplayPiece& piece);

 private:
  // An input that is unpacked.
  struct S_File {
    C_FileSource file;
    C_UnpackingSource unpacked{file};
    C_UnpackingSource again{unpacked, C_UnpackingSource::eLayer::Inner};
    C_UnpackingSource plain{again, C_UnpackingSource::eLayer::Last};
    C_IndexReader index;
    bool hasIndex = false;
  };

  bool OpenNext();
  bool Refill();
  bool FillByIndex(S_ReplayPiece& piece);
  bool FillByDataTime(S_ReplayPiece& piece);
  void TakeRecord(const S_IndexRecord& record);
  void Advance(t_RecordTime time);
  void Give(std::size_t size, S_ReplayPiece& piece);

  const std::vector<std::string> m_files;
  const t_MaxGap m_maxGap;
  std::size_t m_nextFile = 0;
  std::unique_ptr<S_File> m_file;
  bool m_hasFailed = false;

  std::vector<unsigned char> m_buffer;
  std::vector<unsigned char> m_bytes;  // read, not given yet
  bool m_isAtEnd = false;              // of the file
  std::chrono::microseconds m_at{};
  std::optional<t_RecordTime> m_time;  // to which `m_at` belongs; none: the next one does
  std::uint64_t m_left = 0;            // of the piece that the last record of the index speaks of
  std::optional<t_RecordTime> m_arrival;

  C_FrameBorders m_borders;
  std::uint64_t m_position = 0;      // of the first byte of `m_bytes` in what the borders have seen
  std::deque<S_Border> m_timeSteps;  // from there on
};

}  // namespace Host

#endif  // VELAGNSS_APPS_REPLAY_READER_H
