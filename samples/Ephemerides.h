// Broadcast ephemerides as whole numbers, in the units and signs in which the satellites send them.
#ifndef VELAGNSS_SAMPLES_EPHEMERIDES_H
#define VELAGNSS_SAMPLES_EPHEMERIDES_H

#include <cstdint>
#include <string>
#include <vector>

#include "samples/Moment.h"
#include "samples/Packing.h"

// Legacy navigation message of GPS and QZSS; the names are those of IS-GPS-200, the scales are in its tables 20-I and
// 20-III.
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
  int shift = 0;                 // low bits of the value that another field sends
  std::int64_t added = 0;
};

template <class Numbers>
void PutFields(C_BitString& bits, const std::vector<S_BitField<Numbers>>& fields, const Numbers& numbers) {
  for (const S_BitField<Numbers>& field : fields)
    bits.Put(((field.value == nullptr ? 0 : numbers.*field.value) + field.added) >> field.shift, field.bits);
}

// GPS satellites that send, and QZSS satellites (numbers 193 on).
constexpr int kGpsSatellites[] = {4, 5, 7, 12, 13, 15, 20, 25, 29};
constexpr int kQzssSatellites[] = {194, 195, 199};

// What `satellite` sends now. Around the week's end the odd satellites already refer to the new week.
S_KeplerNumbers KeplerNumbersOf(int satellite, const S_Moment& now);

// Immediate data of the navigation frame of GLONASS; names and scales as in its interface control document, with the
// coordinate's first and second derivative as velocity and acceleration.
struct S_GlonassNumbers {
  std::int64_t slot, channel, p1, tk, bn, p2, tb, p3, gammaN, p, ln, tauN, deltaTauN, en, p4, ft, nt, m;
  std::int64_t na, tauC, n4, tauGps;
  std::int64_t position[3], velocity[3], acceleration[3];  // 2^-11 km, 2^-20 km/s, 2^-30 km/s^2
};

constexpr int kGlonassSatellites = 6;

S_GlonassNumbers GlonassNumbersOf(unsigned int index, const S_Moment& now);

// The numbers as members of a JSON object, by the names above.
std::string FactsOf(const S_KeplerNumbers& numbers);
std::string FactsOf(const S_GlonassNumbers& numbers);

#endif  // VELAGNSS_SAMPLES_EPHEMERIDES_H
