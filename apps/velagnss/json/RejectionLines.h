// Rejected starts as lines of JSON, in an amount that no input can inflate.
#ifndef VELAGNSS_APPS_REJECTION_LINES_H
#define VELAGNSS_APPS_REJECTION_LINES_H

#include <cstdint>
#include <functional>
#include <utility>

#include "apps/velagnss/json/Lines.h"

namespace Host {

// The first starts of a skipped range get a line each. Noise may be full of starts, and a line is a hundred times as
// long as one: the others of the range share a line for each reason.
class C_RejectionLines {
 public:
  using t_Sink = std::function<void(const S_RejectionsLine& line)>;

  explicit C_RejectionLines(t_Sink sink) : m_sink(std::move(sink)) {}

  void Add(const velagnss::RejectedStart& start);

  // Writes what is pending. To be called before the line of the range, and at the end of an input.
  void EndRange();

 private:
  static constexpr unsigned int kLinesPerRange = 16;

  void Write(S_RejectionsLine& group);

  t_Sink m_sink;
  unsigned int m_linesOfRange = 0;
  // The starts without a line of their own, by the reason that they were rejected for.
  S_RejectionsLine m_checksum;
  S_RejectionsLine m_notAFrame;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_REJECTION_LINES_H
