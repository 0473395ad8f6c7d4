// The links of live sources against real sockets and pseudo-terminals, within this process.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <termios.h>

#include <filesystem>
#include <regex>
#include <thread>

#include "Cases.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/net/TcpTransport.h"
#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/os/SerialSpeed.h"

namespace {

using namespace std::chrono_literals;
using Host::C_Await;
using Host::C_FileDescriptor;
using Host::C_Link;
using Host::S_LinkFailure;
using testing::HasSubstr;
using eKind = S_LinkFailure::eKind;

constexpr auto kPatience = 20s;  // only a link that hangs needs it

C_Await::t_Time Soon(C_Await::t_Clock::duration time = kPatience) { return C_Await::t_Clock::now() + time; }

struct S_AddressCase {
  const char* name;
  const char* text;
  const char* shown;  // with the options; empty for a bad one
  const char* error;  // a part of it
};

// clang-format off
const S_AddressCase kAddresses[] = {
    {"HostAndPort",      "tcp://host.example:5015",       "tcp://host.example:5015", ""},
    {"SchemeInCapitals", "TCP://Host:1",                  "tcp://Host:1", ""},
    {"AccountIsHidden",  "ntrip://me:p@ss:word@h:2101/M", "ntrip://h:2101/M user=me password=p@ss:word", ""},
    {"Percent",          "ntrip://a%40b:%2f%zz@h/M%20N",  "ntrip://h/M N user=a@b password=/%zz", ""},
    {"Version6",         "tcp://[fe80::1%eth0]:99",       "tcp://[fe80::1%eth0]:99", ""},
    {"NoHost",           "udp://:5000",                   "udp://:5000", ""},
    {"PathAndOptions",   "serial:///dev/ttyS0?baud=9600&flow=&x", "serial:///dev/ttyS0 baud=9600 flow= x=", ""},
    {"PathWithColon",    "serial:///dev/serial/by-path/pci-0:1.0", "serial:///dev/serial/by-path/pci-0:1.0", ""},
    {"NoScheme",         "://h:1",            "", "SCHEME://"},
    {"PortTooGreat",     "tcp://h:65536",     "", "a port that is not"},
    {"PortZero",         "tcp://h:0",         "", "a port that is not"},
    {"PortWithSign",     "tcp://h:+1",        "", "a port that is not"},
    {"PasswordAsPort",   "ntrip://me:secret/M", "", "a port that is not a number from 1 to 65535"},
    {"OpenBracket",      "tcp://[::1:5",      "", "'['"},
    {"AfterBracket",     "tcp://[::1]5",      "", "']'"},
    {"PasswordWithSlash",    "ntrip://me:pa/ss@h:2101/M", "", "%2F"},  // else the port would be 'pa', and be shown
    {"PasswordWithQuestion", "ntrip://me:12?34@h:2101/M", "", "%3F"},
    {"LineFeed",         "ntrip://h/M%0d%0aX: y", "", "control character"},
    {"OptionTwice",      "udp://:1?interface=a&interface=b", "", "an option that is given twice"},
    {"LineFeedInOption", "udp://:1?interface=%0a", "", "control character"},
};
// clang-format on

TEST_ROWS(Addresses, AreTakenApart, kAddresses, row) {
  Host::S_Address address;
  const std::string error = Host::ReadAddress(row.text, address);
  EXPECT_THAT(error, HasSubstr(row.error));
  EXPECT_EQ(error.empty(), *row.error == '\0');
  if (!error.empty()) return;
  std::string shown = address.Shown();
  if (!address.user.empty()) shown += " user=" + address.user + " password=" + address.password;
  for (const auto& [name, value] : address.options) shown += ' ' + name + '=' + value;
  EXPECT_EQ(shown, row.shown);
}

struct S_LiveCase {
  const char* name;
  const char* text;
  bool isLive;
  const char* error;  // a part of it; empty: can be a source
};

// clang-format off
const S_LiveCase kLives[] = {
    {"Tcp",             "tcp://localhost:1",               true,  ""},
    {"TcpListen",       "tcp-listen://:1",                 true,  ""},
    {"Udp",             "udp://:1",                        true,  ""},
    {"Multicast",       "udp://239.1.2.3:1?interface=lo",  true,  ""},
    {"MulticastV6",     "udp://[ff02::1]:1?interface=lo",  true,  ""},
    {"Unix",            "unix:///run/gnss.sock",           true,  ""},
    {"Serial",          "serial:///dev/ttyUSB0?baud=460800&bits=7&parity=even&stop=2&flow=rtscts", true, ""},
    {"AbsentPort",      "/dev/ttyNONE7",                   true,  ""},
    {"AbsentPortById",  "/dev/serial/by-id/usb-NONE-if00", true,  ""},
    {"AbsentTerminal",  "/dev/pts/999999",                 true,  ""},
    {"PortAndOption",   "/dev/ttyNONE7?baud=9600",         true,  ""},
    {"File",            "session.bin",                     false, nullptr},
    {"StandardInput",   "-",                               false, nullptr},
    {"NullDevice",      "/dev/null",                       false, nullptr},
    {"OwnTerminal",     "/dev/tty",                        false, nullptr},
    {"Scheme",          "ftp://h/x",            true, "known are: "},
    {"NoPort",          "tcp://h",              true, "has no port; write it as tcp://HOST:PORT"},
    {"NoHost",          "tcp://:1",             true, "has no host"},
    {"ListensNowhere",  "tcp-listen://",        true, "has no port"},
    {"NoPath",          "serial://",            true, "has no path"},
    {"RootIsNoPath",    "unix:///",             true, "has no path"},
    {"TwoSlashes",      "serial://dev/ttyUSB0", true, "has the host 'dev'"},
    {"SurplusPath",     "tcp://h:1/x",          true, "has the path '/x'"},
    {"SurplusPort",     "unix://:5/x",          true, "has the port '5'"},
    {"SurplusAccount",  "tcp://me:secret@h:1",  true, "has a user"},
    {"NoOptionsAtAll",  "tcp://h:1?baud=1",     true, "takes no options"},
    {"UnknownOption",   "serial:///dev/x?speed=9600", true, "unknown option 'speed'; serial takes: baud, bits"},
    {"BadBaud",         "serial:///dev/x?baud=fast",  true, "baud must be a number"},
    {"BaudZero",        "/dev/ttyNONE7?baud=0",       true, "baud must be a number"},
    {"BadBits",         "serial:///dev/x?bits=9",     true, "bits must be a number from 5 to 8"},
    {"BadParity",       "serial:///dev/x?parity=N",   true, "parity must be none, even or odd"},
    {"BadStop",         "serial:///dev/x?stop=0",     true, "stop must be 1 or 2"},
    {"BadFlow",         "serial:///dev/x?flow=on",    true, "flow must be none, rtscts or xonxoff"},
    {"InterfaceOfHost", "udp://:1?interface=lo",      true, "for multicast groups"},
    {"InterfaceName",   "udp://224.0.0.1:1?interface=", true, "interface must be the name"},
    {"LongSocket",      "unix:///01234567890123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456",
                                                  true, "at most 107 characters, this one 108"},
};
// clang-format on

TEST_ROWS(LiveNames, AreChecked, kLives, row) {
  EXPECT_EQ(Host::IsLive(row.text), row.isLive);
  if (row.error == nullptr) return;
  const std::string error = Host::CheckLive(row.text);
  EXPECT_THAT(error, HasSubstr(row.error));
  EXPECT_EQ(error.empty(), *row.error == '\0');
  EXPECT_THAT(error, testing::Not(HasSubstr("secret")));
}

// A socket address of IPv4 or IPv6 on this machine.
struct S_Place {
  sockaddr_storage address{};
  socklen_t size = 0;
  sockaddr* Get() { return reinterpret_cast<sockaddr*>(&address); }
};

S_Place Place(const std::string& text, int port, unsigned int interface = 0) {
  S_Place place;
  auto* const v4 = reinterpret_cast<sockaddr_in*>(&place.address);
  auto* const v6 = reinterpret_cast<sockaddr_in6*>(&place.address);
  const bool isV6 = text.find(':') != std::string::npos;
  place.size = isV6 ? sizeof *v6 : sizeof *v4;
  place.address.ss_family = isV6 ? AF_INET6 : AF_INET;
  (isV6 ? v6->sin6_port : v4->sin_port) = htons(static_cast<std::uint16_t>(port));
  v6->sin6_scope_id = isV6 ? interface : 0;
  EXPECT_EQ(
      ::inet_pton(place.address.ss_family, text.c_str(), isV6 ? static_cast<void*>(&v6->sin6_addr) : &v4->sin_addr), 1);
  return place;
}

int PortOf(const C_FileDescriptor& socket) {
  S_Place place;
  place.size = sizeof place.address;
  ::getsockname(socket.Get(), place.Get(), &place.size);
  return ntohs(reinterpret_cast<sockaddr_in*>(&place.address)->sin_port);
}

C_FileDescriptor Bound(const std::string& address, int type) {
  S_Place place = Place(address, 0);
  C_FileDescriptor socket(::socket(place.address.ss_family, type, 0));
  EXPECT_EQ(::bind(socket.Get(), place.Get(), place.size), 0);
  return socket;
}

C_FileDescriptor Listening(const std::string& address) {
  C_FileDescriptor socket = Bound(address, SOCK_STREAM);
  EXPECT_EQ(::listen(socket.Get(), 5), 0);
  return socket;
}

// Nobody has it; the next one to ask will hardly get it.
int FreePort(int type = SOCK_STREAM) { return PortOf(Bound("127.0.0.1", type)); }

C_FileDescriptor Connected(int port, const std::string& address = "127.0.0.1") {
  S_Place place = Place(address, port);
  C_FileDescriptor socket(::socket(place.address.ss_family, SOCK_STREAM, 0));
  EXPECT_EQ(::connect(socket.Get(), place.Get(), place.size), 0) << std::strerror(errno);
  return socket;
}

C_FileDescriptor Accept(const C_FileDescriptor& listener) {
  return C_FileDescriptor(::accept(listener.Get(), nullptr, nullptr));
}

void Write(const C_FileDescriptor& to, std::string_view bytes) {
  EXPECT_EQ(::write(to.Get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

std::string ReadSome(const C_FileDescriptor& from) {
  char buffer[256];
  const ssize_t size = ::read(from.Get(), buffer, sizeof buffer);
  return size < 0 ? "failed" : std::string(buffer, static_cast<std::size_t>(size));
}

// A pseudo-terminal: the test has its other end, as if it were the receiver.
class Terminal {
 public:
  Terminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY)) {
    EXPECT_EQ(::grantpt(m_master.Get()), 0);
    EXPECT_EQ(::unlockpt(m_master.Get()), 0);
    char name[64] = {};
    EXPECT_EQ(::ptsname_r(m_master.Get(), name, sizeof name), 0);
    m_name = name;
  }
  const std::string& Name() const { return m_name; }
  C_FileDescriptor& Master() { return m_master; }
  void Unplug() { m_master.Close(); }

 private:
  C_FileDescriptor m_master;
  std::string m_name;
};

std::size_t NumDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

class Links : public testing::Test {
 protected:
  Links() { ::alarm(60); }  // a sender is waited for without end
  ~Links() override { ::alarm(0); }
  void Make(const std::string& name) {
    ASSERT_TRUE(Host::IsLive(name)) << name;
    ASSERT_EQ(Host::CheckLive(name), "") << name;
    m_link = Host::MakeLink(name, {}, m_await);
    m_link->SetNotice([this](const std::string& text) { m_notices += text + '\n'; });
  }
  // The text of the failure; empty when it is open.
  std::string Open() {
    m_failure = m_link->Open();
    return m_failure ? m_failure->text : "";
  }
  // Until `size` bytes have come; then what it failed with.
  std::string Read(std::size_t size) {
    std::string bytes;
    while (bytes.size() < size) {
      const C_Link::S_Read read = m_link->Read(Soon());
      bytes.append(read.bytes.begin(), read.bytes.end());
      if (read.failure) return bytes + " failed";
      if (C_Await::t_Clock::now() > m_end) return bytes + " timed out";
    }
    return bytes;
  }
  std::string ReadFailure() {
    for (;;) {
      const C_Link::S_Read read = m_link->Read(Soon());
      m_failure = read.failure;
      if (read.failure) return read.failure->text;
      if (!read.bytes.empty() || C_Await::t_Clock::now() > m_end) return "none";
    }
  }

  C_Await m_await;
  std::unique_ptr<C_Link> m_link;
  std::optional<S_LinkFailure> m_failure;
  std::string m_notices;
  const C_Await::t_Time m_end = Soon(3 * kPatience);
};

struct S_HostCase {
  const char* name;
  const char* address;
  const char* written;
};
const S_HostCase kHosts[] = {
    {"Version4", "127.0.0.1", "127.0.0.1"}, {"Version6", "::1", "[::1]"}, {"ByName", "127.0.0.1", "localhost"}};

TEST_ROWS_F(TcpLinks, Read, Links, kHosts, row) {
  const C_FileDescriptor server = Listening(row.address);
  Make("tcp://" + std::string(row.written) + ':' + std::to_string(PortOf(server)));
  ASSERT_EQ(Open(), "");
  C_FileDescriptor peer = Accept(server);
  EXPECT_THAT(m_link->Peer(), HasSubstr(':' + std::to_string(PortOf(server))));
  EXPECT_TRUE(m_link->Read(C_Await::t_Clock::now() + 1ms).bytes.empty());
  Write(peer, "one");
  EXPECT_EQ(Read(3), "one");
  Write(peer, "two");
  peer.Close();
  EXPECT_EQ(Read(3), "two");
  EXPECT_EQ(ReadFailure(), "the other side has closed the connection");
  EXPECT_EQ(m_failure->kind, eKind::Lost);
  m_link->Close();
  ASSERT_EQ(Open(), "");
  peer = Accept(server);
  const linger reset{1, 0};
  ::setsockopt(peer.Get(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  peer.Close();
  EXPECT_EQ(ReadFailure(), "Connection reset by peer");
}

// One after the other; a second sender does not disturb the first.
TEST_F(Links, TcpListenTakesOneSenderAtATime) {
  const int port = FreePort();
  Make("tcp-listen://:" + std::to_string(port));
  C_FileDescriptor first, second;
  m_link->SetNotice([&](const std::string& text) {  // by now it listens
    m_notices += text + '\n';
    if (first.IsOpen()) return;
    first = Connected(port);
    second = Connected(port);
    Write(first, "first");
  });
  ASSERT_EQ(Open(), "");
  EXPECT_EQ(Read(5), "first");
  Write(first, "more");
  EXPECT_EQ(Read(4), "more");
  EXPECT_EQ(ReadSome(second), "");  // it was closed
  const C_FileDescriptor third = Connected(port);
  Write(third, "third");
  Write(first, "most");
  EXPECT_EQ(Read(4), "most");
  first.Close();
  EXPECT_EQ(ReadFailure(), "the sender has closed the connection");
  EXPECT_EQ(m_failure->kind, eKind::Lost);
  EXPECT_EQ(m_link->RetryRules().first, 0ms);
  m_link->Close();
  ASSERT_EQ(Open(), "");
  EXPECT_EQ(Read(5), "third");
  EXPECT_THAT(m_notices,
              testing::MatchesRegex("waits for a connection at 127.0.0.1:[0-9]+\nturned 127.0.0.1:[0-9]+ away: .*\n"
                                    "127.0.0.1:[0-9]+ waits until .*\n"));
}

TEST_F(Links, ListeningBeyondThisMachineIsSaid) {
  const int port = FreePort();
  Make("tcp-listen://[::]:" + std::to_string(port));
  m_link->SetNotice([this, port](const std::string& text) {  // by now it listens
    m_notices += text;
    Connected(port);
    Connected(port, "::1");
  });
  EXPECT_EQ(Open(), "");
  EXPECT_THAT(m_notices, HasSubstr("at [::]:" + std::to_string(port) + ", which other machines can reach"));
}

struct S_FailureCase {
  const char* name;
  std::string address;  // '#': the port of `taken`
  const char* error;
  eKind kind = eKind::Lost;
  int taken = 0;  // a port of this kind is in use by somebody else
};
const S_FailureCase kFailures[] = {
    {"TcpRefused", "tcp://127.0.0.1:" + std::to_string(FreePort()), "Connection refused"},
    {"NoSuchName", "tcp://nowhere.invalid:1", "of this name|cannot look the name up"},
    {"TcpPortInUse", "tcp-listen://:#", "in use by another program", eKind::Lost, SOCK_STREAM},
    {"UdpPortInUse", "udp://:#", "in use by another program", eKind::Lost, SOCK_DGRAM},
    {"OtherMachine", "udp://192.0.2.1:5000", "192.0.2.1 is not an address of this machine"},
    {"NoSuchInterface", "udp://239.255.7.7:5000?interface=none7", "no network interface 'none7'"},
    {"NoSuchDevice", "/dev/pts/999999", "there is no such device"},
    {"NoPortAtAll", "serial:///dev/null", "is not a serial port", eKind::Final},
};

TEST_ROWS_F(Failures, SayWhatIsWrong, Links, kFailures, row) {
  const C_FileDescriptor other = row.taken != 0 ? Bound("127.0.0.1", row.taken) : C_FileDescriptor();
  if (row.taken == SOCK_STREAM) ::listen(other.Get(), 1);
  Make(std::regex_replace(row.address, std::regex("#"), std::to_string(PortOf(other))));
  EXPECT_TRUE(std::regex_search(Open(), std::regex(row.error))) << m_failure->text;
  EXPECT_EQ(m_failure->kind, row.kind);
}

struct S_UdpCase {
  const char* name;
  const char* to;       // where datagrams are sent
  const char* written;  // before the port
};
const S_UdpCase kUdps[] = {
    {"Default", "127.0.0.1", "udp://"},
    {"Version6", "::1", "udp://[::1]"},
    {"Group", "239.255.7.7", "udp://239.255.7.7"},
    {"GroupV6", "ff02::7777", "udp://[ff02::7777]"},
};

// One over which a group can be reached: the loopback interface carries none of IPv6. Empty when there is none.
std::string GroupInterface(bool isV6) {
  if (!isV6) return "lo";
  ifaddrs* all = nullptr;
  EXPECT_EQ(::getifaddrs(&all), 0);
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(all, &::freeifaddrs);
  constexpr unsigned int kFlags = IFF_UP | IFF_RUNNING | IFF_MULTICAST;
  for (; all != nullptr; all = all->ifa_next)
    if (all->ifa_addr != nullptr && all->ifa_addr->sa_family == AF_INET6 && (all->ifa_flags & kFlags) == kFlags)
      return all->ifa_name;
  return "";
}

// What is sent to a group does not leave this machine.
C_FileDescriptor GroupSender(int family, unsigned int interface) {
  C_FileDescriptor sender(::socket(family, SOCK_DGRAM, 0));
  const ip_mreqn by{{}, {}, static_cast<int>(interface)};
  ::setsockopt(sender.Get(), IPPROTO_IP, IP_MULTICAST_IF, &by, sizeof by);
  const int hops = 0;
  ::setsockopt(sender.Get(), IPPROTO_IPV6, IPV6_MULTICAST_HOPS, &hops, sizeof hops);
  return sender;
}

TEST_ROWS_F(UdpLinks, Read, Links, kUdps, row) {
  const bool isGroup = std::string(row.name).starts_with("Group");
  const std::string interface = isGroup ? GroupInterface(std::string(row.to).find(':') != std::string::npos) : "lo";
  if (interface.empty()) GTEST_SKIP() << "no network interface carries groups of IPv6";
  const int port = FreePort(SOCK_DGRAM);
  Make(row.written + (':' + std::to_string(port)) + (isGroup ? "?interface=" + interface : ""));
  ASSERT_EQ(Open(), "");
  S_Place place = Place(row.to, port, isGroup ? ::if_nametoindex(interface.c_str()) : 0);
  const C_FileDescriptor sender = GroupSender(place.address.ss_family, ::if_nametoindex(interface.c_str()));
  const std::string large(isGroup ? 1'000 : 65'000, 'x');  // without fragments over a network
  for (const std::string& bytes : {std::string("one"), std::string(), large})
    EXPECT_EQ(::sendto(sender.Get(), bytes.data(), bytes.size(), 0, place.Get(), place.size),
              static_cast<ssize_t>(bytes.size()))
        << std::strerror(errno);
  EXPECT_EQ(Read(3), "one");
  const C_Link::S_Read empty = m_link->Read(Soon());  // no end
  EXPECT_TRUE(empty.bytes.empty());
  EXPECT_FALSE(empty.failure);
  EXPECT_EQ(Read(1), large);
  m_link->Close();
  EXPECT_EQ(Open(), "");
}

TEST_F(Links, UnixSocket) {
  const std::string path =
      std::filesystem::temp_directory_path() / ("velagnss-" + std::to_string(::getpid()) + ".sock");
  Make("unix://" + path);
  EXPECT_THAT(Open(), HasSubstr("no such socket file"));
  C_FileDescriptor server(::socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un place{AF_UNIX, {}};
  path.copy(place.sun_path, sizeof place.sun_path - 1);
  ASSERT_EQ(::bind(server.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place), 0);
  EXPECT_THAT(Open(), HasSubstr("no program listens"));
  ASSERT_EQ(::listen(server.Get(), 0), 0);
  ASSERT_EQ(Open(), "");
  {
    const C_FileDescriptor peer = Accept(server);
    Write(peer, "bytes");
    EXPECT_EQ(Read(5), "bytes");
  }
  EXPECT_EQ(ReadFailure(), "the other side has closed the connection");
  // A server that accepts nobody: its queue is full after a while.
  C_FileDescriptor waiting[4];
  for (C_FileDescriptor& client : waiting) {
    client = C_FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0));
    ::connect(client.Get(), reinterpret_cast<sockaddr*>(&place), sizeof place);
  }
  EXPECT_NE(Open(), "");
  std::filesystem::remove(path);
}

TEST_F(Links, SerialPortIsRaw) {
  Terminal terminal;
  Write(terminal.Master(), "old");  // before it is opened
  Make(terminal.Name());
  EXPECT_EQ(ReadSome(terminal.Master()), "old");  // as terminals do, it echoes until it is raw
  ASSERT_EQ(Open(), "");
  EXPECT_THAT(m_link->Peer(), testing::EndsWith(" 8N1"));
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  Write(terminal.Master(), all);
  EXPECT_EQ(Read(256), all);
  pollfd echo{terminal.Master().Get(), POLLIN, 0};
  EXPECT_EQ(::poll(&echo, 1, 0), 0);
}

// A link that is held open would keep the device's number.
TEST_F(Links, SerialPortThatIsUnpluggedIsLetGo) {
  auto terminal = std::make_unique<Terminal>();
  const std::string link = std::filesystem::temp_directory_path() / ("velagnss-" + std::to_string(::getpid()) + "-tty");
  std::filesystem::create_symlink(terminal->Name(), link);
  Make("serial://" + link + "?baud=115200");
  ASSERT_EQ(Open(), "");
  EXPECT_EQ(m_link->Peer(), terminal->Name() + " at 115200 8N1");
  const std::size_t numOpen = NumDescriptors();
  terminal->Unplug();
  EXPECT_EQ(ReadFailure(), "the device is gone");
  EXPECT_EQ(NumDescriptors(), numOpen - 2);  // it and the other end
  std::filesystem::remove(link);
  m_link->Close();
  EXPECT_EQ(Open(), "there is no such device");
  EXPECT_EQ(m_failure->kind, eKind::Lost);
  terminal = std::make_unique<Terminal>();  // back, under whatever number
  std::filesystem::create_symlink(terminal->Name(), link);
  ASSERT_EQ(Open(), "");
  Write(terminal->Master(), "back");
  EXPECT_EQ(Read(4), "back");
  std::filesystem::remove(link);
}

TEST_F(Links, SerialPortThatIsInUse) {
  Terminal terminal;
  const C_FileDescriptor other(::open(terminal.Name().c_str(), O_RDWR | O_NOCTTY));
  ASSERT_EQ(::flock(other.Get(), LOCK_EX), 0);
  Make(terminal.Name());
  EXPECT_THAT(Open(), HasSubstr("another program has it open"));
  EXPECT_EQ(m_failure->kind, eKind::Lost);
  ::flock(other.Get(), LOCK_UN);
  EXPECT_EQ(Open(), "");
  int isExclusive = 0;
  EXPECT_EQ(::ioctl(other.Get(), TIOCGEXCL, &isExclusive), 0);
  EXPECT_NE(isExclusive, 0);
  m_link->Close();
  ::ioctl(other.Get(), TIOCGEXCL, &isExclusive);
  EXPECT_EQ(isExclusive, 0);
}

struct S_SettingCase {
  const char* name;
  const char* options;
  const char* peer;
  tcflag_t controls;  // those of kControls that are on
  tcflag_t inputs;    // of kInputs
};
constexpr tcflag_t kControls =  // pseudo-terminals have no parity bits: PARENB is never on
    PARODD | CSTOPB | CRTSCTS | HUPCL;
constexpr tcflag_t kInputs = IXON | IXOFF | ICRNL | ISTRIP;
const S_SettingCase kSettings[] = {
    {"OddSpeed", "?baud=123456", "123456 8N1", 0, 0},
    {"SpeedIsKept", "", "57600 8N1", 0, 0},
    {"OddParity", "?baud=9600&parity=odd&stop=2", "9600 8O2", PARODD | CSTOPB, 0},
    {"EvenParity", "?parity=even", "57600 8E1", 0, 0},
    {"HardwareFlow", "?flow=rtscts", "57600 8N1", CRTSCTS, 0},
    {"SoftwareFlow", "?flow=xonxoff", "57600 8N1", 0, IXON | IXOFF},
};

TEST_ROWS_F(SerialSettings, AreSet, Links, kSettings, row) {
  Terminal terminal;
  const C_FileDescriptor other(::open(terminal.Name().c_str(), O_RDWR | O_NOCTTY));
  ASSERT_TRUE(Host::SetSerialSpeed(other.Get(), 57600));
  Make("serial://" + terminal.Name() + row.options);
  ASSERT_EQ(Open(), "");
  EXPECT_EQ(m_link->Peer(), terminal.Name() + " at " + row.peer);
  termios line{};
  ASSERT_EQ(::tcgetattr(other.Get(), &line), 0);
  EXPECT_EQ(line.c_cflag & kControls, row.controls);
  EXPECT_EQ(line.c_iflag & kInputs, row.inputs);
  EXPECT_EQ(line.c_lflag & (ICANON | ECHO | ISIG), 0u);
}

// From another thread, in every wait that has no end of its own.
TEST_F(Links, StopEndsEveryWait) {
  Terminal terminal;
  const C_FileDescriptor server = Listening("127.0.0.1");
  const std::string names[] = {terminal.Name(), "tcp://127.0.0.1:" + std::to_string(PortOf(server)),
                               "tcp-listen://:" + std::to_string(FreePort()),
                               "udp://:" + std::to_string(FreePort(SOCK_DGRAM))};
  for (const std::string& name : names) {
    C_Await await;
    const std::unique_ptr<C_Link> link = Host::MakeLink(name, {}, await);
    std::thread stopper([&await] {
      std::this_thread::sleep_for(5ms);
      await.Stop();
    });
    if (!link->Open()) link->Read(Soon());
    stopper.join();
    EXPECT_LT(C_Await::t_Clock::now(), m_end) << name;
  }
}

TEST_F(Links, OpeningAgainKeepsNoDescriptors) {
  Terminal terminal;
  const C_FileDescriptor server = Listening("127.0.0.1");
  const std::string refused = "tcp://127.0.0.1:" + std::to_string(FreePort());
  const std::string names[] = {terminal.Name(), "tcp://127.0.0.1:" + std::to_string(PortOf(server)), refused,
                               "udp://:" + std::to_string(FreePort(SOCK_DGRAM)), "udp://239.255.7.7:5000?interface=lo"};
  for (const std::string& name : names) {
    Make(name);
    std::size_t numAtFirst = 0, numAtLast = 0;
    for (int i = 0; i < 200; ++i) {
      const bool isOpen = Open().empty();
      EXPECT_EQ(isOpen, name != refused) << name << ' ' << m_failure->text;
      const C_FileDescriptor peer = isOpen && name.starts_with("tcp://") ? Accept(server) : C_FileDescriptor();
      if (isOpen) m_link->Read(Soon(0s));
      m_link->Close();
      (i == 0 ? numAtFirst : numAtLast) = NumDescriptors();
    }
    EXPECT_EQ(numAtLast, numAtFirst) << name;
  }
}

TEST(TcpTransport, SendsWhileItReads) {
  C_Await await;
  const C_FileDescriptor server = Listening("127.0.0.1");
  const std::unique_ptr<Host::C_Transport> transport = Host::MakeTcpTransport(await);
  EXPECT_EQ(transport->Read(Soon()).error, "not connected");
  ASSERT_EQ(transport->Connect("127.0.0.1", std::to_string(PortOf(server)), Soon()), "");
  C_FileDescriptor peer = Accept(server);
  transport->Send("hello ");
  transport->Send("world");
  transport->Send(std::string(70'000, 'x'));  // more than is kept: not a byte of it
  std::string received;
  std::thread other([&] {
    while (received.size() < 11) received += ReadSome(peer);
    Write(peer, "answer");
    peer.Close();
  });
  const auto read = transport->Read(Soon());
  EXPECT_EQ(std::string(read.bytes.begin(), read.bytes.end()), "answer");
  other.join();
  EXPECT_EQ(received, "hello world");
  EXPECT_TRUE(transport->Read(Soon()).hasEnded);
}

}  // namespace
