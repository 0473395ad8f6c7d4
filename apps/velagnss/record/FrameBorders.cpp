#include "apps/velagnss/record/FrameBorders.h"

#include <cmath>

namespace Host {
namespace {

using namespace std::chrono;

constexpr sys_days kMjd0 = 1858y / November / 17;

// A time further from the last one than this is believed when so many frames say it.
constexpr auto kMaxJump = days(1);
constexpr unsigned int kAgreeing = 10;

// The line end after a frame that ends at `at` belongs to the frame's part of the stream.
std::uint64_t SkipLineEnd(std::span<const unsigned char> bytes, std::uint64_t begin, std::uint64_t at) {
  for (const unsigned char end : {'\r', '\n'})
    if (at >= begin && at - begin < bytes.size() && bytes[at - begin] == end) ++at;
  return at;
}

}  // namespace

C_FrameBorders::C_FrameBorders(eTimes times) : m_times(times) { m_reader.AcceptUnlisted(true); }

void C_FrameBorders::Restart() {
  m_reader.Restart();
  m_decoder.Restart();
  m_fed = 0;
  m_borders.clear();
  m_lastTime.reset();
  m_goodTime.reset();
}

void C_FrameBorders::Feed(std::span<const unsigned char> bytes) {
  const std::uint64_t begin = m_fed;
  m_borders.clear();
  if (IsBetweenFrames()) m_borders.push_back({SkipLineEnd(bytes, begin, begin), {}});
  m_reader.Feed(bytes.data(), bytes.size());
  m_fed += bytes.size();
  Pump(bytes, begin);
}

void C_FrameBorders::Finish() {
  m_borders.clear();
  m_reader.Finish();
  Pump({}, m_fed);
}

// The end of a frame is a border as well: what follows it may be noise.
void C_FrameBorders::Pump(std::span<const unsigned char> bytes, std::uint64_t begin) {
  while (const velagnss::Frame* frame = m_reader.NextFrame()) {
    if (m_times != eTimes::None)
      if (const std::optional<t_RecordTime> time = TimeOf(*frame)) m_borders.push_back({frame->offset, time});
    m_borders.push_back({SkipLineEnd(bytes, begin, frame->offset + frame->length), {}});
  }
}

std::optional<t_RecordTime> C_FrameBorders::StreamTime() const {
  const velagnss::StreamClock& clock = m_decoder.Clock();
  const velagnss::StreamClock::Utc utc = clock.UtcOf(clock.Seconds());
  if (std::isnan(utc.secondsOfDay)) return std::nullopt;
  if (m_times == eTimes::Elapsed) return t_RecordTime(microseconds(std::llround(clock.Seconds() * 1e6)));
  if (!utc.mjd) return std::nullopt;
  return kMjd0 + days(*utc.mjd) + microseconds(std::llround(utc.secondsOfDay * 1e6));
}

// Frames without a time repeat that of the last one that had it; they say nothing.
std::optional<t_RecordTime> C_FrameBorders::TimeOf(const velagnss::Frame& frame) {
  m_decoder.Decode(frame);
  const std::optional<t_RecordTime> time = StreamTime();
  if (!time || time == m_lastTime) return std::nullopt;
  const bool agrees = m_lastTime && abs(*time - *m_lastTime) <= kMaxJump;
  m_strangeTimes = agrees ? m_strangeTimes + 1 : 1;
  m_lastTime = time;
  return IsPlausible(*time) ? m_goodTime = time : std::nullopt;
}

bool C_FrameBorders::IsPlausible(t_RecordTime time) {
  return !m_goodTime || abs(time - *m_goodTime) <= kMaxJump || m_strangeTimes >= kAgreeing;
}

}  // namespace Host
