#include "rtcm3/Rtcm3Decoder.h"

#include <array>

#include "framing/CRC24.h"
#include "records/ResultCodes.h"
#include "rtcm3/State.h"

namespace velagnss {
namespace {

using namespace rtcm3;

constexpr std::size_t kHeader = 1 + 2;  // preamble, length
constexpr std::size_t kChecksum = 3;
constexpr unsigned char kPreamble = 0xD3;
constexpr unsigned int kNumberBits = 12;

// Messages of the numbers from `first` to `last`.
struct DispatchRow {
  unsigned short first, last;
  t_DecodeMessage* decode;
};
// clang-format off
constexpr DispatchRow kDispatch[] = {
    {  63,   63, &DecodeKeplerEphemeris},  // an early number of 1042
    {1001, 1004, &DecodeLegacyObservations},
    {1005, 1006, &DecodeStation},
    {1007, 1008, &DecodeAntenna},
    {1009, 1012, &DecodeLegacyObservations},
    {1013, 1013, &DecodeSystemParameters},
    {1019, 1019, &DecodeKeplerEphemeris},
    {1020, 1020, &DecodeGlonassEphemeris},
    {1029, 1029, &DecodeText},
    {1030, 1031, &DecodeResiduals},
    {1032, 1032, &DecodeStation},
    {1033, 1033, &DecodeAntenna},
    {1041, 1042, &DecodeKeplerEphemeris},
    {1044, 1046, &DecodeKeplerEphemeris},
    {1057, 1068, &DecodeSsr},
    {1071, 1077, &DecodeMsm}, {1081, 1087, &DecodeMsm}, {1091, 1097, &DecodeMsm}, {1101, 1107, &DecodeMsm},
    {1111, 1117, &DecodeMsm}, {1121, 1127, &DecodeMsm}, {1131, 1137, &DecodeMsm},
    {1230, 1230, &DecodeGlonassBiases},
    {1240, 1245, &DecodeSsr},
    {1258, 1263, &DecodeSsr},
    {1303, 1303, &DecodeResiduals},
};
// clang-format on

// By message number the index of its row plus 1; 0: not decoded.
constexpr auto kRowOf = [] {
  std::array<unsigned char, 1U << kNumberBits> rows{};
  for (std::size_t row = 0; row < std::size(kDispatch); ++row)
    for (unsigned int number = kDispatch[row].first; number <= kDispatch[row].last; ++number)
      rows[number] = static_cast<unsigned char>(row + 1);
  return rows;
}();

unsigned int CheckFrame(const unsigned char* frame, std::size_t length) {
  if (frame == nullptr) return eResultNull;
  if (length < kHeader + kChecksum) return eResultTooShort;
  if (frame[0] != kPreamble || (frame[1] & 0xFC) != 0) return eResultBadSync;
  const std::size_t expected = kHeader + (frame[1] << 8 | frame[2]) + kChecksum;
  if (length < expected) return eResultTooShort;
  if (length > expected) return eResultTooLong;
  return C_CRC24::ComputeCRC(frame, static_cast<unsigned short>(length)) == 0 ? eResultOk : eResultChecksum;
}

}  // namespace

class Rtcm3Decoder::Impl {
 public:
  void Decode(const unsigned char* frame, std::size_t length);

  State m_state;
  Rtcm3Decoded m_decoded;

 private:
  unsigned int DecodePayload();

  Payload m_payload;
};

void Rtcm3Decoder::Impl::Decode(const unsigned char* frame, std::size_t length) {
  m_decoded.message = 0;
  m_decoded.record.emplace<std::monostate>();
  m_decoded.result = CheckFrame(frame, length);
  if (m_decoded.result != eResultOk) return;
  const std::size_t size = length - kHeader - kChecksum;
  m_payload.Assign(frame + kHeader, size);
  m_decoded.result = DecodePayload();
  const bool isFilled = m_decoded.result == eResultOk || m_decoded.result == eResultNoSeed;
  if (!isFilled || std::holds_alternative<std::monostate>(m_decoded.record))
    m_decoded.record.emplace<Rtcm3Payload>(Rtcm3Payload{m_decoded.message, frame + kHeader, size});
}

unsigned int Rtcm3Decoder::Impl::DecodePayload() {
  BitReader reader(m_payload);
  if (reader.BitsLeft() < kNumberBits) return eResultPastEnd;
  const auto number = static_cast<unsigned int>(reader.Read(kNumberBits));
  m_decoded.message = static_cast<unsigned short>(number);
  const unsigned char row = kRowOf[number];
  return row == 0 ? eResultOk : kDispatch[row - 1].decode(m_state, reader, number, m_decoded.record);
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
