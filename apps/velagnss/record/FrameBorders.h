// Where a stream can be cut so that each part decodes as it did in the whole.
#ifndef VELAGNSS_APPS_FRAME_BORDERS_H
#define VELAGNSS_APPS_FRAME_BORDERS_H

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "apps/velagnss/record/RecordClock.h"
#include "stream/FrameReader.h"
#include "stream/RecordDecoder.h"

namespace Host {

// Cut at a border, no frame is lost and none is invented: the bytes before it are done with.
struct S_Border {
  std::uint64_t at;                  // position in the stream
  std::optional<t_RecordTime> time;  // the frame that begins here carries a new time
};

class C_FrameBorders {
 public:
  enum class eTimes {
    None,
    Dated,   // from the first date of the stream on
    Elapsed  // since the midnight before the first time of the stream; they need no date
  };
  explicit C_FrameBorders(eTimes times);

  // A new stream.
  void Restart();

  // Finds the borders of the next bytes of the stream, those that belong to frames which end in them.
  void Feed(std::span<const unsigned char> bytes);

  // The stream has ended or was interrupted: what still waits is searched.
  void Finish();

  // What the last call has found, in rising order. That the stream can be cut at its end does not show here: line ends
  // may follow.
  const std::vector<S_Border>& Borders() const { return m_borders; }

  // Bytes fed so far, and how many of them belong to no frame that may still be completed.
  std::uint64_t Fed() const { return m_fed; }
  std::uint64_t Resolved() const { return m_fed - m_reader.BytesQueued(); }
  bool IsBetweenFrames() const { return m_reader.BytesQueued() == 0; }

 private:
  std::optional<t_RecordTime> StreamTime() const;
  std::optional<t_RecordTime> TimeOf(const velagnss::Frame& frame);
  bool IsPlausible(t_RecordTime time);
  void Pump(std::span<const unsigned char> bytes, std::uint64_t begin);

  const eTimes m_times;
  velagnss::FrameReader m_reader;
  velagnss::RecordDecoder m_decoder;
  std::uint64_t m_fed = 0;
  std::vector<S_Border> m_borders;
  std::optional<t_RecordTime> m_lastTime;  // that the clock of the stream had
  std::optional<t_RecordTime> m_goodTime;  // the last that was believed
  unsigned int m_strangeTimes = 0;         // in a row, that agree with each other
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_BORDERS_H
