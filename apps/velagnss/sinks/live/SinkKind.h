// What an address of each kind of destination may hold, and how its sink is made.
#ifndef VELAGNSS_APPS_SINK_KIND_H
#define VELAGNSS_APPS_SINK_KIND_H

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <string>

#include "apps/velagnss/net/AddressForm.h"
#include "apps/velagnss/sinks/live/NetSink.h"

namespace Host {

class C_Casters;

// What sinks are made with.
struct S_SinkMaking {
  const S_Address& address;
  const S_QueueLimits& limits;  // of the address, too
  C_SinkThread& thread;
  C_Casters& casters;
};

struct S_SinkKind {
  S_AddressForm form;
  std::unique_ptr<C_NetSink> (*make)(const S_SinkMaking& making);
};

// `make` of a sink that is made of these alone.
template <class Sink>
std::unique_ptr<C_NetSink> MakeSinkOf(const S_SinkMaking& making) {
  return std::make_unique<Sink>(making);
}

// The number of an option that has been checked; `preset` when it is not given.
std::size_t NumberOption(const S_Address& address, const std::string& name, std::size_t preset);

// A check for an option: a whole number from `Least` to `Most`.
bool IsBetween(const std::string& value, std::size_t least, std::size_t most);
template <std::size_t Least, std::size_t Most>
bool IsNumber(const std::string& value) {
  return IsBetween(value, Least, Most);
}

// The options that every address takes, for what waits for a reader.
bool IsPolicy(const std::string& value);
inline constexpr std::array kQueueOptions = {
    S_AddressOption{"policy", "drop, close or wait", &IsPolicy},
    S_AddressOption{"queue", "a number of bytes from 1 to 1073741824", &IsNumber<1, std::size_t{1} << 30>},
    S_AddressOption{"age", "a number of seconds from 1 to 3600", &IsNumber<1, 3'600>},
    S_AddressOption{"stall", "a number of seconds from 1 to 3600", &IsNumber<1, 3'600>},
};

// These, and the options of one kind.
template <std::size_t Count>
constexpr auto WithQueueOptions(const S_AddressOption (&options)[Count]) {
  std::array<S_AddressOption, Count + kQueueOptions.size()> all{};
  std::copy(std::begin(options), std::end(options), all.begin());
  std::copy(kQueueOptions.begin(), kQueueOptions.end(), all.begin() + Count);
  return all;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_SINK_KIND_H
