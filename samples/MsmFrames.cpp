#include <cmath>

#include "samples/Frames.h"
#include "samples/Sky.h"

namespace {

std::int64_t GpsEpoch(const S_Moment& now) { return std::int64_t{now.gpsSecond} * 1000; }

std::int64_t BeidouEpoch(const S_Moment& now) { return (std::int64_t{now.gpsSecond} + 604800 - 14) % 604800 * 1000; }

// Day of week in the top three bits, which are 0 as it is Sunday in Moscow throughout; time of day there below.
std::int64_t GlonassEpoch(const S_Moment& now) { return (now.secondOfDay + kMoscowAhead) % 86400 * std::int64_t{1000}; }

struct S_Msm {
  int number;
  eSystem system;
  std::int64_t (*epoch)(const S_Moment& now);
};

constexpr S_Msm kMsms[] = {
    {1077, eGps, &GpsEpoch},
    {1087, eGlonass, &GlonassEpoch},
    {1097, eGalileo, &GpsEpoch},
    {1127, eBeidou, &BeidouEpoch},
};

constexpr int kSignals = 2;

// What is sent of a satellite: its signals, and the rough values that they have in common.
struct S_Observed {
  S_Satellite satellite;
  S_Measurement signals[kSignals];
  std::int64_t roughRange;  // 2^-10 ms
  std::int64_t roughRate;   // m/s
};

std::vector<S_Observed> Observe(eSystem system, S_Context& context) {
  std::vector<S_Observed> all;
  for (const S_Satellite& satellite : TrackedSatellites(system)) {
    S_Observed observed{satellite, {}, 0, 0};
    for (int index = 0; index < kSignals; ++index)
      observed.signals[index] = Measure(satellite, index, TimeOf(context.now), context.random);
    observed.roughRange = (observed.signals[0].range + (1 << 18)) >> 19;
    observed.roughRate = std::llround(static_cast<double>(observed.signals[0].rate) / 10000);
    all.push_back(observed);
  }
  return all;
}

void PutMask(C_BitString& bits, int width, const std::vector<int>& numbers) {
  const std::size_t first = bits.Size();
  bits.Put(0, width);
  for (const int number : numbers) bits.SetBit(first + static_cast<std::size_t>(number) - 1, true);
}

void PutMasks(C_BitString& bits, const S_Msm& msm, const std::vector<S_Observed>& all) {
  std::vector<int> satellites;
  std::vector<int> signals;
  for (const S_Observed& observed : all) satellites.push_back(observed.satellite.number);
  for (const S_Signal& signal : SignalsOf(msm.system)) signals.push_back(signal.mask);
  PutMask(bits, 64, satellites);
  PutMask(bits, 32, signals);
  bits.Put(-1, kSignals * static_cast<int>(all.size()));  // each satellite has each signal
}

void PutSatellites(C_BitString& bits, const std::vector<S_Observed>& all) {
  for (const S_Observed& observed : all) bits.Put(observed.roughRange >> 10, 8);  // whole ms
  for (const S_Observed& observed : all)
    bits.Put(observed.satellite.system == eGlonass ? observed.satellite.channel + 7 : 0, 4);
  for (const S_Observed& observed : all) bits.Put(observed.roughRange, 10);
  for (const S_Observed& observed : all) bits.Put(observed.roughRate, 14);
}

// DF407: in each step of 32 numbers the unit doubles, from 1 ms on.
std::int64_t LockIndicator(std::int64_t milliseconds) {
  int doublings = 0;
  while (milliseconds >> doublings >= 64) ++doublings;
  return 32 * doublings + (milliseconds >> doublings);
}

// The station tracks all satellites since some time before the session.
std::int64_t LockTime(const S_Observed& observed, const S_Moment& now) {
  return (600 + 60 * observed.satellite.number + now.second) * std::int64_t{1000};
}

// One column after the other.
void PutSignals(C_BitString& bits, const std::vector<S_Observed>& all, const S_Moment& now) {
  const auto putColumn = [&](int width, auto value) {
    for (const S_Observed& observed : all)
      for (const S_Measurement& signal : observed.signals) bits.Put(value(observed, signal), width);
  };
  using O = S_Observed;
  using M = S_Measurement;
  putColumn(20, [](const O& observed, const M& signal) { return signal.range - (observed.roughRange << 19); });
  putColumn(24, [](const O& observed, const M& signal) { return signal.phase - (observed.roughRange << 21); });
  putColumn(10, [&now](const O& observed, const M&) { return LockIndicator(LockTime(observed, now)); });
  putColumn(1, [](const O&, const M&) { return 0; });  // no half cycles
  putColumn(10, [](const O&, const M& signal) { return signal.strength; });
  putColumn(15, [](const O& observed, const M& signal) { return signal.rate - 10000 * observed.roughRate; });
}

// As RTCM 10403 has it.
S_Frame MsmFrame(const S_Msm& msm, bool isLast, S_Context& context) {
  const std::vector<S_Observed> all = Observe(msm.system, context);
  C_BitString bits;
  bits.Put(msm.number, 12);
  bits.Put(kStationId, 12);
  bits.Put(msm.epoch(context.now), 30);
  bits.Put(isLast ? 0 : 1, 1);         // more messages of this epoch follow
  bits.Put(0, 3 + 7 + 2 + 2 + 1 + 3);  // issue, reserved, steering, clock, smoothing
  PutMasks(bits, msm, all);
  PutSatellites(bits, all);
  PutSignals(bits, all, context.now);
  return RtcmFrame(bits.Bytes());
}

}  // namespace

std::vector<S_Frame> MakeMsmSet(S_Context& context) {
  std::vector<S_Frame> frames;
  for (const S_Msm& msm : kMsms) frames.push_back(MsmFrame(msm, &msm == std::end(kMsms) - 1, context));
  return frames;
}
