#include "apps/velagnss/net/nats/NatsStream.h"

namespace Host {
namespace {

template <class Get>
t_NatsResult LookUp(t_NatsMessage& message, const Get& get) {
  jsErrCode code{};
  const natsStatus status = NatsMake(message, [&](natsMsg** made) { return get(made, &code); });
  return code == JSNoMessageFoundErr ? std::nullopt : NatsResult(status, code);
}

}  // namespace

t_NatsResult C_NatsStream::Read(t_StreamInfo& info) const {
  jsErrCode code{};
  const natsStatus status = NatsMake(info, [&](jsStreamInfo** made) {
    return js_GetStreamInfo(made, m_session->JetStream(), m_name.c_str(), nullptr, &code);
  });
  return NatsResult(status, code);
}

t_NatsResult C_NatsStream::Find(const std::string& subject, t_NatsMessage& message) const {
  return LookUp(message, [&](natsMsg** made, jsErrCode* code) {
    return js_GetLastMsg(made, m_session->JetStream(), m_name.c_str(), subject.c_str(), nullptr, code);
  });
}

t_NatsResult C_NatsStream::Find(std::uint64_t sequence, t_NatsMessage& message) const {
  return LookUp(message, [&](natsMsg** made, jsErrCode* code) {
    return js_GetMsg(made, m_session->JetStream(), m_name.c_str(), sequence, nullptr, code);
  });
}

t_NatsResult C_NatsStream::Remove(std::uint64_t sequence) const {
  jsErrCode code{};
  const natsStatus status = js_DeleteMsg(m_session->JetStream(), m_name.c_str(), sequence, nullptr, &code);
  const bool isGone = code == JSStreamMsgDeleteFailed || code == JSSequenceNotFoundErr || code == JSNoMessageFoundErr;
  return isGone ? std::nullopt : NatsResult(status, code);
}

t_NatsResult C_NatsStream::RemoveAll(const std::string& subject, std::uint64_t last) const {
  jsOptions options;
  jsOptions_Init(&options);
  options.Stream.Purge.Subject = subject.c_str();
  if (last > 0) options.Stream.Purge.Sequence = last + 1;  // of the first one that remains
  jsErrCode code{};
  const natsStatus status = js_PurgeStream(m_session->JetStream(), m_name.c_str(), &options, &code);
  return NatsResult(status, code);
}

}  // namespace Host
