// Destinations against real sockets, a pseudo-terminal and files.
#include <fcntl.h>
#include <fmt/core.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <functional>
#include <thread>

#include "apps/velagnss/relay/Destinations.h"
#include "tests/Cases.h"
#include "tests/ProgramRun.h"
#include "tests/SinkSockets.h"

namespace {

using Host::C_FileDescriptor;
using Host::eUnits;
using namespace std::chrono_literals;
using namespace Test;

// Waits for what other threads bring about.
bool Wait(const std::function<bool()>& isDone) {
  for (int i = 0; i < kPatience && !isDone(); ++i) std::this_thread::sleep_for(1ms);
  return isDone();
}

class Sinks : public testing::Test {
 protected:
  Sinks() {
    std::signal(SIGPIPE, SIG_IGN);  // as the program does
    std::filesystem::create_directories(m_directory);
  }
  ~Sinks() override { std::filesystem::remove_all(m_directory); }

  void Open(const std::string& to, bool isLive = true) {
    ASSERT_EQ(m_to.Read({"raw:" + to}, {.isLive = isLive}), "");
    ASSERT_TRUE(m_to.Open());
  }
  void Put(std::string_view lines) {
    m_to.Put(eUnits::Raw, PieceOf(lines));
    m_to.Settle();
  }
  Host::S_SinkTotals Totals() const { return m_to.Totals().at(0); }

  std::string m_directory = std::filesystem::temp_directory_path() / fmt::format("velagnss-sinks-{}", ::getpid());
  Host::C_Destinations m_to;
};

constexpr std::string_view kLines = "one\ntwo\nthree\n";

TEST_F(Sinks, ListeningSendsToClientsFromTheirFirstUnitOn) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}", port));
  Put("nobody hears this\n");
  const C_FileDescriptor client = ConnectTo(port);
  ASSERT_TRUE(m_to.WaitForClients(1));
  Put(kLines);
  m_to.Finish();
  EXPECT_EQ(ReadToEnd(client), kLines);
  EXPECT_EQ(Totals().units, 3U);
}

TEST_F(Sinks, ConnectsAndConnectsAgain) {
  const Bound server(SOCK_STREAM);
  Open(fmt::format("tcp://127.0.0.1:{}", server.port));
  Put("first\n");
  C_FileDescriptor client = server.Accept();
  EXPECT_EQ(ReadFrom(client, 6), "first\n");
  client.Close();
  EXPECT_TRUE(Wait([this] { return Totals().readers == 0; }));
  Put("while away\n");
  client = server.Accept();
  Put("back\n");
  m_to.Finish();
  EXPECT_EQ(ReadToEnd(client), "while away\nback\n");
}

