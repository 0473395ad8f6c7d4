// What a line of JSON is made of, so that it can be written later than its contents come, and elsewhere.
#ifndef VELAGNSS_APPS_LINES_H
#define VELAGNSS_APPS_LINES_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/pipeline/FrameBlock.h"

namespace Host {

// Pointers are to what a block of frames has.
struct S_FrameLine {
  const velagnss::Frame* frame;
  const velagnss::DecodedFrame* decoded;  // null: the envelope alone
  const velagnss::StreamClock* clock;
  std::string skipped;  // bytes before the frame that may end with TAG blocks

  void WriteTo(C_FrameJson& json) const { json.WriteFrame(*frame, decoded, *clock, TagBlocksBefore(skipped)); }
};

struct S_EpochLine {
  std::unique_ptr<const S_Epoch> epoch;

  void WriteTo(C_FrameJson& json) const { json.WriteEpoch(*epoch); }
};

struct S_RejectionsLine {
  velagnss::RejectedStart first;
  std::array<unsigned char, velagnss::RejectedStart::kMaxBytes> bytes{};  // of the first
  std::uint64_t lastOffset = 0;
  std::uint64_t count = 0;

  void Add(const velagnss::RejectedStart& start) {
    if (count++ == 0) {
      first = start;
      std::copy_n(start.data, start.size, bytes.begin());
    }
    lastOffset = start.offset;
  }
  void WriteTo(C_FrameJson& json) const {
    velagnss::RejectedStart start = first;
    start.data = bytes.data();
    json.WriteRejections(start, lastOffset, count);
  }
};

struct S_SkippedLine {
  velagnss::SkippedRange range;

  void WriteTo(C_FrameJson& json) const { json.WriteSkipped(range); }
};

// The lines of a block of frames. Their text is the work that needs no order.
class C_BlockLines : public C_BlockWork {
 public:
  // For a block whose lines are to look like those of `other`.
  void Begin(const C_FrameJson& other) {
    m_lines.clear();
    m_writer.ClearText();
    m_json.WriteLike(other);
  }

  template <class Line>
  void Add(Line&& line) {
    m_lines.emplace_back(std::forward<Line>(line));
  }

  void Do() override {
    for (const t_Line& line : m_lines) std::visit([this](const auto& any) { any.WriteTo(m_json); }, line);
  }

  std::string_view Text() const { return m_writer.Text(); }

 private:
  using t_Line = std::variant<S_FrameLine, S_EpochLine, S_RejectionsLine, S_SkippedLine>;

  std::vector<t_Line> m_lines;
  C_JsonWriter m_writer;
  C_FrameJson m_json{m_writer};
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LINES_H
