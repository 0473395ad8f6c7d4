// Each table is as its document prints it; lookups are linear, as the longest has fifteen rows.
#include "geo/GnssTables.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr double kNoPrediction =
    1e99;  // m; larger than any accuracy, so that whoever compares leaves the satellite out

// Greatest value of each user range accuracy index, m. IS-GPS-200, 20.3.3.3.1.3.
constexpr double kUraUpperBound[] = {2.4, 3.4, 4.85, 6.85, 9.65, 13.65, 24, 48, 96, 192, 384, 768, 1536, 3072, 6144};

// Nominal value of each user range accuracy index, m. 2^1.5, 2^2.5 and 2^3.5 are the nearest doubles.
constexpr double kSqrt2 = 0x1.6a09e667f3bcdp0;
constexpr double kUraNominal[] = {2,  2 * kSqrt2, 4,   4 * kSqrt2, 8,    8 * kSqrt2, 16,  32,
                                  64, 128,        256, 512,        1024, 2048,       4096};

// Fit interval by issue of data, clock, when the fit interval flag is set. IS-GPS-200, table 20-XII.
struct S_FitRow {
  unsigned short firstIodc;
  unsigned short lastIodc;
  float hours;
};
constexpr float kNormalFit = 4;  // h; also for issues that the table does not list
// clang-format off
constexpr S_FitRow kFitIntervals[] = {
    {   0,  239,  6},
    { 240,  247,  8},
    { 248,  255, 14},
    { 496,  496, 14},
    { 497,  503, 26},
    { 504,  510, 50},
    { 511,  511, 74},
    { 752,  756, 74},
    { 757,  757, 98},
    {1021, 1023, 26},
};

// Bands of the signal-in-space accuracy (Galileo OS SIS ICD, 5.1.12). The upper bounds of the first two lie a hair
// below half a step under the next band, so that rounding never reaches into it.
struct S_SisaBand {
  double upperBound;  // m, of the values rounded within this band
  int firstIndex;
  double start;       // m, of the first index
  double step;        // m per index
};
constexpr S_SisaBand kSisaBands[] = {
    {0.4949999999,   0, 0.0, 0.01},
    {0.9899999999,  50, 0.5, 0.02},
    {1.98,          75, 1.0, 0.04},
    {6.0,          100, 2.0, 0.16},
};
constexpr unsigned char kSisaIndices = 126;

constexpr unsigned int kFixTypeOfMode[] = {10, 7, 11, 8, 9};  // by mode code - 1
constexpr unsigned int kUnknownFixType = 18;
constexpr const char* kFixTypeNames[] = {"Autonomous", "SBAS",     "DPHASE", "DGNSS",     "RTK",
                                         "RTKFixed",   "RTKFloat", "Glider", "ManualSet", "Zenlink"};
// clang-format on

constexpr unsigned int kWordBits = 30;  // of a word of the GPS legacy message, parity included

}  // namespace

unsigned char ALGO::UraMetresToIndex(double meters) {
  // NaN fits nowhere and ends past the table, at the index for "no prediction".
  const auto fits = [meters](double bound) { return meters <= bound; };
  return static_cast<unsigned char>(std::find_if(std::begin(kUraUpperBound), std::end(kUraUpperBound), fits) -
                                    std::begin(kUraUpperBound));
}

double ALGO::UraIndexToMetres(unsigned char index) {
  return index < std::size(kUraNominal) ? kUraNominal[index] : kNoPrediction;
}

bool ALGO::IsExtendedFitInterval(double hours) { return hours > double{kNormalFit}; }

float ALGO::FitIntervalFromIodc(unsigned char flag, unsigned short iodc) {
  if (flag == 0) return kNormalFit;
  for (const S_FitRow& row : kFitIntervals)
    if (row.firstIodc <= iodc && iodc <= row.lastIodc) return row.hours;
  return kNormalFit;
}

int ALGO::SisaMetresToIndex(double meters) {
  // Each band rounds on its own scale, from its own start, as the document defines them. NaN is in no band.
  if (meters < 0) return -1;
  for (const S_SisaBand& band : kSisaBands)
    if (meters <= band.upperBound)
      return band.firstIndex + static_cast<int>(std::round((meters - band.start) / band.step));
  return -1;
}

double ALGO::SisaIndexToMetres(unsigned char index) {
  if (index >= kSisaIndices) return kNoPrediction;
  if (index < kSisaBands[1].firstIndex) return index / 100.0;  // a hundredth is not a double: not index * 0.01
  const auto above = [index](const S_SisaBand& band) { return index < band.firstIndex; };
  const S_SisaBand& band = *(std::find_if(std::begin(kSisaBands), std::end(kSisaBands), above) - 1);
  return band.start + (index - band.firstIndex) * band.step;
}

unsigned int ALGO::DayPeriodIndex(double seconds) {
  // A cast of what 32 bits do not hold would be undefined.
  const double rounded = std::trunc(seconds + 0.5);
  if (!(rounded >= 0 && rounded < 0x1p32)) return 0;
  return static_cast<unsigned int>(rounded) / 720 % 240;
}

unsigned int ALGO::ModeCodeToFixType(int code) {
  if (code < 1 || code > static_cast<int>(std::size(kFixTypeOfMode))) return kUnknownFixType;
  return kFixTypeOfMode[code - 1];
}

const char* ALGO::FixTypeName(unsigned int index) {
  return index < std::size(kFixTypeNames) ? kFixTypeNames[index] : "UNKNOWN";
}

bool ALGO::IsBoundedValue(double value) { return value >= 0; }

bool ALGO::IsInRangeValue(double value) { return value >= 0 && value <= 30000.0; }

unsigned int ALGO::NavWordFieldU(unsigned int word, unsigned int first, unsigned int last) {
  // No shift is by 32 or more: `first` is at most 30 once the test is passed.
  const unsigned int end = std::min(last, kWordBits);
  if (end < first) return 0;
  return (word & (0xFFFFFFFFU >> (first + 1))) >> (kWordBits - end);
}

int ALGO::NavWordFieldS(unsigned int word, unsigned int first, unsigned int last) {
  const unsigned int field = NavWordFieldU(word, first, last);
  if (field == 0) return 0;  // and so of every field that is refused, whose width may be negative
  const unsigned int width = std::min(last, kWordBits) - first + 1;
  const unsigned int sign = 1U << (width - 1);
  return static_cast<int>((field ^ sign) - sign);
}
