#include "apps/velagnss/jobs/Task.h"

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>

#include "apps/velagnss/input/InputIdentity.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {
namespace {

using simdjson::dom::element;
using simdjson::dom::object;

constexpr std::size_t kWriterSize = 1 << 12;
constexpr std::size_t kMaxName = 120;  // bytes of a path in a file name, which may have 255 in all
constexpr std::size_t kMaxText = std::size_t{1} << 20;

// Each byte of a name is a character from U+0000 to U+00FF in the text, whatever its encoding is.
std::optional<std::string> BytesOf(std::string_view utf8) {
  std::string bytes;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto first = static_cast<unsigned char>(utf8[i]);
    if (first >= 0x80 && (first > 0xC3 || ++i == utf8.size())) return std::nullopt;
    const unsigned int low = static_cast<unsigned char>(utf8[i]) & 0x3F;
    bytes += static_cast<char>(first < 0x80 ? first : (first & 0x03) << 6 | low);
  }
  return bytes;
}

// Reads members of one object; `IsGood` is false once a member was missing or of another type.
class C_Members {
 public:
  explicit C_Members(object members) : m_members(members) {}

  template <class Value>
  Value Get(const char* name) {
    Value value{};
    m_isGood = m_members[name].get(value) == simdjson::SUCCESS && m_isGood;
    return value;
  }
  bool Has(const char* name) const { return m_members[name].error() == simdjson::SUCCESS; }
  std::string Text(const char* name) { return Bytes(Get<std::string_view>(name)); }
  // An element that was not found must not be looked into.
  std::vector<std::string> Texts(const char* name) {
    std::vector<std::string> texts;
    simdjson::dom::array array;
    m_isGood = m_members[name].get(array) == simdjson::SUCCESS && m_isGood;
    if (!m_isGood) return texts;
    for (const element one : array) {
      std::string_view text;
      m_isGood = one.get(text) == simdjson::SUCCESS && m_isGood;
      texts.push_back(Bytes(text));
    }
    return texts;
  }
  bool IsNull(const char* name) {
    element value;
    const bool isThere = m_members[name].get(value) == simdjson::SUCCESS;
    m_isGood = m_isGood && isThere;
    return isThere && value.is_null();
  }
  std::uint64_t WholeOr(const char* name, std::uint64_t absent) {
    return IsNull(name) ? absent : Get<std::uint64_t>(name);
  }
  bool IsGood() const { return m_isGood; }

 private:
  std::string Bytes(std::string_view text) {
    const std::optional<std::string> bytes = BytesOf(text);
    m_isGood = bytes && m_isGood;
    return bytes.value_or(std::string());
  }

  object m_members;
  bool m_isGood = true;
};

void WriteTask(C_JsonWriter& json, const S_Task& task) {
  json.Key("input").String(task.input);
  json.Key("identity").String(task.identity);
  json.Key("begin").Integer(task.range.begin);
  json.Key("end").IntegerOrNull(task.range.end == S_ByteRange().end ? std::nullopt : std::optional(task.range.end));
  json.Key("names_input").Boolean(task.namesInput);
  json.Key("tries").Integer(task.tries);
  json.Key("options").BeginArray();
  for (const std::string& word : task.options) json.String(word);
  json.EndArray();
}

S_Task TaskOf(C_Members& members) {
  S_Task task;
  task.input = members.Text("input");
  task.identity = members.Text("identity");
  task.range = {members.Get<std::uint64_t>("begin"), members.WholeOr("end", S_ByteRange().end)};
  task.namesInput = members.Get<bool>("names_input");
  task.tries = static_cast<unsigned int>(std::min<std::uint64_t>(members.Get<std::uint64_t>("tries"), ~0U));
  task.options = members.Texts("options");
  return task;
}

// Calls `read` with the members of the object that `text` is; its result if all of them were good.
template <class Read>
auto ReadObject(std::string_view text, const Read& read) -> std::optional<decltype(read(std::declval<C_Members&>()))> {
  simdjson::dom::parser parser(kMaxText);
  object root;
  if (parser.parse(text).get(root) != simdjson::SUCCESS) return std::nullopt;
  C_Members members(root);
  if (members.Get<std::uint64_t>("schema") != kSchemaVersion) return std::nullopt;
  auto value = read(members);
  return members.IsGood() ? std::optional(std::move(value)) : std::nullopt;
}

template <class Write>
std::string ObjectText(const Write& write) {
  C_JsonWriter json(kWriterSize);
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  write(json);
  json.EndObject();
  return std::string(json.Text());
}

bool IsPlain(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '-' || c == '_';
}

}  // namespace

std::string S_Task::Key() const {
  S_Task same = *this;
  same.tries = 0;
  const std::string text = TaskText(same);
  return IdentityOfHead({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

std::string TaskText(const S_Task& task) {
  return ObjectText([&task](C_JsonWriter& json) { WriteTask(json, task); });
}

std::optional<S_Task> ReadTask(std::string_view text) { return ReadObject(text, &TaskOf); }

std::string ShownTask(const S_Task& task) {
  if (task.range.IsEverything()) return task.input;
  return fmt::format("{} [{}, {})", task.input, task.range.begin, task.range.end);
}

// A slash becomes '+', and what a shell or a file system could mistake is written as in an address. The key tells tasks
// apart that differ in their options only.
std::string FileNameOf(const S_Task& task) {
  std::string name;
  for (const char c : std::string_view(task.input).substr(task.input.starts_with('/') ? 1 : 0))
    name += c == '/' ? "+" : IsPlain(c) ? std::string(1, c) : fmt::format("%{:02X}", static_cast<unsigned char>(c));
  if (name.size() > kMaxName) name = task.identity + name.substr(name.size() - kMaxName + task.identity.size());
  return fmt::format("{}+{:020}+{}", name, task.range.begin, task.Key());
}

std::string ResultText(const S_TaskResult& result) {
  return ObjectText([&result](C_JsonWriter& json) {
    WriteTask(json, result.task);
    json.Key("error").StringOrNull(result.error);
    json.Key("worker").String(result.worker);
    json.Key("submission").String(result.submission);
    json.Key("bytes").Integer(result.bytes);
    json.Key("frames").Integer(result.frames);
    json.Key("seconds").Number(result.seconds);
    json.Key("tried").Integer(result.tries);
  });
}

std::optional<S_TaskResult> ReadResult(std::string_view text) {
  return ReadObject(text, [](C_Members& members) {
    S_TaskResult result;
    result.task = TaskOf(members);
    if (!members.IsNull("error")) result.error = members.Text("error");
    result.worker = members.Text("worker");
    if (members.Has("submission")) result.submission = members.Text("submission");  // older versions have none
    result.bytes = members.Get<std::uint64_t>("bytes");
    result.frames = members.Get<std::uint64_t>("frames");
    result.seconds = members.Get<double>("seconds");
    result.tries = static_cast<unsigned int>(members.Get<std::uint64_t>("tried"));
    return result;
  });
}

}  // namespace Host
