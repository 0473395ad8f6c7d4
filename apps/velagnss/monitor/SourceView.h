// What the monitor knows of one source at one moment: plain data, bounded, and safe to hand to another thread.
#ifndef VELAGNSS_APPS_SOURCE_VIEW_H
#define VELAGNSS_APPS_SOURCE_VIEW_H

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/text/TimeText.h"
#include "framing/RawDataMessage.h"

namespace Host {

inline constexpr double kNoAge = std::numeric_limits<double>::quiet_NaN();

// A value and how old it is.
template <class Value>
struct S_Aged {
  Value value;
  double age = kNoAge;   // s; NaN while the stream has no time
  bool isStale = false;  // newer ones should have come
};

// The state of a source, as a tab shows it.
enum class eSourceState : unsigned char {
  Waiting,    // no byte yet
  Receiving,  // frames come
  NoFrames,   // bytes come, but no frames
  Silent,     // nothing has come for a while
  Lost,       // the link is down and tried again
  Failed,     // for good
  Ended,
};
inline constexpr std::size_t kNumSourceStates = static_cast<std::size_t>(eSourceState::Ended) + 1;

// The link of a live source.
struct S_LinkView {
  std::string state;  // in words: "connected", "lost"; empty for other sources
  std::string text;   // the other end, or why
  double age = kNoAge;
  unsigned int failures = 0;    // in a row
  std::uint64_t connected = 0;  // how many times
  std::uint64_t lost = 0;       // how many times
};

// Speed and course over ground.
struct S_Motion {
  double speedKnots = NA_DOUBLE;
  double courseTrue = NA_DOUBLE;  // degrees
};

// What the sentences say of the fix.
struct S_Fix {
  bool hasPosition = false;                  // false: the sentences for a position came without one
  eNmeaModeIndicator kind = eNmeaModeEmpty;  // of the position
  char type = '\0';                          // of GSA: '1' none, '2' 2D, '3' 3D; NUL when none came
};

struct S_Dops {
  double pdop = NA_DOUBLE;
  double hdop = NA_DOUBLE;
  double vdop = NA_DOUBLE;
};

struct S_SatelliteCounts {
  std::optional<unsigned int> used;
  std::optional<unsigned int> inView;
};

// Satellites by system and number. They do not change any more: they are shared, not copied.
using t_Sky = std::shared_ptr<const std::vector<S_EpochSatellite>>;

// A reference station of RTCM 3.
struct S_StationView {
  unsigned short number = 0;
  double latitude = NA_DOUBLE;   // degrees, of the antenna reference point
  double longitude = NA_DOUBLE;  // degrees
  double height = NA_DOUBLE;     // m above the ellipsoid
  std::string receiver;          // as sent; may be empty, as the next one
  std::string antenna;
  std::optional<S_Aged<t_Sky>> sky;  // of its last epoch
  bool isReceiver = false;           // it also sends the sentences, and its satellites are theirs
};

struct S_MessageView {
  std::string protocol;
  std::string name;  // empty for protocols that name none
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
  std::uint64_t faults = 0;  // right checksum, wrong contents
  double rate = kNoAge;      // per second
  double age = kNoAge;       // s since the last one
  bool isStale = false;
};

struct S_FaultView {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;  // bytes; 0 while it goes on
  std::string what;          // the message, or "skipped"
  std::string why;
  C_TimeText when;  // of the stream, or when it came by the machine's clock; may be empty
};

// One JSON object as `decode` writes it: plain ASCII without a line end.
struct S_RawObject {
  std::uint64_t number = 0;  // counts the objects of the source from 1
  std::string name;          // of the message; empty for an event
  std::string json;          // the end is cut off when it is very long
  std::string bytes;         // of the frame; empty for an event
  C_RawDataMessage::eProtocols protocol = C_RawDataMessage::eNoProtocol;
  unsigned int message = 0;
  double seconds = 0;  // the stream's time
};

struct S_SourceView {
  std::string name;
  eSourceState state = eSourceState::Waiting;
  double silence = kNoAge;  // s since the last byte, by the machine's clock
  S_LinkView link;

  std::optional<S_Aged<C_TimeText>> time;  // UTC of the stream
  std::optional<S_Aged<S_Position>> position;
  std::optional<S_Aged<S_Motion>> motion;
  std::optional<S_Aged<S_Fix>> fix;
  std::optional<S_Aged<S_Dops>> dops;
  std::optional<S_Aged<S_SatelliteCounts>> counts;
  std::optional<S_Aged<velagnss::GstRecord>> accuracy;
  std::optional<S_Aged<t_Sky>> sky;     // of the receiver that sends the sentences
  std::vector<S_StationView> stations;  // by number

  std::uint64_t bytes = 0;
  std::uint64_t framesGood = 0;
  std::uint64_t framesBad = 0;      // starts whose body failed
  std::uint64_t bytesSkipped = 0;   // of no frame
  std::uint64_t contentFaults = 0;  // good frames with wrong contents
  double bytesPerSecond = kNoAge;
  double framesPerSecond = kNoAge;

  std::vector<S_MessageView> messages;  // by protocol and name
  std::uint64_t messagesLeftOut = 0;    // frames of messages beyond those
  std::uint64_t faultCount = 0;
  std::vector<S_FaultView> faults;                      // the newest first
  std::vector<std::shared_ptr<const S_RawObject>> raw;  // the newest first
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_VIEW_H
