#include "apps/velagnss/monitor/RawObjects.h"

#include <algorithm>
#include <utility>

#include "apps/velagnss/monitor/FrameName.h"
#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

constexpr std::size_t kMaxObjects = 500;
constexpr std::size_t kMaxLine = 1 << 16;  // bytes; the longest messages have about half of it
constexpr std::size_t kMaxSize = 1 << 22;  // bytes

std::optional<std::string> AddItem(C_MessageFilter& filter, std::string_view item) {
  return velagnss::FindProtocol(item) ? filter.AddProtocols(item) : filter.AddMessages(item);
}

velagnss::Frame FrameOf(const S_RawObject& object) {
  velagnss::Frame frame;
  frame.data = reinterpret_cast<const unsigned char*>(object.bytes.data());
  frame.length = static_cast<unsigned short>(object.bytes.size());
  frame.protocol = object.protocol;
  frame.message = object.message;
  return frame;
}

}  // namespace

std::unique_ptr<C_JsonLines> C_RawObjects::MakeLines(const std::optional<C_MessageFilter>& filter) {
  S_JsonLinesOptions options;
  if (filter) options.filter = *filter;
  options.events = !filter;
  return std::make_unique<C_JsonLines>(options);
}

std::optional<std::string> C_RawObjects::SetFilter(std::string_view list) {
  if (list.find_first_not_of(", ") == std::string_view::npos) {
    m_lines = MakeLines({});
    return std::nullopt;
  }
  C_MessageFilter filter;
  for (const std::string_view item : SplitList(list))
    if (std::optional<std::string> error = AddItem(filter, item)) return error;
  // From the oldest on: a period of the filter begins with the first that passes.
  std::deque<std::shared_ptr<const S_RawObject>> passed;
  for (auto object = m_objects.rbegin(); object != m_objects.rend(); ++object)
    if (!(*object)->bytes.empty() && filter.Passes(FrameOf(**object), (*object)->seconds)) passed.push_front(*object);
  m_objects = std::move(passed);
  m_size = 0;
  for (const auto& object : m_objects) m_size += object->json.size();
  m_lines = MakeLines(filter);
  return std::nullopt;
}

void C_RawObjects::OnFrame(const S_FrameRecord& record) {
  m_lines->OnFrame(record);
  Keep({&record.frame, record.clock.Seconds()});
}

void C_RawObjects::OnRejection(const velagnss::RejectedStart& start) {
  m_lines->OnRejection(start);
  Keep({});
}

void C_RawObjects::OnSkipped(const velagnss::SkippedRange& range) {
  m_lines->OnSkipped(range);
  Keep({});
}

void C_RawObjects::OnLink(const S_LinkChange& change) {
  m_lines->OnLink(change);
  Keep({});
}

void C_RawObjects::EndInput(const S_InputEnd& end) {
  m_lines->EndInput(end);
  Keep({});
}

// The lines of false starts may come together.
void C_RawObjects::Keep(const S_Origin& origin) {
  std::string_view text = m_lines->Text().Text();
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1);
    Keep(text.substr(0, end), origin);
    text.remove_prefix(end + 1);
  }
  m_lines->Text().ClearText();
}

void C_RawObjects::Keep(std::string_view line, const S_Origin& origin) {
  S_RawObject object;
  object.number = ++m_count;
  object.json = line.substr(0, kMaxLine);
  object.seconds = origin.seconds;
  if (const velagnss::Frame* const frame = origin.frame) {
    object.name = NameOf(*frame);
    object.bytes.assign(reinterpret_cast<const char*>(frame->data), frame->length);
    object.protocol = frame->protocol;
    object.message = frame->message;
  }
  m_size += object.json.size();
  m_objects.push_front(std::make_shared<const S_RawObject>(std::move(object)));
  while (m_objects.size() > kMaxObjects || m_size > kMaxSize) DropOldest();
}

void C_RawObjects::DropOldest() {
  m_size -= m_objects.back()->json.size();
  m_objects.pop_back();
}

}  // namespace Host
