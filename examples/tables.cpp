// Codes of the navigation messages converted to physical units, and fields extracted from their words.
#include <cstdio>

#include "geo/GnssTables.h"

int main() {
  // IS-GPS-200: user range accuracy, curve fit interval. Galileo: signal-in-space accuracy.
  std::printf("URA index 2 is %.2f m, 5 m has index %u\n", ALGO::UraIndexToMetres(2),
              unsigned{ALGO::UraMetresToIndex(5.0)});
  std::printf("SISA index 107 is %.2f m, 7 m has %d\n", ALGO::SisaIndexToMetres(107), ALGO::SisaMetresToIndex(7.0));
  const float hours = ALGO::FitIntervalFromIodc(1, 240);
  std::printf("fit interval %.0f h, %s\n", static_cast<double>(hours),
              ALGO::IsExtendedFitInterval(static_cast<double>(hours)) ? "extended" : "normal");

  // Words of subframe 1, parity last. Word 3: week number in bits 1 to 10, accuracy index in 13 to 16. Word 7: group
  // delay.
  const unsigned int word3 = 0x10A08000;
  const unsigned int word7 = 0x00003A00;
  std::printf("week %u modulo 1024, accuracy index %u, group delay %.3f ns\n", ALGO::NavWordFieldU(word3, 1, 10),
              ALGO::NavWordFieldU(word3, 13, 16), ALGO::NavWordFieldS(word7, 17, 24) * 0x1p-31 * 1e9);
  std::printf("kind of fix: %s, %s\n", ALGO::FixTypeName(0), ALGO::FixTypeName(10));
}
