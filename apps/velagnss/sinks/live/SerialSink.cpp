#include "apps/velagnss/sinks/live/SerialSink.h"

#include "apps/velagnss/net/SerialSettings.h"
#include "apps/velagnss/sinks/live/OutgoingSink.h"

namespace Host {
namespace {

S_Dialed Dial(const S_Address& address) {
  const S_SerialSettings settings = ReadSerialSettings(address);
  C_FileDescriptor port;
  if (const auto failure = OpenSerialPort(address.path, settings, port)) {
    using eKind = S_LinkFailure::eKind;
    return {.failure = S_LinkFailure{failure->mayPass ? eKind::Lost : eKind::Final, failure->text, {}}};
  }
  std::string peer = SerialText(port.Get(), settings);
  return {.descriptor = std::move(port), .peer = std::move(peer), .kind = S_Dialed::eKind::Port};
}

// A device that was unplugged may come back any time, and looking for it takes little.
std::unique_ptr<C_NetSink> Make(const S_SinkMaking& making) {
  const S_DialRules rules = {.retry = {.longest = std::chrono::seconds(2)}};
  return std::make_unique<C_OutgoingSink>(making.thread, making.address.Shown(), making.limits, rules,
                                          [address = making.address](C_Await&) { return Dial(address); });
}

}  // namespace

const S_SinkKind kSerialSink = {kSerialForm, &Make};

}  // namespace Host