TEST_F(Sinks, DatagramsAreUnits) {
  const Bound server(SOCK_DGRAM);
  Open(fmt::format("udp://127.0.0.1:{}", server.port));
  Put(std::string(70'000, 'x') + "\n");  // more than a datagram can hold
  Put(kLines);
  const auto receive = [&server] {
    pollfd waiting{server.socket.Get(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, kPatience), 1);
    char buffer[100];
    const ssize_t size = ::recv(server.socket.Get(), buffer, sizeof buffer, 0);
    return std::string(buffer, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  };
  for (const char* unit : {"one\n", "two\n", "three\n"}) EXPECT_EQ(receive(), unit);
  m_to.Finish();
  EXPECT_EQ(Totals().dropped, 1U);
}

TEST_F(Sinks, SerialPort) {
  const C_FileDescriptor master(::posix_openpt(O_RDWR | O_NOCTTY));
  ASSERT_EQ(::grantpt(master.Get()) + ::unlockpt(master.Get()), 0);
  Open(fmt::format("serial://{}?baud=115200", ::ptsname(master.Get())));
  Put("a\rb\x11\xFF\n");
  EXPECT_EQ(ReadFrom(master, 6), "a\rb\x11\xFF\n");
  m_to.Finish();
}

TEST_F(Sinks, Files) {
  Open(m_directory + "/out");
  Put(kLines);
  EXPECT_EQ(Slurp(m_directory + "/out"), kLines) << "what has no end is in the file at once";
  m_to.Finish();
  EXPECT_EQ(m_to.Judge(), Host::eExitOk);
}

// A socket file left by a crash is replaced, one in use is not.
TEST_F(Sinks, UnixSockets) {
  const std::string path = m_directory + "/socket";
  for (int i = 0; i < 2; ++i) {
    const C_FileDescriptor left(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (i == 0) ::bind(left.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
  }
  Open("unix-listen://" + path + "?mode=600");
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  for (const char* taken : {"/socket", "/file"}) {
    std::ofstream(m_directory + "/file") << "mine";
    Host::C_Destinations second;
    ASSERT_EQ(second.Read({"unix-listen://" + m_directory + taken}, {}), "");
    EXPECT_FALSE(second.Open()) << taken;
  }
  EXPECT_EQ(Slurp(m_directory + "/file"), "mine");
  const C_FileDescriptor client = ConnectTo(path);
  ASSERT_TRUE(m_to.WaitForClients(2));  // the second program has knocked
  Put(kLines);
  m_to.Finish();
  EXPECT_EQ(ReadToEnd(client), kLines);
  EXPECT_FALSE(std::filesystem::exists(path));
}

// Numbered lines of 8 KiB.
std::string Line(std::size_t number) { return fmt::format("{:08}{:>8183}\n", number, "x"); }
constexpr std::size_t kManyLines = 1'000;  // far more than the system buffers for a client that does not read

// A client that reads nothing costs the others nothing and the memory little. What it gets in the end are whole units.
TEST_F(Sinks, SlowClientLosesOldUnitsAndDelaysNobody) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}?queue=65536", port));
  const C_FileDescriptor slow = ConnectTo(port, 4096);
  const C_FileDescriptor good = ConnectTo(port);
  ASSERT_TRUE(m_to.WaitForClients(2));
  for (std::size_t i = 0; i < kManyLines; ++i) {
    Put(Line(i));
    ASSERT_EQ(ReadFrom(good, Line(i).size()), Line(i));
  }
  std::string got;
  std::thread reader([&] { got = ReadToEnd(slow); });
  m_to.Finish();
  reader.join();
  const std::size_t count = got.size() / Line(0).size();
  EXPECT_EQ(got.size(), count * Line(0).size());
  EXPECT_EQ(count + Totals().dropped, kManyLines);
  EXPECT_LT(count, kManyLines / 2);
  EXPECT_TRUE(got.ends_with(Line(kManyLines - 1))) << "the newest units are kept";
  std::size_t last = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string line = got.substr(i * Line(0).size(), Line(0).size());
    const std::size_t number = std::stoul(line.substr(0, 8));
    ASSERT_EQ(line, Line(number));
    ASSERT_TRUE(i == 0 || number > last);
    last = number;
  }
}

struct S_EndOfSlow {
  const char* name;
  const char* options;
  std::size_t lines;
};
constexpr S_EndOfSlow kEndsOfSlow[] = {
    {"QueueIsFull", "policy=close&queue=65536", kManyLines},
    {"NothingMoves", "stall=1", kManyLines},
};

TEST_ROWS_F(SlowClients, AreDisconnected, Sinks, kEndsOfSlow, row) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}?{}", port, row.options));
  const C_FileDescriptor slow = ConnectTo(port, 4096);
  ASSERT_TRUE(m_to.WaitForClients(1));
  for (std::size_t i = 0; i < row.lines; ++i) Put(Line(i));
  EXPECT_TRUE(Wait([this] { return Totals().readers == 0; }));
  m_to.Finish();
}

TEST_F(Sinks, AClientThatLeavesTakesNobodyWithIt) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}", port));
  C_FileDescriptor leaves = ConnectTo(port);
  const C_FileDescriptor stays = ConnectTo(port);
  ASSERT_TRUE(m_to.WaitForClients(2));
  Put("before\n");
  EXPECT_EQ(ReadFrom(leaves, 3), "bef");
  leaves.Close();  // with bytes unread: a reset
  EXPECT_TRUE(Wait([this] { return Totals().readers == 1; }));
  Put("after\n");
  m_to.Finish();
  EXPECT_EQ(ReadToEnd(stays), "before\nafter\n");
}

