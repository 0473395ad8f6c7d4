// When the bytes of an input came.
#ifndef VELAGNSS_APPS_ARRIVAL_TIMES_H
#define VELAGNSS_APPS_ARRIVAL_TIMES_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/record/ArrivalIndex.h"

namespace Host {

// The times of a live source come with its bytes, those of a recording from the index beside it.
class C_ArrivalTimes {
 public:
  // `name` is that of the input.
  explicit C_ArrivalTimes(const std::string& name);

  void NoteBytes(std::uint64_t size, t_Arrival arrival);

  // When the byte at `position` of the input came. Nothing: that is not known, or the clock was not set then. Positions
  // ascend.
  std::optional<t_RecordTime> At(std::uint64_t position);

 private:
  // Far more than a frame can be cut into, while a false start may hold frames back.
  static constexpr std::size_t kMaxPieces = 4096;

  struct S_Piece {
    std::uint64_t end;  // position of the byte after it
    std::optional<t_RecordTime> time;
  };

  bool ReadIndex();
  void Append(std::uint64_t size, std::optional<t_RecordTime> time);

  std::deque<S_Piece> m_pieces;
  std::uint64_t m_begin = 0;  // position of the first piece
  std::uint64_t m_end = 0;    // of the byte after the last one
  C_IndexReader m_index;
  bool m_hasIndex;
  bool m_isClockSet = false;  // at this place of the index
};

}  // namespace Host

#endif  // VELAGNSS_APPS_ARRIVAL_TIMES_H
