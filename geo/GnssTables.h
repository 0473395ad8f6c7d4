// Small tables of satellite navigation: broadcast accuracy codes and fit intervals in physical units, fields of
// navigation words, names of fix types. Pure functions, which keep no state and allocate nothing.
#ifndef VELAGNSS_GEO_GNSS_TABLES_H
#define VELAGNSS_GEO_GNSS_TABLES_H

#include "velagnss_export.h"

namespace ALGO {

// User range accuracy of GPS and QZSS (IS-GPS-200, 20.3.3.3.1.3): meters to the broadcast index 0 to 15, which is the
// first one whose upper bound is not below `meters`. Negative values give 0; values above 6144 m and NaN give 15, "no
// accuracy prediction".
VELAGNSS_API unsigned char UraMetresToIndex(double meters);

// Nominal meters of a user range accuracy index: 2^(1 + index/2) below 7 (2.83 m for 1), 2^(index - 2) below 15, and
// 1e99 from 15 on, for "no accuracy prediction".
VELAGNSS_API double UraIndexToMetres(unsigned char index);

// True for a curve fit interval of more than the normal 4 hours.
VELAGNSS_API bool IsExtendedFitInterval(double hours);

// Curve fit interval in hours (IS-GPS-200, table 20-XII) from the fit interval flag of subframe 2 and the 10-bit issue
// of data, clock: 4 when the flag is 0, else 6 to 98; 4 also for an issue that the table does not list.
VELAGNSS_API float FitIntervalFromIodc(unsigned char flag, unsigned short iodc);

// Signal-in-space accuracy of Galileo (Galileo OS SIS ICD, 5.1.12): meters to the index 0 to 125, rounded half away
// from zero within the bands of 0.01, 0.02, 0.04 and 0.16 m. -1 for negative values, values above 6 m and NaN.
VELAGNSS_API int SisaMetresToIndex(double meters);

// Metres of a signal-in-space accuracy index, 0 to 125; 1e99 from 126 on, for "no accuracy prediction".
VELAGNSS_API double SisaIndexToMetres(unsigned char index);

// Rounded seconds in steps of 720, modulo 240: 0 to 239. Negative values, NaN and values that do not fit 32 bits give
// 0.
VELAGNSS_API unsigned int DayPeriodIndex(double seconds);

// The fix type number of a receiver's mode code: 1 to 5 give 10, 7, 11, 8, 9; every other code gives 18.
VELAGNSS_API unsigned int ModeCodeToFixType(int code);

// Name of a fix type, 0 ("Autonomous") to 9 ("Zenlink"); "UNKNOWN" above. A string constant, never null.
VELAGNSS_API const char* FixTypeName(unsigned int index);

// True for 0 and above, infinity included; false for negative values and NaN.
VELAGNSS_API bool IsBoundedValue(double value);

// True from 0 to 30000.0 inclusive; false for NaN.
VELAGNSS_API bool IsInRangeValue(double value);

// The field from bit `first` to bit `last` of a navigation word. A word is in the low 30 bits of `word`: bit 1, the
// first one sent, is in bit position 29, and bit 30 in position 0. A `last` above 30 is taken as 30. The field is 0
// when it ends before it starts or starts after bit 30; bit 0 is bit position 30.
VELAGNSS_API unsigned int NavWordFieldU(unsigned int word, unsigned int first, unsigned int last);

// The same, as a number in two's complement of the field's width.
VELAGNSS_API int NavWordFieldS(unsigned int word, unsigned int first, unsigned int last);

}  // namespace ALGO

#endif  // VELAGNSS_GEO_GNSS_TABLES_H
