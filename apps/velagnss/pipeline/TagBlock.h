// TAG blocks of NMEA 0183 4.10: "\s:station,c:1609459200*hh\" directly before a sentence says where and when it was
// sent.
//
// The frame search takes them for bytes of no frame, so they are found in what was skipped before a sentence.
#ifndef VELAGNSS_APPS_TAG_BLOCK_H
#define VELAGNSS_APPS_TAG_BLOCK_H

#include <string_view>
#include <vector>

#include "stream/FrameReader.h"

namespace Host {

struct S_TagParameter {
  char code;  // 'c', 'd', 'g', 'n', 'r', 's' or 't'; any other as sent
  std::string_view value;
};

// Views into the bytes that were skipped.
struct S_TagBlocks {
  std::string_view text;                   // all of them; empty when there is none
  bool areChecked = true;                  // each has the right checksum
  std::vector<S_TagParameter> parameters;  // of all blocks if they are checked
};

// Whether a skipped range holds nothing but TAG blocks with the right checksum: such bytes are not damaged.
bool IsTagOnly(const velagnss::SkippedRange& range);

// The TAG blocks that end where `skipped` ends.
S_TagBlocks TagBlocksBefore(std::string_view skipped);

}  // namespace Host

#endif  // VELAGNSS_APPS_TAG_BLOCK_H
