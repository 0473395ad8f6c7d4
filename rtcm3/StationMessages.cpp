// Reference stations: coordinates, antennas, receivers, system parameters, texts, biases, residuals of their network.
#include "records/ResultCodes.h"
#include "rtcm3/Fields.h"
#include "rtcm3/Reading.h"
#include "rtcm3/State.h"

namespace velagnss::rtcm3 {
namespace {

constexpr Scale kTenthMm = Per(10000);  // to m

using S = Rtcm3Station;
// clang-format off
constexpr Field<S> kStation[] = {  // 1005 and 1006, as far as the coordinates
    {  3, 12, kUnsigned, {},       Store<&S::station>},
    { 21,  6, kUnsigned, {},       Store<&S::itrfYear>},
    { 22,  1, kUnsigned, {},       Store<&S::servesGps>},
    { 23,  1, kUnsigned, {},       Store<&S::servesGlonass>},
    { 24,  1, kUnsigned, {},       Store<&S::servesGalileo>},
    {141,  1, kUnsigned, {},       Store<&S::isComputed>},
    { 25, 38, kSigned,   kTenthMm, Store<&S::x>},
    {142,  1, kUnsigned, {},       Store<&S::singleOscillator>},
    {  0,  1, kReserved},
    { 26, 38, kSigned,   kTenthMm, Store<&S::y>},
    {364,  2, kUnsigned, {},       Store<&S::quarterCycle>},
    { 27, 38, kSigned,   kTenthMm, Store<&S::z>},
};
constexpr Field<S> kHeight[] = {
    { 28, 16, kUnsigned, kTenthMm, Store<&S::antennaHeight>},
};
constexpr Field<S> kPhysicalStation[] = {  // 1032
    {  3, 12, kUnsigned, {},       Store<&S::station>},
    {226, 12, kUnsigned, {},       Store<&S::physicalStation>},
    { 21,  6, kUnsigned, {},       Store<&S::itrfYear>},
    { 25, 38, kSigned,   kTenthMm, Store<&S::x>},
    { 26, 38, kSigned,   kTenthMm, Store<&S::y>},
    { 27, 38, kSigned,   kTenthMm, Store<&S::z>},
};

using A = Rtcm3Antenna;
constexpr Field<A> kAntennaStation[] = {{ 3, 12, kUnsigned, {}, Store<&A::station>}};
constexpr Field<A> kSetup[] =          {{31,  8, kUnsigned, {}, Store<&A::setup>}};

using P = Rtcm3SystemParameters;
constexpr Field<P> kParameters[] = {  // 1013
    {  3, 12, kUnsigned, {}, Store<&P::station>},
    { 51, 16, kUnsigned, {}, Store<&P::mjd>},
    { 52, 17, kUnsigned, {}, Store<&P::secondOfDay>},
    { 53,  5, kUnsigned, {}, Store<&P::numAnnouncements>},
    { 54,  8, kUnsigned, {}, Store<&P::leapSeconds>},  // 255, "not available", is the marker
};
using N = Rtcm3SystemParameters::Announcement;
constexpr Field<N> kAnnouncement[] = {
    { 55, 12, kUnsigned, {},      Store<&N::message>},
    { 56,  1, kUnsigned, {},      Store<&N::isRegular>},
    { 57, 16, kUnsigned, Per(10), StoreUnless<&N::interval, 0>},
};

using M = Rtcm3Message;
constexpr Field<M> kText[] = {  // 1029; the bytes follow
    {  3, 12, kUnsigned, {}, Store<&M::station>},
    { 51, 16, kUnsigned, {}, Store<&M::mjd>},
    { 52, 17, kUnsigned, {}, Store<&M::secondOfDay>},
    {138,  7, kUnsigned, {}, Store<&M::numCharacters>},
};

// The mask of 1230 says which of the four biases follow; its highest bit is that of the first.
struct BiasMask {
  Rtcm3GlonassBiases& record;
  unsigned int mask = 0;
};
template <auto Member>
void OfRecord(BiasMask& m, std::int64_t raw, double value) {
  Assign(m.record.*Member, raw, value);
}
using B = Rtcm3GlonassBiases;
constexpr Field<BiasMask> kBiasHead[] = {
    {  3, 12, kUnsigned, {}, OfRecord<&B::station>},
    {421,  1, kUnsigned, {}, OfRecord<&B::isAligned>},
    {  0,  3, kReserved},
    {422,  4, kUnsigned, {}, Store<&BiasMask::mask>},
};
constexpr Field<B> kBiases[] = {
    {423, 16, kSigned, Per(50), Store<&B::l1Ca>},
    {424, 16, kSigned, Per(50), Store<&B::l1P>},
    {425, 16, kSigned, Per(50), Store<&B::l2Ca>},
    {426, 16, kSigned, Per(50), Store<&B::l2P>},
};

using D = Rtcm3Residuals;
void Sent(D& d, std::int64_t raw, double) { d.time.sent = static_cast<std::uint32_t>(raw); }
using Q = Rtcm3Residuals::Satellite;
// Heads of 1030, 1031 and 1303; they differ in the time.
constexpr Field<D> kGpsResiduals[] = {
    {224, 20, kUnsigned, {}, Sent},
    {  3, 12, kUnsigned, {}, Store<&D::station>},
    {223,  7, kUnsigned, {}, Store<&D::numReferences>},
    {  6,  5, kUnsigned, {}, Store<&D::numSatellites>},
};
constexpr Field<D> kGlonassResiduals[] = {
    {225, 17, kUnsigned, {}, Sent},
    {  3, 12, kUnsigned, {}, Store<&D::station>},
    {223,  7, kUnsigned, {}, Store<&D::numReferences>},
    { 35,  5, kUnsigned, {}, Store<&D::numSatellites>},
};
constexpr Field<Q> kResiduals[] = {
    {  9,  6, kUnsigned, {},       Store<&Q::svId>},
    {218,  8, kUnsigned, Per(2),   Store<&Q::constant>},
    {219,  9, kUnsigned, Per(100), Store<&Q::distance>},
    {220,  6, kUnsigned, Per(10),  Store<&Q::height>},
    {221, 10, kUnsigned, Per(2),   Store<&Q::ionoConstant>},
    {222, 10, kUnsigned, Per(100), Store<&Q::ionoDistance>},
};
// clang-format on

// A text: its length in a byte, then its bytes.
[[nodiscard]] bool ReadText(BitReader& reader, Rtcm3Text& text) {
  constexpr unsigned int kByte = 8;
  if (reader.BitsLeft() < kByte) return false;
  text.size = static_cast<unsigned char>(reader.Read(kByte));
  if (reader.BitsLeft() < kByte * text.size) return false;
  for (unsigned int i = 0; i < text.size; ++i) text.bytes[i] = static_cast<char>(reader.Read(kByte));
  text.bytes[text.size] = '\0';
  return true;
}

// The clock that a message of residuals counts.
TimeField TimeFieldOf(const D& residuals) {
  switch (residuals.system) {
    case ALGO::GNSS_GLONASS:
      return TimeField::GlonassDay;
    case ALGO::GNSS_BEIDOU:
      return TimeField::BeidouWeek;
    default:
      return TimeField::GpsWeek;
  }
}

}  // namespace

unsigned int ReadStation(BitReader& reader, unsigned int number, Rtcm3Station& station) {
  const bool isRead = number == 1032 ? ReadFields<kPhysicalStation>(reader, station)
                                     : ReadFields<kStation>(reader, station) &&
                                           (number == 1005 || ReadFields<kHeight>(reader, station));
  if (!isRead) return eResultPastEnd;
  if (station.x == 0 && station.y == 0 && station.z == 0) station.x = station.y = station.z = NA_DOUBLE;
  return eResultOk;
}

unsigned int ReadAntenna(BitReader& reader, unsigned int number, Rtcm3Antenna& antenna) {
  const bool isRead = ReadFields<kAntennaStation>(reader, antenna) && ReadText(reader, antenna.antenna) &&
                      ReadFields<kSetup>(reader, antenna) &&
                      (number == 1007 || ReadText(reader, antenna.antennaSerial)) &&
                      (number != 1033 || (ReadText(reader, antenna.receiver) && ReadText(reader, antenna.firmware) &&
                                          ReadText(reader, antenna.receiverSerial)));
  return isRead ? eResultOk : eResultPastEnd;
}

unsigned int ReadSystemParameters(BitReader& reader, unsigned int, Rtcm3SystemParameters& parameters) {
  if (!ReadFields<kParameters>(reader, parameters)) return eResultPastEnd;
  for (unsigned int i = 0; i < parameters.numAnnouncements; ++i)  // 5 bits: at most as many as there are places
    if (!ReadFields<kAnnouncement>(reader, parameters.announcements[i])) return eResultPastEnd;
  return eResultOk;
}

unsigned int Follow(State& state, Rtcm3SystemParameters& parameters) {
  if (!IsNotAvailable(parameters.leapSeconds)) state.clock.SetLeapSeconds(parameters.leapSeconds);
  state.clock.NoteUtc(parameters.mjd, parameters.secondOfDay);
  return eResultOk;
}

unsigned int ReadText(BitReader& reader, unsigned int, Rtcm3Message& message) {
  if (!ReadFields<kText>(reader, message) || !ReadText(reader, message.text)) return eResultPastEnd;
  while (message.text.size > 0 && message.text.bytes[message.text.size - 1] == '\0') --message.text.size;
  return eResultOk;
}

unsigned int Follow(State& state, Rtcm3Message& message) {
  state.clock.NoteUtc(message.mjd, message.secondOfDay);
  return eResultOk;
}

unsigned int ReadGlonassBiases(BitReader& reader, unsigned int, Rtcm3GlonassBiases& biases) {
  BiasMask head{biases};
  if (!ReadFields<kBiasHead>(reader, head)) return eResultPastEnd;
  for (const Field<B>& bias : kBiases) {
    const bool follows = (head.mask >> (std::end(kBiases) - &bias - 1) & 1) != 0;
    if (!follows) continue;
    if (reader.BitsLeft() < bias.bits) return eResultPastEnd;
    ReadField(bias, reader, biases);
  }
  return eResultOk;
}

unsigned int ReadResiduals(BitReader& reader, unsigned int number, Rtcm3Residuals& residuals) {
  const bool isGlonass = number == 1031;
  const bool isBeidou = number == 1303;
  residuals.system = isGlonass ? ALGO::GNSS_GLONASS : isBeidou ? ALGO::GNSS_BEIDOU : ALGO::GNSS_GPS;
  const bool isRead =
      isGlonass ? ReadFields<kGlonassResiduals>(reader, residuals) : ReadFields<kGpsResiduals>(reader, residuals);
  if (!isRead) return eResultPastEnd;
  for (unsigned int i = 0; i < residuals.numSatellites; ++i)  // 5 bits: at most as many as there are places
    if (!ReadFields<kResiduals>(reader, residuals.satellites[i])) return eResultPastEnd;
  return eResultOk;
}

unsigned int Follow(State& state, Rtcm3Residuals& residuals) {
  const auto time =
      state.clock.Resolve(TimeFieldOf(residuals), residuals.time.sent * static_cast<std::uint32_t>(kSecond), NA_U8);
  if (time) state.clock.Describe(*time, residuals.time);
  return eResultOk;
}

}  // namespace velagnss::rtcm3
