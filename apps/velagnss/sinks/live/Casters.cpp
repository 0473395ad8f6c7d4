#include "apps/velagnss/sinks/live/Casters.h"

#include <fmt/core.h>
#include <openssl/crypto.h>

#include <array>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <fstream>
#include <optional>
#include <utility>
#include <vector>

#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/live/CasterAnswer.h"
#include "apps/velagnss/sinks/live/Listener.h"

namespace Host {
namespace {

using eWeight = S_SinkMessage::eWeight;
using namespace std::chrono_literals;

constexpr std::size_t kMaxRequest = 8192;
constexpr auto kDenialPause = 1s;

// RFC 9110, 5.6.7. The names of days and months do not depend on the locale.
std::string HttpDate() {
  static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  return fmt::format("{}, {:02} {} {:04} {:02}:{:02}:{:02} GMT", kDays[utc.tm_wday], utc.tm_mday, kMonths[utc.tm_mon],
                     utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec);
}

// The lines of the file that hold an account; nothing when it cannot be read.
std::optional<std::vector<std::string>> ReadUsers(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file.is_open()) return std::nullopt;
  std::vector<std::string> users;
  for (std::string line; std::getline(file, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (!line.empty() && !line.starts_with('#') && line.find(':') != std::string::npos) users.push_back(line);
  }
  return users;
}

// The same time for all texts of one length.
bool AreEqual(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ::CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

// A client whose request is being read. It holds itself.
class C_Asking : public std::enable_shared_from_this<C_Asking> {
 public:
  using t_OnRequest = std::function<void(C_Asking& client)>;

  C_Asking(asio::io_context& context, C_FileDescriptor socket, C_Listener::S_Peer peer, C_Admission::t_Pass pass)
      : m_socket(context, socket.Release()), m_timer(context), m_peer(std::move(peer)), m_pass(std::move(pass)) {}

  // `onRequest` is called when there is a request, or what cannot become one; not when the client goes or is too slow.
  void Begin(std::chrono::milliseconds time, t_OnRequest onRequest);

  // Calls `then` after a pause.
  void Pause(std::chrono::milliseconds time, std::function<void(C_Asking& client)> then);

  // Null when it is none.
  const S_HttpHead* Request() const {
    return m_size <= kMaxRequest && m_parser.State() == C_HeadParser::eState::Complete ? &m_parser.Head() : nullptr;
  }
  const C_Listener::S_Peer& Peer() const { return m_peer; }
  C_Readers::S_Newcomer Release(std::string head) {
    return {C_FileDescriptor(m_socket.release()), m_peer.name, std::move(head), false, std::move(m_pass)};
  }

 private:
  void Read();
  void OnRead(std::size_t size);

  asio::posix::stream_descriptor m_socket;
  asio::steady_timer m_timer;
  C_Listener::S_Peer m_peer;
  C_Admission::t_Pass m_pass;
  t_OnRequest m_onRequest;
  C_HeadParser m_parser;
  std::size_t m_size = 0;
  std::array<unsigned char, 1024> m_buffer;
};

void C_Asking::Begin(std::chrono::milliseconds time, t_OnRequest onRequest) {
  m_onRequest = std::move(onRequest);
  m_timer.expires_after(time);
  m_timer.async_wait([self = shared_from_this()](const asio::error_code& error) {
    asio::error_code ignored;
    if (!error && self->m_onRequest) self->m_socket.close(ignored);
  });
  Read();
}

void C_Asking::Pause(std::chrono::milliseconds time, std::function<void(C_Asking& client)> then) {
  m_timer.expires_after(time);
  m_timer.async_wait([self = shared_from_this(), then = std::move(then)](const asio::error_code& error) {
    if (!error) then(*self);
  });
}

void C_Asking::Read() {
  m_socket.async_read_some(asio::buffer(m_buffer),
                           [self = shared_from_this()](const asio::error_code& error, std::size_t size) {
                             if (error) {
                               self->m_onRequest = nullptr;
                               self->m_timer.cancel();
                               return;
                             }
                             self->OnRead(size);
                           });
}

// The head of a pusher of version 1 may never end.
void C_Asking::OnRead(std::size_t size) {
  m_size += size;
  m_parser.Take(std::span(m_buffer).first(size));
  if (m_parser.MayEndHere()) m_parser.EndHere();
  if (m_parser.State() == C_HeadParser::eState::Incomplete && m_size <= kMaxRequest) return Read();
  m_timer.cancel();
  const t_OnRequest onRequest = std::exchange(m_onRequest, nullptr);
  onRequest(*this);
}

}  // namespace

// One address.
class C_Caster {
 public:
  using t_Clock = C_SinkThread::t_Clock;

