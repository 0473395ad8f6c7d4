// Names of recordings: patterns with times in UTC, and how an existing file is left alone.
#ifndef VELAGNSS_APPS_FILE_NAMES_H
#define VELAGNSS_APPS_FILE_NAMES_H

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/record/RecordClock.h"

namespace Host {

inline constexpr std::string_view kUsualPattern = "%n_%Y%m%d_%H%M%SZ.bin";
inline constexpr std::string_view kPartEnding = ".part";  // of a file that is being written
inline constexpr std::string_view kIndexEnding = ".idx";  // of the times beside a file, after its whole name
inline constexpr std::string_view kPackedEnding = ".gz";

// Returns an error text, empty when `pattern` can be expanded. %Y %m %d %H %M %S are parts of the time, %j the day of
// the year, %n the source, %% a percent sign.
std::string CheckPattern(std::string_view pattern);

// Whether the name differs from source to source.
bool HasSourceName(std::string_view pattern);

// `pattern` is good.
std::string ExpandPattern(std::string_view pattern, std::string_view safeSource, t_RecordTime time);

// A name from a clock that is not set: it begins with "unsynced-" and what tells this start of the machine from others.
std::string UndatedName(const std::string& name);

// "a_2.bin.gz" of "a.bin.gz" and 2; the name itself for 1.
std::string NumberedName(const std::string& name, unsigned int number);

// The files of this pattern and source that were being written when the program or the machine stopped, sorted.
std::vector<std::filesystem::path> FindParts(std::string_view pattern, std::string_view safeSource);

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_NAMES_H
