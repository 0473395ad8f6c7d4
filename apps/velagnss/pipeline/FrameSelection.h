// Which part of a stream is read: a window of its own time, and the talkers of its sentences.
#ifndef VELAGNSS_APPS_FRAME_SELECTION_H
#define VELAGNSS_APPS_FRAME_SELECTION_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/text/TimeRead.h"
#include "stream/FrameReader.h"
#include "stream/StreamClock.h"

namespace Host {

// From a time on, and up to but without another one, so that windows side by side share no frame and lose none.
//
// A frame without a time of its own has that of the stream where it comes. Before its first time, or its first date for
// a window with dates, a stream counts as earlier than any time: a window without a beginning includes that part, every
// other one excludes it. Times of day mean every day; a window whose end comes before its beginning spans midnight.
class C_TimeWindow {
 public:
  // Empty texts are missing bounds. Returns an error text for the user, or nothing.
  std::optional<std::string> Set(std::string_view from, std::string_view until);

  bool IsSet() const { return m_from || m_to; }
  bool HasDates() const { return m_hasDates; }
  bool Includes(const velagnss::StreamClock& clock) const;

 private:
  std::optional<t_Microseconds> m_from;  // since the beginning of the day, or of MJD 0
  std::optional<t_Microseconds> m_to;
  bool m_hasDates = false;
};

class C_FrameSelection {
 public:
  // These return an error text for the user, or nothing.
  std::optional<std::string> SetWindow(std::string_view from, std::string_view until) {
    return m_window.Set(from, until);
  }

  // Takes a list with commas of talkers, two characters, or "P" for proprietary sentences; in either case.
  std::optional<std::string> AddTalkers(std::string_view list);

  bool IsEverything() const { return !m_window.IsSet() && m_talkers.empty(); }
  const C_TimeWindow& Window() const { return m_window; }

  // Whether the talker of a sentence is among those named. Frames of other protocols have none, and pass.
  bool HasTalker(const velagnss::Frame& frame) const;

 private:
  C_TimeWindow m_window;
  std::vector<std::string> m_talkers;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_SELECTION_H
