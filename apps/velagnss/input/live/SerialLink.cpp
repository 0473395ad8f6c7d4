#include "apps/velagnss/input/live/SerialLink.h"

#include <fmt/core.h>

#include <asio/posix/stream_descriptor.hpp>
#include <filesystem>

#include "apps/velagnss/input/live/StreamLink.h"
#include "apps/velagnss/net/SerialSettings.h"

namespace Host {
namespace {

using t_Port = asio::posix::stream_descriptor;

class C_SerialLink : public C_StreamLink<t_Port> {
 public:
  C_SerialLink(const S_Address& address, C_Await& await)
      : C_StreamLink(await, "the device is gone"), m_path(address.path), m_settings(ReadSerialSettings(address)) {}
  ~C_SerialLink() override { C_SerialLink::Close(); }
  C_SerialLink(const C_SerialLink&) = delete;
  C_SerialLink& operator=(const C_SerialLink&) = delete;

  std::optional<S_LinkFailure> Open() override {
    C_FileDescriptor port;
    if (auto failure = OpenSerialPort(m_path, m_settings, port))
      return failure->mayPass ? S_LinkFailure::Lost(failure->text) : S_LinkFailure::Final(failure->text);
    std::error_code gone;
    const std::string device = std::filesystem::canonical(m_path, gone);  // where the links of udev lead
    std::string peer = fmt::format("{} at {}", device, SerialText(port.Get(), m_settings));
    Use(t_Port(m_await.Context(), port.Release()), std::move(peer));
    return std::nullopt;
  }

  // A descriptor that is kept open keeps the number of a device that was unplugged: it would come back under another.
  S_Read Read(C_Await::t_Time deadline) override {
    S_Read read = C_StreamLink::Read(deadline);
    if (read.failure) Close();
    return read;
  }

  void Close() override {
    if (t_Port* port = Opened()) ReleaseSerialPort(port->native_handle());
    C_StreamLink::Close();
  }

  // A device that was unplugged is looked for often: it takes little, and it may come back any time.
  S_RetryRules RetryRules() const override { return {.longest = std::chrono::seconds(2), .idleTimeout = {}}; }

 private:
  const std::string m_path;
  const S_SerialSettings m_settings;
};

}  // namespace

const S_LinkKind kSerialLink = {kSerialForm, &MakeLinkOf<C_SerialLink>};

}  // namespace Host