  C_Caster(C_SinkThread& thread, std::string name, std::chrono::milliseconds headTime)
      : m_thread(thread),
        m_name(std::move(name)),
        m_headTime(headTime),
        m_listener(thread.Context()),
        m_leaving(thread.Context(), {}, std::make_shared<S_SinkCounters>(),
                  [](const std::string&, const std::string&) {}) {}

  std::string Listen(const S_Address& address);
  std::string Add(const std::string& name, S_CasterMount mount);
  void Close() { m_listener.Close(); }
  void CheckProgress(t_Clock::time_point now) { m_leaving.CheckProgress(now); }

 private:
  void OnAccept(C_FileDescriptor socket, const C_Listener::S_Peer& peer);
  void OnRequest(C_Asking& client);
  S_CasterAnswer AnswerOf(const S_HttpHead& request) const;
  void Give(C_Asking& client, const S_CasterAnswer& answer);
  std::string Table() const;
  void Say(eWeight weight, const std::string& text) { m_thread.Say(weight, m_name + ": " + text); }

  C_SinkThread& m_thread;
  const std::string m_name;
  const std::chrono::milliseconds m_headTime;
  C_Listener m_listener;
  C_Admission m_admission{S_ReaderLimits()};
  std::map<std::string, S_CasterMount> m_mounts;
  C_Readers m_leaving;  // those who get an answer without a stream
};

std::string C_Caster::Listen(const S_Address& address) {
  if (std::string error = m_listener.ListenTcp(address.host, address.port); !error.empty()) return error;
  if (m_listener.IsOpenToOthers())
    ReportNotice(m_name + ": other machines can connect and read its mounts; passwords pass the network in the clear");
  m_thread.Post([this] {
    m_listener.Begin(
        [this](C_FileDescriptor socket, const C_Listener::S_Peer& peer) { OnAccept(std::move(socket), peer); },
        [this](const std::string& text) { Say(eWeight::Warning, text); });
  });
  return {};
}

std::string C_Caster::Add(const std::string& name, S_CasterMount mount) {
  if (m_mounts.contains(name)) return "this mount is given twice";
  m_mounts.emplace(name, std::move(mount));
  return {};
}

void C_Caster::OnAccept(C_FileDescriptor socket, const C_Listener::S_Peer& peer) {
  C_Admission::t_Pass pass = m_admission.Admit(peer.address);
  if (pass == nullptr) {
    Say(eWeight::Detail, peer.name + " turned away: there are too many clients");
    const std::string text = BusyText(HttpDate());
    [[maybe_unused]] const ssize_t sent = ::write(socket.Get(), text.data(), text.size());
    return;
  }
  const auto client = std::make_shared<C_Asking>(m_thread.Context(), std::move(socket), peer, std::move(pass));
  client->Begin(m_headTime, [this](C_Asking& asking) { OnRequest(asking); });
}

void C_Caster::OnRequest(C_Asking& client) {
  const S_HttpHead* const request = client.Request();
  if (request == nullptr) return m_leaving.Dismiss(client.Release(BadRequestText(HttpDate())));
  const S_CasterAnswer answer = AnswerOf(*request);
  if (!answer.isDenied) return Give(client, answer);
  Say(eWeight::Notice,
      fmt::format("{} has no right to /{}: wrong or missing user name or password", client.Peer().name, answer.mount));
  client.Pause(kDenialPause, [this, answer](C_Asking& asking) { Give(asking, answer); });
}

S_CasterAnswer C_Caster::AnswerOf(const S_HttpHead& request) const {
  const std::string table = Table();
  const std::string date = HttpDate();
  return AnswerTo(request, {.table = table,
                            .date = date,
                            .hasMount = [this](const std::string& mount) { return m_mounts.contains(mount); },
                            .mayRead =
                                [this](const std::string& mount, std::string_view authorization) {
                                  const std::string& users = m_mounts.at(mount).users;
                                  return users.empty() || IsAuthorized(users, authorization);
                                }});
}

void C_Caster::Give(C_Asking& client, const S_CasterAnswer& answer) {
  constexpr std::size_t kShownAgent = 60;
  const std::string agent = Printable(client.Request()->Field("user-agent").substr(0, kShownAgent));
  C_Readers::S_Newcomer newcomer = client.Release(answer.text);
  if (!answer.isStream) return m_leaving.Dismiss(std::move(newcomer));
  newcomer.usesChunks = answer.usesChunks;
  newcomer.name += fmt::format(" ({})", agent);
  m_mounts.at(answer.mount).onReader(std::move(newcomer));
}

std::string C_Caster::Table() const {
  std::string table;
  for (const auto& [name, mount] : m_mounts) table += mount.record + "\r\n";
  return table + "ENDSOURCETABLE\r\n";
}

C_Casters::C_Casters(C_SinkThread& thread, std::chrono::milliseconds headTime)
    : m_thread(thread), m_headTime(headTime) {}

C_Casters::~C_Casters() = default;

// The sink thread may be looking through the casters and their mounts already.
std::string C_Casters::Add(const S_Address& address, S_CasterMount mount) {
  bool isNew = false;
  C_Caster* const caster = m_thread.Call([&] {
    std::unique_ptr<C_Caster>& place = m_casters[address.HostAndPort()];
    isNew = place == nullptr;
    if (isNew)
      place = std::make_unique<C_Caster>(m_thread, fmt::format("{}://{}", address.scheme, address.HostAndPort()),
                                         m_headTime);
    return place.get();
  });
  std::string error = isNew ? caster->Listen(address) : std::string();
  if (!error.empty()) return error;
  return m_thread.Call([&] { return caster->Add(address.path.substr(1), std::move(mount)); });
}

void C_Casters::Close() {
  for (const auto& [name, caster] : m_casters) caster->Close();
}

void C_Casters::CheckProgress(C_SinkThread::t_Clock::time_point now) {
  for (const auto& [name, caster] : m_casters) caster->CheckProgress(now);
}

bool IsAuthorized(const std::string& usersFile, std::string_view authorization) {
  constexpr std::string_view kScheme = "basic ";
  if (InLowerCase(authorization.substr(0, kScheme.size())) != kScheme) return false;
  const std::string given = fmt::format("Basic {}", authorization.substr(kScheme.size()));
  bool isKnown = false;
  for (const std::string& line : ReadUsers(usersFile).value_or(std::vector<std::string>())) {
    const std::size_t colon = line.find(':');
    const std::string expected = BasicAuthorization(line.substr(0, colon), line.substr(colon + 1));
    isKnown = AreEqual(given, expected) || isKnown;
  }
  return isKnown;
}

std::string CheckUsers(const std::string& usersFile) {
  const std::optional<std::vector<std::string>> users = ReadUsers(usersFile);
  if (!users) return fmt::format("its file of users, {}, cannot be read", usersFile);
  return users->empty() ? fmt::format("its file of users, {}, has no line USER:PASSWORD", usersFile) : std::string();
}

}  // namespace Host
