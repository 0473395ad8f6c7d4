// Positions for casters that choose their corrections by where the receiver is: the sentence GGA of NMEA 0183.
#ifndef VELAGNSS_APPS_POSITION_FEED_H
#define VELAGNSS_APPS_POSITION_FEED_H

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace Host {

// A sentence GGA of any talker as one of GPS, "$GPGGA,...*hh" without its line end: some casters know no other. Nothing
// when `sentence` is something else, has a bad checksum, or no position that a caster could use.
std::optional<std::string> AsGpsGga(std::string_view sentence);

// In place of a fixed position: that of another source of the run.
inline constexpr std::string_view kPositionOfStream = "stream";

struct S_FixedPosition {
  double latitude;   // degrees
  double longitude;  // degrees
  double height;     // m above the ellipsoid
};

// "48.1,11.5,560"; nothing for any other text.
std::optional<S_FixedPosition> ReadFixedPosition(std::string_view text);

// The same form of sentence for a position that does not change.
std::string FixedGga(const S_FixedPosition& position, std::chrono::system_clock::time_point now);

// The latest positions in the sources of a run. Used by the threads of all of them.
class C_PositionFeed {
 public:
  using t_Clock = std::chrono::steady_clock;

  void Note(const std::string& source, std::string gga, t_Clock::time_point now);

  // Of any source but `asking`, as AsGpsGga returns it, not older than a minute.
  std::optional<std::string> Latest(const std::string& asking, t_Clock::time_point now) const;

 private:
  struct S_Note {
    std::string gga;
    t_Clock::time_point at;
  };
  mutable std::mutex m_mutex;
  std::map<std::string, S_Note> m_notes;
};

// Finds these sentences in the bytes of a source.
class C_PositionScanner {
 public:
  C_PositionScanner(std::string source, C_PositionFeed* feed) : m_source(std::move(source)), m_feed(feed) {}

  void Take(std::span<const unsigned char> bytes);

 private:
  void TakeByte(char byte);

  const std::string m_source;
  C_PositionFeed* const m_feed;  // null: nobody wants to know
  std::string m_sentence;        // from its '$' on; empty outside of one
};

}  // namespace Host

#endif  // VELAGNSS_APPS_POSITION_FEED_H
