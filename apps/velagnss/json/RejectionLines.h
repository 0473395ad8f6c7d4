// Rejected starts as lines of JSON, in an amount that no input can inflate.
#ifndef VELAGNSS_APPS_REJECTION_LINES_H
#define VELAGNSS_APPS_REJECTION_LINES_H

#include <array>
#include <cstdint>

#include "apps/velagnss/json/FrameJson.h"

namespace Host {

// The first starts of a skipped range get a line each. Noise may be full of starts, and a line is a hundred times as
// long as one: the others of the range share a line for each reason.
class C_RejectionLines {
 public:
  explicit C_RejectionLines(C_FrameJson& lines) : m_lines(lines) {}

  void Add(const velagnss::RejectedStart& start);

  // Writes what is pending. To be called before the line of the range, and at the end of an input.
  void EndRange();

 private:
  static constexpr unsigned int kLinesPerRange = 16;

  // The starts without a line of their own that were rejected for one reason.
  struct S_Group {
    velagnss::RejectedStart first;
    std::array<unsigned char, velagnss::RejectedStart::kMaxBytes> bytes{};  // of the first
    std::uint64_t lastOffset = 0;
    std::uint64_t count = 0;
  };
  void Write(S_Group& group);

  C_FrameJson& m_lines;
  unsigned int m_linesOfRange = 0;
  S_Group m_checksum;
  S_Group m_notAFrame;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_REJECTION_LINES_H