// A file is read as fast as the slowest client takes it, and all of it arrives.
TEST_F(Sinks, FilesWaitForTheirReaders) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}?queue=65536", port), false);
  const C_FileDescriptor client = ConnectTo(port);
  ASSERT_TRUE(m_to.WaitForClients(1));
  std::string got;
  std::thread reader([&] { got = ReadToEnd(client); });
  std::string all;
  for (std::size_t i = 0; i < kManyLines; ++i) Put(all.append(Line(i)).substr(i * Line(0).size()));
  m_to.Finish();
  reader.join();
  EXPECT_TRUE(got == all);
  EXPECT_EQ(m_to.Judge(), Host::eExitOk);
}

// One that can never take anything holds no file up.
TEST_F(Sinks, OneThatFailsIsNotWaitedFor) {
  Open("serial:///dev/null?queue=1", false);
  for (int i = 0; i < 3; ++i) Put(kLines);
  EXPECT_FALSE(m_to.WantsMore());
  m_to.Finish();
  EXPECT_EQ(m_to.Judge(), Host::eExitOutput);
}

TEST_F(Sinks, TooManyClientsAreTurnedAway) {
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}?clients=1", port));
  const C_FileDescriptor first = ConnectTo(port);
  ASSERT_TRUE(m_to.WaitForClients(1));
  EXPECT_EQ(ReadToEnd(ConnectTo(port)), "");
  Put(kLines);
  m_to.Finish();
  EXPECT_EQ(ReadToEnd(first), kLines);
}

double ProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// Clients are turned away, without a loop that takes all of the processor.
TEST_F(Sinks, WithoutDescriptorsItWaits) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizers need descriptors themselves";
#endif
  const int port = FreePort();
  Open(fmt::format("tcp-listen://:{}", port));
  std::vector<C_FileDescriptor> clients;
  for (int i = 0; i < 4; ++i) clients.emplace_back(::socket(AF_INET, SOCK_STREAM, 0));
  ::rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const ::rlimit full{static_cast<rlim_t>(clients.back().Get()) + 1, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &full), 0);
  const sockaddr_in address = Loopback(port);
  for (const C_FileDescriptor& client : clients)
    ::connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  EXPECT_EQ(ReadToEnd(clients[0]), "");
  const double before = ProcessorSeconds();
  std::this_thread::sleep_for(500ms);
  EXPECT_LT(ProcessorSeconds() - before, 0.25);
  ::setrlimit(RLIMIT_NOFILE, &limit);
  clients.clear();
  EXPECT_TRUE(Wait([&] {
    clients.push_back(ConnectTo(port));
    return m_to.WaitForClients(0) && Totals().readers > 0;
  }));
  m_to.Finish();
}

struct S_WrongTo {
  const char* name;
  const char* to;
  Host::S_RelaySource source;
  const char* error;
};
const S_WrongTo kWrongTo[] = {
    {"Scheme", "gopher://x:1", {}, "no destination begins with 'gopher://'"},
    {"NoPort", "tcp-listen://", {}, "has no port"},
    {"Option", "udp://h:1?tll=3", {}, "unknown option 'tll'"},
    {"Policy", "tcp://h:1?policy=maybe", {}, "policy must be drop, close or wait"},
    {"PasswordIsNotShown",
     "ntrip-push://me:secret@h:2101/M?version=3",
     {},
     "ntrip-push://h:2101/M: version must be 1 or 2"},
    {"PasswordWithSlash", "ntrip-push://me:sec/secret@h:2101/M", {}, "ntrip-push://...: has an '@'"},
    {"NoMount", "ntrip-caster://:2101", {}, "has no path"},
    {"RawOfSeveral", "raw:out", {.isOne = false}, "is for a single source"},
    {"RawWithFilter", "raw:out", {.isSelected = true}, "takes no filter"},
    {"NoDestination", "json:", {}, "names no destination"},
    {"UnknownFormat", "nmea:out", {}, "unknown format"},
};

TEST_ROWS(Destinations, AreRefused, kWrongTo, row) {
  const std::string error = Host::C_Destinations().Read({row.to}, row.source);
  EXPECT_NE(error.find(row.error), std::string::npos) << error;
  EXPECT_EQ(error.find("secret"), std::string::npos) << error;
}

TEST(Destinations, AreNamedOnce) {
  const std::string push = "ntrip-push://me:secret@h:2101/M";
  EXPECT_EQ(Host::C_Destinations().Read({"raw:" + push, push}, {}), "--to ntrip-push://h:2101/M is given twice");
  EXPECT_EQ(Host::C_Destinations().Read({"json", "-"}, {}), "--to standard output is given twice");
}

}  // namespace
