// Objects of libnats that destroy themselves.
#ifndef VELAGNSS_APPS_NATS_HANDLES_H
#define VELAGNSS_APPS_NATS_HANDLES_H

#include <nats/nats.h>

#include <memory>

namespace Host {

template <auto Destroy>
struct S_NatsDestroyer {
  template <class Object>
  void operator()(Object* object) const {
    Destroy(object);
  }
};
template <class Object, auto Destroy>
using t_NatsHandle = std::unique_ptr<Object, S_NatsDestroyer<Destroy>>;

using t_NatsOptions = t_NatsHandle<natsOptions, &natsOptions_Destroy>;
using t_NatsConnection = t_NatsHandle<natsConnection, &natsConnection_Destroy>;
using t_NatsMessage = t_NatsHandle<natsMsg, &natsMsg_Destroy>;
using t_NatsSubscription = t_NatsHandle<natsSubscription, &natsSubscription_Destroy>;
using t_JetStream = t_NatsHandle<jsCtx, &jsCtx_Destroy>;
using t_PubAck = t_NatsHandle<jsPubAck, &jsPubAck_Destroy>;
using t_StreamInfo = t_NatsHandle<jsStreamInfo, &jsStreamInfo_Destroy>;
using t_ConsumerInfo = t_NatsHandle<jsConsumerInfo, &jsConsumerInfo_Destroy>;
using t_MessageMetaData = t_NatsHandle<jsMsgMetaData, &jsMsgMetaData_Destroy>;

// Calls a function of libnats whose first parameter is where it puts the object that it makes:
//   status = NatsMake(handle, [&](natsMsg** made) { return natsSubscription_NextMsg(made, subscription, 0); });
template <class Handle, class Call>
natsStatus NatsMake(Handle& handle, const Call& call) {
  typename Handle::pointer made = nullptr;
  const natsStatus status = call(&made);
  handle.reset(made);
  return status;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_NATS_HANDLES_H
