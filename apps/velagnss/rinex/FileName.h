// Names of RINEX files as the International GNSS Service gives them.
#ifndef VELAGNSS_APPS_RINEX_FILE_NAME_H
#define VELAGNSS_APPS_RINEX_FILE_NAME_H

#include <cstdint>
#include <string>

namespace Host {

// An observation file. Times are in ms since 6 January 1980.
struct S_ObsFile {
  std::string marker;
  std::int64_t start;     // nominal
  std::int64_t duration;  // of the file, or as intended
  std::int64_t interval;  // between epochs; 0: not constant
  char system;            // 'M': several
};

// "EXMP00DEU_S_20263260000_01D_30S_MO.rnx". A marker of nine characters is the whole station; of another one the first
// four letters and digits count, and the country is not known.
std::string RinexFileName(const S_ObsFile& file);

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_FILE_NAME_H
