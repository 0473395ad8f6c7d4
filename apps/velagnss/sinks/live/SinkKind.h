// What an address of each kind of destination may hold, and how its sink is made.
#ifndef VELAGNSS_APPS_SINK_KIND_H
#define VELAGNSS_APPS_SINK_KIND_H

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "apps/velagnss/net/Address.h"
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

// What may follow the '?' of an address: "ttl=4".
struct S_SinkOption {
  std::string_view name;
  std::string (*check)(const std::string& value);  // what is wrong with a value, after its name; or empty
};

enum class ePart { None, Optional, Required };

struct S_SinkKind {
  std::string_view scheme;
  std::string_view form;  // how it is written
  ePart account = ePart::None;
  ePart host = ePart::None;
  ePart port = ePart::None;
  ePart path = ePart::None;
  std::span<const S_SinkOption> options = {};                // but those of the queue
  std::string (*check)(const S_Address& address) = nullptr;  // what the rest of the row cannot say
  std::unique_ptr<C_NetSink> (*make)(const S_SinkMaking& making);
};

// The number of an option that has been checked; `preset` when it is not given.
std::size_t NumberOption(const S_Address& address, const std::string& name, std::size_t preset);

// A check for an option: a whole number from `Least` to `Most`.
std::string CheckRange(const std::string& value, std::size_t least, std::size_t most);
template <std::size_t Least, std::size_t Most>
std::string IsNumber(const std::string& value) {
  return CheckRange(value, Least, Most);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_SINK_KIND_H
