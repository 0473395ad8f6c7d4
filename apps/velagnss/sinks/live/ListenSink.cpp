#include "apps/velagnss/sinks/live/ListenSink.h"

#include <fmt/core.h>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/live/Listener.h"
#include "apps/velagnss/sinks/live/ReaderSink.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using eWeight = S_SinkMessage::eWeight;

class C_ListenSink : public C_ReaderSink {
 public:
  explicit C_ListenSink(const S_SinkMaking& making)
      : C_ReaderSink(making),
        m_address(making.address),
        m_listener(making.thread.Context()),
        m_admission({.all = NumberOption(m_address, "clients", S_ReaderLimits().all),
                     .perAddress = NumberOption(m_address, "per-address", S_ReaderLimits().perAddress)}) {}

 protected:
  bool Prepare() override;
  void Begin() override;
  void StopListening() override { m_listener.Close(); }

 private:
  void OnAccept(C_FileDescriptor socket, const C_Listener::S_Peer& peer);

  S_Address m_address;
  C_Listener m_listener;
  C_Admission m_admission;
  std::uint64_t m_unnamed = 0;
};

// In octal, as chmod takes it.
unsigned int ModeOf(const S_Address& address) {
  constexpr unsigned int kOwnerAndGroup = 0660;
  const auto option = address.options.find("mode");
  return option == address.options.end() ? kOwnerAndGroup
                                         : static_cast<unsigned int>(std::stoul(option->second, nullptr, 8));
}

bool C_ListenSink::Prepare() {
  const bool isUnix = m_address.scheme == kUnixListenSink.form.scheme;
  const std::string error = isUnix ? m_listener.ListenUnix(m_address.path, ModeOf(m_address))
                                   : m_listener.ListenTcp(m_address.host, m_address.port);
  if (!error.empty()) ReportError(Name() + ": " + error);
  if (error.empty() && m_listener.IsOpenToOthers())
    ReportNotice(Name() + ": other machines can connect and read the stream, without a password");
  return error.empty();
}

void C_ListenSink::Begin() {
  m_listener.Begin(
      [this](C_FileDescriptor socket, const C_Listener::S_Peer& peer) { OnAccept(std::move(socket), peer); },
      [this](const std::string& text) { Say(eWeight::Warning, text); });
}

void C_ListenSink::OnAccept(C_FileDescriptor socket, const C_Listener::S_Peer& peer) {
  std::string name = peer.name.empty() ? fmt::format("client {}", ++m_unnamed) : peer.name;
  C_Admission::t_Pass pass = m_admission.Admit(peer.address);
  if (pass == nullptr) return Say(eWeight::Detail, name + " turned away: there are too many clients");
  AddReader({std::move(socket), std::move(name), {}, false, std::move(pass)});
}

bool IsMode(const std::string& value) {
  return value.size() == 3 && value.find_first_not_of("01234567") == std::string::npos;
}

constexpr S_AddressOption kClients = {"clients", "a number from 1 to 100000", &IsNumber<1, 100'000>};
constexpr S_AddressOption kTcpOptions[] = {kClients,
                                           {"per-address", "a number from 1 to 100000", &IsNumber<1, 100'000>}};
constexpr S_AddressOption kUnixOptions[] = {kClients, {"mode", "three octal digits, such as 660", &IsMode}};

}  // namespace

using eNeed = S_AddressForm::eNeed;

const S_SinkKind kTcpListenSink = {{.scheme = "tcp-listen",
                                    .example = "tcp-listen://:PORT or tcp-listen://ADDRESS:PORT",
                                    .host = eNeed::Maybe,
                                    .port = eNeed::Must,
                                    .options = kTcpOptions},
                                   &MakeSinkOf<C_ListenSink>};
const S_SinkKind kUnixListenSink = {
    {.scheme = "unix-listen", .example = "unix-listen:///PATH", .path = eNeed::Must, .options = kUnixOptions},
    &MakeSinkOf<C_ListenSink>};

}  // namespace Host
