#include "apps/velagnss/sinks/live/Sinks.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/sinks/live/FileSink.h"
#include "apps/velagnss/sinks/live/ListenSink.h"
#include "apps/velagnss/sinks/live/TcpSink.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

const S_SinkKind* const kKinds[] = {&kTcpListenSink, &kTcpSink, &kUnixListenSink};

struct S_PolicyName {
  std::string_view name;
  ePolicy policy;
};
constexpr S_PolicyName kPolicies[] = {{"drop", ePolicy::Drop}, {"close", ePolicy::Close}, {"wait", ePolicy::Wait}};

const S_PolicyName* FindPolicy(std::string_view name) {
  const auto* const found = std::ranges::find(kPolicies, name, &S_PolicyName::name);
  return found == std::end(kPolicies) ? nullptr : found;
}

std::string CheckPolicy(const std::string& value) {
  if (FindPolicy(value) != nullptr) return {};
  return fmt::format("must be one of {}", JoinNames(kPolicies, &S_PolicyName::name, ", "));
}

// The options of every address, for what waits for a reader: bytes, and seconds.
constexpr S_SinkOption kQueueOptions[] = {
    {"policy", &CheckPolicy},
    {"queue", &IsNumber<1, std::size_t{1} << 30>},
    {"age", &IsNumber<1, 3'600>},
    {"stall", &IsNumber<1, 3'600>},
};

const S_SinkKind* FindKind(std::string_view scheme) {
  const auto* const found = std::ranges::find(kKinds, scheme, [](const S_SinkKind* kind) { return kind->scheme; });
  return found == std::end(kKinds) ? nullptr : *found;
}

struct S_PartRow {
  ePart S_SinkKind::*need;
  std::string S_Address::*text;
  std::string_view name;
};
constexpr S_PartRow kParts[] = {
    {&S_SinkKind::account, &S_Address::user, "user"}, {&S_SinkKind::account, &S_Address::password, "password"},
    {&S_SinkKind::host, &S_Address::host, "host"},    {&S_SinkKind::port, &S_Address::port, "port"},
    {&S_SinkKind::path, &S_Address::path, "path"},
};

std::string CheckParts(const S_SinkKind& kind, const S_Address& address) {
  for (const S_PartRow& row : kParts) {
    const bool isThere = !(address.*row.text).empty() && address.*row.text != "/";
    if (isThere && kind.*row.need == ePart::None) return fmt::format("takes no {}: write {}", row.name, kind.form);
    if (!isThere && kind.*row.need == ePart::Required) return fmt::format("needs a {}: write {}", row.name, kind.form);
  }
  return {};
}

std::string CheckOption(const S_SinkKind& kind, const std::string& name, const std::string& value) {
  for (const std::span<const S_SinkOption> options : {kind.options, std::span<const S_SinkOption>(kQueueOptions)})
    for (const S_SinkOption& option : options)
      if (option.name == name) {
        const std::string error = option.check(value);
        return error.empty() ? error : fmt::format("{} {}, not '{}'", name, error, value);
      }
  const auto* const separator = kind.options.empty() ? "" : ", ";
  return fmt::format("has no option '{}'; known: {}{}{}", name, JoinNames(kind.options, &S_SinkOption::name, ", "),
                     separator, JoinNames(kQueueOptions, &S_SinkOption::name, ", "));
}

S_QueueLimits LimitsOf(const S_Address& address, bool canWait) {
  const auto seconds = [&address](const char* name, std::chrono::milliseconds preset) {
    const auto count = NumberOption(address, name, 0);
    return count == 0 ? preset : std::chrono::milliseconds(count * 1'000);
  };
  S_QueueLimits limits;
  limits.bytes = NumberOption(address, "queue", limits.bytes);
  limits.age = seconds("age", limits.age);
  limits.stall = seconds("stall", limits.stall);
  const auto policy = address.options.find("policy");
  limits.policy = policy != address.options.end() ? FindPolicy(policy->second)->policy
                  : canWait                       ? ePolicy::Wait
                                                  : ePolicy::Drop;
  return limits;
}

std::string CheckAddress(const S_Address& address) {
  const S_SinkKind* const kind = FindKind(address.scheme);
  if (kind == nullptr)
    return fmt::format("no destination begins with '{}://'; known: {}", address.scheme,
                       JoinNames(
                           kKinds, [](const S_SinkKind* any) { return any->scheme; }, ", "));
  if (std::string error = CheckParts(*kind, address); !error.empty()) return error;
  for (const auto& [name, value] : address.options)
    if (std::string error = CheckOption(*kind, name, value); !error.empty()) return error;
  return kind->check == nullptr ? std::string() : kind->check(address);
}

}  // namespace

std::size_t NumberOption(const S_Address& address, const std::string& name, std::size_t preset) {
  const auto option = address.options.find(name);
  if (option != address.options.end()) ParseWhole(option->second, preset);
  return preset;
}

std::string CheckRange(const std::string& value, std::size_t least, std::size_t most) {
  std::size_t number = 0;
  if (ParseWhole(value, number) && number >= least && number <= most) return {};
  return fmt::format("must be a whole number from {} to {}", least, most);
}

std::string CheckDestination(const std::string& destination) {
  if (!IsAddress(destination)) return {};
  S_Address address;
  std::string error = ReadAddress(destination, address);
  if (error.empty()) error = CheckAddress(address);
  return error.empty() ? error : fmt::format("{}: {}", address.Shown(), error);
}

bool IsNtrip(const std::string& destination) { return destination.starts_with("ntrip"); }

std::string DestinationForms() {
  return JoinNames(
      kKinds, [](const S_SinkKind* kind) { return kind->form; }, "\n");
}

std::unique_ptr<C_Sink> MakeSink(const std::string& destination, bool canWait, C_SinkThread& thread,
                                 C_Casters& casters) {
  using eContents = C_Output::eContents;
  if (!IsAddress(destination))
    return std::make_unique<C_FileSink>(destination, canWait ? eContents::AtEnd : eContents::AtOnce);
  S_Address address;
  ReadAddress(destination, address);
  return FindKind(address.scheme)->make({address, LimitsOf(address, canWait), thread, casters});
}

}  // namespace Host
