// The decoder of RTCM 3 contents over payloads in frames with the right checksum, and over arbitrary bytes.
// Results are those that the operation states; counts stay within their arrays and indices within their counts; numbers
// are finite; a frame that fails, by its payload or by its checksum, leaves no trace in the next ones; nothing outside
// of the frame is read, and the frame is not written.
#include "rtcm3/Rtcm3Decoder.h"

#include <cmath>
#include <memory>

#include "fuzz/Fuzz.h"
#include "tests/ExactCopy.h"
#include "tests/Streams.h"

namespace {

using namespace velagnss;

constexpr std::size_t kMaxPayload = 1023;
constexpr std::size_t kOptions = 3;  // bytes in front of the payloads: whether there is a seed, and its week
constexpr std::size_t kLength = 2;   // bytes in front of each payload

bool IsFiniteOrAbsent(double value) { return IsNotAvailable(value) || std::fabs(value) < 1e12; }

void RequireText(const Rtcm3Text& text) { Fuzz::Require(text.bytes[text.size] == '\0', "a text ends in a NUL"); }

void RequireTime(const Rtcm3Time& time) {
  Fuzz::Require(IsNotAvailable(time.seconds) || (time.seconds >= 0 && time.seconds < 604800), "seconds are of a week");
  Fuzz::Require(!IsNotAvailable(time.seconds) || IsNotAvailable(time.week), "no week without seconds");
}

void RequireOrder(const Rtcm3Observations& o) {
  RequireTime(o.time);
  Fuzz::Require(o.numSatellites <= o.kMaxSatellites && o.numSignals <= o.kMaxSignals, "counts of an epoch");
  for (unsigned int i = 0; i < o.numSignals; ++i) {
    const Rtcm3Signal& signal = o.signals[i];
    Fuzz::Require(signal.satellite < o.numSatellites, "a signal has a satellite");
    Fuzz::Require(signal.code[2] == '\0', "a code has two letters");
    for (const double value : {signal.data.Pseudorange, signal.data.CarrierPhase, signal.data.Measurement3,
                               signal.data.SignalStrength, signal.frequency, signal.phaseRange, signal.rangeRate})
      Fuzz::Require(IsFiniteOrAbsent(value), "values of a signal");
    const bool hasCycles = !IsNotAvailable(signal.phaseRange) && !IsNotAvailable(signal.frequency);
    Fuzz::Require(hasCycles == !IsNotAvailable(signal.data.CarrierPhase), "cycles need a phase and a frequency");
  }
}

void RequireOrder(const Rtcm3Ssr& ssr) {
  RequireTime(ssr.time);
  Fuzz::Require(ssr.numSatellites <= ssr.kMaxSatellites && ssr.numBiases <= ssr.kMaxBiases, "counts of a correction");
  for (unsigned int i = 0; i < ssr.numSatellites; ++i)
    Fuzz::Require(ssr.satellites[i].firstBias + ssr.satellites[i].numBiases <= ssr.numBiases, "biases of a satellite");
}

void RequireOrder(const Rtcm3Antenna& antenna) {
  for (const Rtcm3Text* text :
       {&antenna.antenna, &antenna.antennaSerial, &antenna.receiver, &antenna.firmware, &antenna.receiverSerial})
    RequireText(*text);
}

void RequireOrder(const Rtcm3Message& message) { RequireText(message.text); }
void RequireOrder(const Rtcm3Residuals& residuals) {
  RequireTime(residuals.time);
  Fuzz::Require(residuals.numSatellites <= residuals.kMaxSatellites, "satellites of residuals");
}
void RequireOrder(const Rtcm3SystemParameters& parameters) {
  Fuzz::Require(parameters.numAnnouncements <= parameters.kMaxAnnouncements, "announcements");
}
void RequireOrder(const Rtcm3KeplerEphemeris& ephemeris) {
  Fuzz::Require(IsFiniteOrAbsent(ephemeris.ephemeris.Af0) && IsFiniteOrAbsent(ephemeris.ephemeris.OmegaDot),
                "elements");
}
template <class Record>
void RequireOrder(const Record&) {}

// Whether two records hold the same, as far as what is without padding shows.
bool AreSame(const Rtcm3Decoded& a, const Rtcm3Decoded& b) {
  if (a.result != b.result || a.message != b.message || a.record.index() != b.record.index()) return false;
  const auto bytesOf = [](const auto& x) { return std::string_view(reinterpret_cast<const char*>(&x), sizeof x); };
  const auto areSameBytes = [bytesOf](const auto& x, const auto& y) { return bytesOf(x) == bytesOf(y); };
  if (const auto* k = std::get_if<Rtcm3KeplerEphemeris>(&a.record))
    return areSameBytes(k->ephemeris, std::get<Rtcm3KeplerEphemeris>(b.record).ephemeris);
  if (const auto* p = std::get_if<Rtcm3PvaEphemeris>(&a.record))
    return areSameBytes(p->ephemeris, std::get<Rtcm3PvaEphemeris>(b.record).ephemeris);
  const auto* o = std::get_if<Rtcm3Observations>(&a.record);
  if (o == nullptr) return true;
  const auto& other = std::get<Rtcm3Observations>(b.record);
  if (o->numSignals != other.numSignals || o->time.week != other.time.week || o->time.seconds != other.time.seconds)
    return false;
  return std::equal(o->signals, o->signals + o->numSignals, other.signals,
                    [&](const auto& x, const auto& y) { return x.lock == y.lock && areSameBytes(x.data, y.data); });
}

const Rtcm3Decoded& Decode(Rtcm3Decoder& decoder, const std::string& bytes) {
  ExactCopy frame(bytes);
  const Rtcm3Decoded& decoded = decoder.Decode(frame.Data(), bytes.size());
  Fuzz::RequireOneOf(decoded.result, {0, 3, 4, 8, 9, 11, 19, 20, 22}, "Decode");
  Fuzz::Require(bytes == Fuzz::View(frame.Data(), bytes.size()), "the frame is not written");
  Fuzz::Require(decoded.result != 0 || !std::holds_alternative<std::monostate>(decoded.record), "a record comes out");
  std::visit([](const auto& record) { RequireOrder(record); }, decoded.record);
  return decoded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 8 * kMaxPayload) return 0;
  static const auto decoder = std::make_unique<Rtcm3Decoder>(), disturbed = std::make_unique<Rtcm3Decoder>(),
                    third = std::make_unique<Rtcm3Decoder>();
  decoder->Reset();
  disturbed->Reset();
  Fuzz::C_Input input(data, size);
  if (input.Below(4) != 0) {
    const C_GnssTime seed(input.Value<std::uint16_t>(), 345600.0, ALGO::GNSS_GPS);
    decoder->SeedTime(seed);
    disturbed->SeedTime(seed);
  } else {
    input.Take(2);
  }
  while (!input.IsEmpty()) {
    const std::string payload = input.Take(input.Below(kMaxPayload + 1));
    const std::string frame = RtcmFrame(payload);
    Decode(*third, payload);  // hardly ever a frame
    const std::string shorter = RtcmFrame(payload.substr(0, payload.size() / 2));
    std::string damaged = frame;
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    Fuzz::Require(Decode(*disturbed, damaged).result == 4, "a wrong checksum is found");
    const unsigned int result = Decode(*disturbed, shorter).result;
    if (result == 0 || result == 22) Decode(*decoder, shorter);  // no failure: its state belongs to both
    Fuzz::Require(AreSame(Decode(*decoder, frame), Decode(*disturbed, frame)), "failed frames leave no trace");
  }
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
  return Fuzz::Mutate(data, size, maxSize, seed, [](std::string& input, std::minstd_rand& random) {
    constexpr unsigned int kNumbers[] = {63,   1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009, 1010, 1011, 1012,
                                         1013, 1019, 1020, 1029, 1030, 1031, 1032, 1033, 1041, 1042, 1044, 1045, 1046,
                                         1057, 1059, 1060, 1063, 1066, 1230, 1242, 1245, 1258, 1261, 1303};
    input.resize(std::max<std::size_t>(input.size(), kOptions + kLength + 64));
    if (random() % 2 == 0) return;
    const bool isMsm = random() % 2 == 0;
    const unsigned int msm =
        1071 + 10 * static_cast<unsigned int>(random() % 7) + static_cast<unsigned int>(random() % 7);
    const unsigned int number = isMsm ? msm : kNumbers[random() % std::size(kNumbers)];
    const auto length = static_cast<unsigned short>(
        random() % 4 == 0 ? random() % (kMaxPayload + 1) : std::min(kMaxPayload, input.size() - kOptions - kLength));
    std::memcpy(&input[kOptions], &length, sizeof length);
    char* const payload = &input[kOptions + kLength];
    payload[0] = static_cast<char>(number >> 4);
    payload[1] = static_cast<char>(number << 4 | (payload[1] & 15));
  });
}
