// The last objects of a stream as lines of JSON.
#ifndef VELAGNSS_APPS_RAW_OBJECTS_H
#define VELAGNSS_APPS_RAW_OBJECTS_H

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/json/JsonLines.h"
#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

// Keeps the last 500 objects that pass the filter, or fewer when they are long: 4 MB of text. Without a filter, the
// events of the stream are among them.
class C_RawObjects {
 public:
  // See C_SourceModel. Objects that are kept must pass as well from then on.
  std::optional<std::string> SetFilter(std::string_view list);

  void BeginInput(const std::string& name) { m_lines->BeginInput(name); }
  void OnBytes(t_Arrival arrival) { m_lines->OnBytes({}, arrival); }
  void OnFrame(const S_FrameRecord& record);
  void OnRejection(const velagnss::RejectedStart& start);
  void OnSkipped(const velagnss::SkippedRange& range);
  void OnLink(const S_LinkChange& change);
  void EndInput(const S_InputEnd& end);

  void Show(S_SourceView& view) const { view.raw.assign(m_objects.begin(), m_objects.end()); }

 private:
  // What an object is made of.
  struct S_Origin {
    const velagnss::Frame* frame = nullptr;  // null: an event
    double seconds = 0;
  };
  void Keep(const S_Origin& origin);
  void Keep(std::string_view line, const S_Origin& origin);
  void DropOldest();

  std::unique_ptr<C_JsonLines> m_lines = MakeLines({});
  static std::unique_ptr<C_JsonLines> MakeLines(const std::optional<C_MessageFilter>& filter);
  std::deque<std::shared_ptr<const S_RawObject>> m_objects;  // the newest first
  std::size_t m_size = 0;                                    // bytes of their texts
  std::uint64_t m_count = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RAW_OBJECTS_H
