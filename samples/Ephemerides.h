// Broadcast ephemerides as whole numbers, in the units and signs in which the satellites send them.
#ifndef VELAGNSS_SAMPLES_EPHEMERIDES_H
#define VELAGNSS_SAMPLES_EPHEMERIDES_H

#include <cstdint>
#include <string>
#include <vector>

#include "samples/Moment.h"
#include "samples/Packing.h"
#include "samples/Satellites.h"

// Keplerian elements; the names are those of IS-GPS-200, the units those of its tables 20-I and 20-III, for the other
// systems too where `S_SystemScales` has nothing else.
struct S_KeplerNumbers {
  std::int64_t satellite, sixSecondCount, week, codeOnL2, ura, health, iodc, l2Flag, tgd, toc, af2, af1, af0;
  std::int64_t iode, crs, deltaN, m0, cuc, eccentricity, cus, sqrtA, toe, fitFlag, aodo;
  std::int64_t cic, omega0, cis, i0, crc, omega, omegaDot, iDot;
};

// One field of a message that is sent as a string of bits, high bit first.
template <class Numbers>
struct S_BitField {
  int bits;
  std::int64_t Numbers::*value;  // null: 0
  int shift = 0;                 // low bits that are not sent here; negative: zero bits added, for a finer unit
  std::int64_t added = 0;
};

template <class Numbers>
void PutFields(C_BitString& bits, const std::vector<S_BitField<Numbers>>& fields, const Numbers& numbers) {
  for (const S_BitField<Numbers>& field : fields) {
    const std::int64_t value = (field.value == nullptr ? 0 : numbers.*field.value) + field.added;
    bits.Put(field.shift < 0 ? value << -field.shift : value >> field.shift, field.bits);
  }
}

// What differs between the systems.
struct S_SystemScales {
  int behindGps;      // s, of the system's time
  int firstWeek;      // GPS week with which its count begins
  int weekPeriod;     // after which it begins again
  int timeStep;       // s, unit of reference times
  double groupDelay;  // s, unit of the group delay
  double gravity;     // m^3/s^2
  double turnRate;    // of the Earth, rad/s
};

const S_SystemScales& ScalesOf(eSystem system);

// What the satellite sends now. Around the week's end the odd satellites already refer to the new week.
S_KeplerNumbers KeplerNumbersOf(const S_Satellite& satellite, const S_Moment& now);

// Immediate data of the navigation frame of GLONASS; names and scales as in its interface control document, with the
// coordinate's first and second derivative as velocity and acceleration.
struct S_GlonassNumbers {
  std::int64_t slot, channel, p1, tk, bn, p2, tb, p3, gammaN, p, ln, tauN, deltaTauN, en, p4, ft, nt, m;
  std::int64_t na, tauC, n4, tauGps;
  std::int64_t position[3], velocity[3], acceleration[3];
};

constexpr double kGlonassPosition = 1000 * 0x1p-11;      // m
constexpr double kGlonassVelocity = 1000 * 0x1p-20;      // m/s
constexpr double kGlonassAcceleration = 1000 * 0x1p-30;  // m/s^2

S_GlonassNumbers GlonassNumbersOf(const S_Satellite& satellite, const S_Moment& now);

// The numbers as members of a JSON object, by the names above.
std::string FactsOf(const S_KeplerNumbers& numbers);
std::string FactsOf(const S_GlonassNumbers& numbers);

#endif  // VELAGNSS_SAMPLES_EPHEMERIDES_H
