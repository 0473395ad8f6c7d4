// What an address of each kind of destination may hold, and how its sink is made.
#ifndef VELAGNSS_APPS_SINK_KIND_H
#define VELAGNSS_APPS_SINK_KIND_H

#include <memory>
#include <string>

#include "apps/velagnss/net/AddressForm.h"
#include "apps/velagnss/sinks/live/NetSink.h"
#include "apps/velagnss/sinks/live/Sinks.h"

namespace Host {

class C_Casters;

// What sinks are made with.
struct S_SinkMaking {
  const S_Address& address;
  const S_QueueLimits& limits;  // of the address, too
  C_SinkThread& thread;
  C_Casters& casters;
  const std::string& credentials;  // the name of a file; may be empty
  bool isInOrder = true;           // as S_SinkContext says it
};

struct S_SinkKind {
  S_AddressForm form;  // its options are those besides policy, queue, age and stall, which all kinds have
  std::unique_ptr<C_NetSink> (*make)(const S_SinkMaking& making);
  eRawUse rawUse = eRawUse::Usual;
  S_QueueLimits liveLimits = {};  // of live sources, where the address has no others
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

}  // namespace Host

#endif  // VELAGNSS_APPS_SINK_KIND_H
