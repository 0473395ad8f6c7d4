#include "apps/velagnss/sinks/live/Sinks.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "apps/velagnss/sinks/live/FileSink.h"
#include "apps/velagnss/sinks/live/ListenSink.h"
#include "apps/velagnss/sinks/live/NtripCasterSink.h"
#include "apps/velagnss/sinks/live/NtripPushSink.h"
#include "apps/velagnss/sinks/live/PipeSink.h"
#include "apps/velagnss/sinks/live/SerialSink.h"
#include "apps/velagnss/sinks/live/SinkKind.h"
#include "apps/velagnss/sinks/live/TcpSink.h"
#include "apps/velagnss/sinks/live/UdpSink.h"
#include "apps/velagnss/sinks/nats/NatsSink.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

const S_SinkKind* const kKinds[] = {&kTcpListenSink, &kTcpSink,         &kUdpSink,  &kUnixListenSink, &kSerialSink,
                                    &kNtripPushSink, &kNtripCasterSink, &kNatsSink, &kNatsTlsSink};

struct S_PolicyName {
  std::string_view name;
  ePolicy policy;
};
constexpr S_PolicyName kPolicies[] = {{"drop", ePolicy::Drop}, {"close", ePolicy::Close}, {"wait", ePolicy::Wait}};

const S_PolicyName* FindPolicy(std::string_view name) {
  const auto* const found = std::ranges::find(kPolicies, name, &S_PolicyName::name);
  return found == std::end(kPolicies) ? nullptr : found;
}

bool IsPolicy(const std::string& value) { return FindPolicy(value) != nullptr; }

// The options of every address, for what waits for a reader.
constexpr S_AddressOption kQueueOptions[] = {
    {"policy", "drop, close or wait", &IsPolicy},
    {"queue", "a number of bytes from 1 to 1073741824", &IsNumber<1, std::size_t{1} << 30>},
    {"age", "a number of seconds from 1 to 3600", &IsNumber<1, 3'600>},
    {"stall", "a number of seconds from 1 to 3600", &IsNumber<1, 3'600>},
};

const S_SinkKind* FindKind(std::string_view scheme) {
  const auto* const found = std::ranges::find(kKinds, scheme, [](const S_SinkKind* kind) { return kind->form.scheme; });
  return found == std::end(kKinds) ? nullptr : *found;
}

S_QueueLimits LimitsOf(const S_Address& address, const S_SinkKind& kind, bool canWait) {
  const auto seconds = [&address](const char* name, std::chrono::milliseconds preset) {
    const auto count = NumberOption(address, name, 0);
    return count == 0 ? preset : std::chrono::milliseconds(count * 1'000);
  };
  S_QueueLimits limits = canWait ? S_QueueLimits() : kind.liveLimits;
  limits.bytes = NumberOption(address, "queue", limits.bytes);
  limits.age = seconds("age", limits.age);
  limits.stall = seconds("stall", limits.stall);
  const auto policy = address.options.find("policy");
  limits.policy = policy != address.options.end() ? FindPolicy(policy->second)->policy
                  : canWait                       ? ePolicy::Wait
                                                  : ePolicy::Drop;
  return limits;
}

std::string CheckKind(const S_Address& address) {
  const S_SinkKind* const kind = FindKind(address.scheme);
  if (kind == nullptr)
    return fmt::format("no destination begins with '{}://'; known: {}", address.scheme,
                       JoinNames(
                           kKinds, [](const S_SinkKind* any) { return any->form.scheme; }, ", "));
  std::vector<S_AddressOption> options(kind->form.options.begin(), kind->form.options.end());
  options.insert(options.end(), std::begin(kQueueOptions), std::end(kQueueOptions));
  S_AddressForm form = kind->form;
  form.options = options;
  return CheckAddress(address, form);
}

}  // namespace

std::size_t NumberOption(const S_Address& address, const std::string& name, std::size_t preset) {
  const auto option = address.options.find(name);
  if (option != address.options.end()) ParseWhole(option->second, preset);
  return preset;
}

bool IsBetween(const std::string& value, std::size_t least, std::size_t most) {
  std::size_t number = 0;
  return ParseWhole(value, number) && number >= least && number <= most;
}

std::string CheckDestination(const std::string& destination) {
  if (!IsAddress(destination)) return {};
  S_Address address;
  if (const std::string error = ReadAddress(destination, address); !error.empty())
    return fmt::format("{}://...: {}", address.scheme, error);
  const std::string error = CheckKind(address);
  return error.empty() ? error : fmt::format("{}: {}", address.Shown(), error);
}

eRawUse RawUseOf(const std::string& destination) {
  S_Address address;
  if (!IsAddress(destination) || !ReadAddress(destination, address).empty()) return eRawUse::Usual;
  const S_SinkKind* const kind = FindKind(address.scheme);
  return kind == nullptr ? eRawUse::Usual : kind->rawUse;
}

std::string DestinationForms() {
  return JoinNames(
      kKinds, [](const S_SinkKind* kind) { return kind->form.example; }, "; ");
}

std::unique_ptr<C_Sink> MakeSink(const std::string& destination, const S_SinkContext& context) {
  using eWriting = C_Output::eWriting;
  if (!IsAddress(destination) && !context.canWait && IsPipe(destination))
    return MakePipeSink(context.thread, destination, {});
  if (!IsAddress(destination))
    return std::make_unique<C_FileSink>(destination, context.canWait ? eWriting::Replacement : eWriting::Direct);
  S_Address address;
  ReadAddress(destination, address);
  const S_SinkKind& kind = *FindKind(address.scheme);
  return kind.make({address, LimitsOf(address, kind, context.canWait), context.thread, context.casters,
                    context.credentials, context.isInOrder});
}

}  // namespace Host
