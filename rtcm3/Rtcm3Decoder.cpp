#include "rtcm3/Rtcm3Decoder.h"

#include <type_traits>

#include "rtcm3/Reading.h"
#include "rtcm3/State.h"

namespace velagnss {

class Rtcm3Decoder::Impl {
 public:
  void Decode(const unsigned char* frame, std::size_t length);

  rtcm3::State m_state;
  Rtcm3Decoded m_decoded;
};

void Rtcm3Decoder::Impl::Decode(const unsigned char* frame, std::size_t length) {
  m_decoded.message = 0;
  m_decoded.result = rtcm3::Read(frame, length, m_decoded.record);
  rtcm3::WithRtcm3Record(m_decoded.record, [this]<class T>(T& record) {
    if constexpr (!std::is_same_v<T, std::monostate>) m_decoded.message = record.message;
    if (m_decoded.result == eResultOk) m_decoded.result = rtcm3::Follow(m_state, record);
  });
}

Rtcm3Decoder::Rtcm3Decoder() : m_impl(std::make_unique<Impl>()) {}
Rtcm3Decoder::~Rtcm3Decoder() = default;

const Rtcm3Decoded& Rtcm3Decoder::Decode(const unsigned char* frame, std::size_t length) {
  m_impl->Decode(frame, length);
  return m_impl->m_decoded;
}

void Rtcm3Decoder::SeedTime(const C_GnssTime& time) { m_impl->m_state.clock.Seed(time); }
void Rtcm3Decoder::AssumeTime(const C_GnssTime& time) { m_impl->m_state.clock.Assume(time); }
bool Rtcm3Decoder::IsTimeAssumed() const { return m_impl->m_state.clock.IsAssumed(); }
void Rtcm3Decoder::NoteUtc(unsigned int mjd, std::uint32_t secondOfDay) {
  m_impl->m_state.clock.NoteOtherUtc(mjd, secondOfDay);
}
void Rtcm3Decoder::SetLeapSeconds(unsigned char seconds) { m_impl->m_state.clock.SetLeapSeconds(seconds); }

bool Rtcm3Decoder::SetGlonassChannel(unsigned char slot, signed char channel) {
  return m_impl->m_state.channels.Set(slot, channel);
}
signed char Rtcm3Decoder::GlonassChannel(unsigned char slot) const { return m_impl->m_state.channels.Of(slot); }

void Rtcm3Decoder::Reset() {
  m_impl->m_state.Clear();
  m_impl->m_decoded = {};
}

}  // namespace velagnss
