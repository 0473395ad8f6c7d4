// Streams of a caster through a real socket: requests, answers, positions, failures and what follows them.
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

#include "apps/velagnss/commands/NtripTableCommand.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/os/FileDescriptor.h"
#include "tests/Cases.h"
#include "tests/HostData.h"
#include "tests/JsonSchema.h"

namespace {

using namespace std::chrono_literals;
using Host::C_Await;
using Host::C_FileDescriptor;
using Host::S_LinkFailure;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Answers its connections one after the other as its script says, and keeps what it is sent.
class Caster {
 public:
  explicit Caster(std::vector<std::string> answers) : m_answers(std::move(answers)) {
    m_listener = C_FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof place;
    auto* const address = reinterpret_cast<sockaddr*>(&place);
    EXPECT_EQ(::bind(m_listener.Get(), address, size), 0);
    EXPECT_EQ(::listen(m_listener.Get(), 5), 0);
    EXPECT_EQ(::getsockname(m_listener.Get(), address, &size), 0);
    m_port = std::to_string(ntohs(place.sin_port));
    m_thread = std::thread([this] { Serve(); });
  }
  ~Caster() {
    ::shutdown(m_listener.Get(), SHUT_RDWR);
    m_thread.join();
  }
  Caster(const Caster&) = delete;
  Caster& operator=(const Caster&) = delete;

  const std::string& Port() const { return m_port; }

  // What connection `number` has sent, once `text` is in it.
  std::string Received(std::size_t number, const std::string& text) const {
    for (int i = 0; i < 1000; ++i) {
      {
        const std::lock_guard lock(m_mutex);
        if (number < m_received.size() && m_received[number].find(text) != std::string::npos) return m_received[number];
      }
      std::this_thread::sleep_for(10ms);
    }
    return "<nothing>";
  }

 private:
  void Serve() {
    for (const std::string& answer : m_answers) {
      const C_FileDescriptor peer(::accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
      if (!peer.IsOpen()) return;
      const std::size_t number = m_received.size();
      {
        const std::lock_guard lock(m_mutex);
        m_received.emplace_back();
      }
      while (m_received[number].find("\r\n\r\n") == std::string::npos && ReadMore(peer, number)) continue;
      ::send(peer.Get(), answer.data(), answer.size(), MSG_NOSIGNAL);
      if (answer.ends_with("~")) ::shutdown(peer.Get(), SHUT_WR);
      while (ReadMore(peer, number)) continue;
    }
  }

  bool ReadMore(const C_FileDescriptor& peer, std::size_t number) {
    char buffer[1024];
    const ssize_t count = ::recv(peer.Get(), buffer, sizeof buffer, 0);
    if (count <= 0) return false;
    const std::lock_guard lock(m_mutex);
    m_received[number].append(buffer, static_cast<std::size_t>(count));
    return true;
  }

  const std::vector<std::string> m_answers;
  C_FileDescriptor m_listener;
  std::string m_port;
  mutable std::mutex m_mutex;
  std::vector<std::string> m_received;
  std::thread m_thread;
};

C_Await::t_Time Soon() { return C_Await::t_Clock::now() + 10s; }

std::string Shown(const S_LinkFailure& failure) {
  constexpr const char* kKinds[] = {"lost", "refused", "final"};
  const std::string pause = failure.retryAfter ? " " + std::to_string(failure.retryAfter->count()) : "";
  return std::string(kKinds[static_cast<std::size_t>(failure.kind)]) + pause + ": " + failure.text;
}

// The data of a connection and "<why it ended>"; up to a '.' in the data where it does not end.
std::string ReadAll(Host::C_Link& link) {
  if (const std::optional<S_LinkFailure> failure = link.Open()) return "<" + Shown(*failure) + ">";
  std::string all;
  const C_Await::t_Time deadline = Soon();
  while (all.find('.') == std::string::npos && C_Await::t_Clock::now() < deadline) {
    const Host::C_Link::S_Read read = link.Read(deadline);
    all.append(read.bytes.begin(), read.bytes.end());
    if (read.failure) return all + "<" + Shown(*read.failure) + ">";
  }
  return all;
}

class NtripLinks : public testing::Test {
 protected:
  void Make(const std::string& name) { m_link = Host::MakeLink(name, m_options, m_await); }

  C_Await m_await;
  Host::S_LiveOptions m_options;
  std::unique_ptr<Host::C_Link> m_link;
};

struct S_StreamCase {
  const char* name;
  const char* answer;  // with a '~' at its end the caster closes after it
  const char* result;
};
// clang-format off
const S_StreamCase kStreams[] = {
    {"Version1",    "ICY 200 OK\r\n\r\ndata.",                                                       "data."},
    {"NoEmptyLine", "ICY 200 OK\r\n$data.",                                                          "$data."},
    {"TextData",    "ICY 200 OK\r\nabc.",                                                            "abc."},
    {"Raw",         "HTTP/1.1 200 OK\r\nContent-Type: gnss/data\r\n\r\nda~",                         "da~<lost: the caster has ended the stream>"},
    {"Chunks",      "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nda\r\n003\r\nta.\r\n", "data."},
    {"ChunksEnd",   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nda\r\n0\r\n\r\n",     "da<lost: the caster has ended the stream>"},
    {"BadChunks",   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\ndata",                     "<lost: the chunks of the stream are damaged; next with version 1 of NTRIP>"},
    {"NoMount",     "SOURCETABLE 200 OK\r\n\r\nSTR;m;\r\nENDSOURCETABLE\r\n",                        "<refused 600: the caster has no mount 'M'; similar: m>"},
    {"IdleMount",   "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\nSTR;M;\r\nENDSOURCETABLE\r\n",
     "<refused 30: the caster sends its source table instead of the stream: the mount is idle, or needs another account>"},
    {"Page",        "HTTP/1.1 200 OK\r\n\r\n<title>Log in</title>~",                                 "<refused 600: a page for people instead of a stream, Log in: a portal, a ban, or not a caster>"},
    {"Account",     "HTTP/1.0 401 Unauthorized\r\n\r\n",                                             "<refused 600: wrong or missing user name or password (401)>"},
    {"Garbage",     "\x01\x02",                                                                      "<refused 30: not a caster: it answers in binary>"},
    {"Moved",       "HTTP/1.1 302 x\r\nLocation: https://h/M\r\n\r\n",                               "<refused 30: moved to 'https://h/M': another scheme is not followed>"},
    {"Nothing",     "~",                                                                             "<lost: closed within the head of the answer>"},
};
// clang-format on

TEST_ROWS_F(NtripStreams, AnswersOfAllKinds, NtripLinks, kStreams, row) {
  Caster caster({row.answer});
  Make("ntrip://127.0.0.1:" + caster.Port() + "/M");
  EXPECT_EQ(ReadAll(*m_link), row.result);
  m_link->Close();
}

TEST_F(NtripLinks, VersionOneIsTriedOnce) {
  const std::string no = "HTTP/1.0 505 x\r\n\r\n";
  Caster caster({no, no, "ICY 200 OK\r\n\r\n."});
  Make("ntrip://127.0.0.1:" + caster.Port() + "/M");
  EXPECT_THAT(ReadAll(*m_link), HasSubstr("next with version 1"));
  m_link->Close();
  EXPECT_THAT(ReadAll(*m_link), Not(HasSubstr("next")));
  m_link->Close();
  EXPECT_EQ(ReadAll(*m_link), ".");
  EXPECT_THAT(m_link->Peer(), StartsWith("NTRIP 1"));
  EXPECT_THAT(caster.Received(0, "\r\n\r\n"), StartsWith("GET /M HTTP/1.1\r\n"));
  EXPECT_THAT(caster.Received(1, "\r\n\r\n"), StartsWith("GET /M HTTP/1.0\r\n"));
  m_link->Close();
}

TEST_F(NtripLinks, MovesAreFollowed) {
  const std::string moved = "HTTP/1.1 301 x\r\nLocation: /N\r\n\r\n";
  Caster caster({moved, "ICY 200 OK\r\n\r\n.", moved, moved, moved, moved});
  Make("ntrip://u:p@127.0.0.1:" + caster.Port() + "/M");
  EXPECT_EQ(ReadAll(*m_link), ".");
  EXPECT_THAT(caster.Received(1, "\r\n\r\n"), testing::AllOf(StartsWith("GET /N "), HasSubstr("Basic dTpw")));
  m_link->Close();
  EXPECT_THAT(ReadAll(*m_link), HasSubstr("more than 3 times"));
  m_link->Close();
}

// At once after the answer, and in the head of version 2: some mounts send nothing before it.
TEST_F(NtripLinks, FixedPositionIsSent) {
  Caster caster({"HTTP/1.1 200 OK\r\n\r\n."});
  m_options.position = "48.5,11.25,560";
  Make("ntrip://127.0.0.1:" + caster.Port() + "/M");
  EXPECT_EQ(ReadAll(*m_link), ".");
  const std::string received = caster.Received(0, "M,,*");
  EXPECT_THAT(received, HasSubstr("\r\nNtrip-GGA: $GPGGA,"));
  EXPECT_THAT(caster.Received(0, "\r\n\r\n$GPGGA,"), HasSubstr(",4830.00000,N,01115.00000,E,1,"));
  m_link->Close();
}

TEST_F(NtripLinks, PositionOfAnotherSourceIsSentWhenItComes) {
  Caster caster({"ICY 200 OK\r\n\r\n."});
  m_options.position = "stream";
  const std::string name = "ntrip://127.0.0.1:" + caster.Port() + "/M";
  m_options.positions->Note(Host::ShownLive(name), "$GPGGA,own", Host::C_PositionFeed::t_Clock::now());
  Make(name);
  EXPECT_EQ(ReadAll(*m_link), ".");
  EXPECT_THAT(caster.Received(0, "\r\n\r\n"), Not(HasSubstr("GGA")));
  m_options.positions->Note("other", "$GPGGA,other", Host::C_PositionFeed::t_Clock::now());
  m_link->Read(C_Await::t_Clock::now() + 1100ms);
  m_link->Read(C_Await::t_Clock::now() + 100ms);
  EXPECT_THAT(caster.Received(0, "other"), testing::EndsWith("\r\n\r\n$GPGGA,other\r\n"));
  m_link->Close();
}

TEST_F(NtripLinks, EndsPromptly) {
  Caster caster({"HTTP/1.1 200 OK\r\nslow"});
  Make("ntrip://127.0.0.1:" + caster.Port() + "/M");
  std::thread stop([this, &caster] {
    caster.Received(0, "\r\n\r\n");
    m_await.Stop();
  });
  const auto begin = C_Await::t_Clock::now();
  EXPECT_TRUE(m_link->Open());
  EXPECT_LT(C_Await::t_Clock::now() - begin, 5s);
  stop.join();
  m_link->Close();
}

// The command as a user runs it; its output, and its exit code where that is not 0.
std::string RunTable(const std::string& caster, std::vector<std::string> options) {
  const std::string file = testing::TempDir() + "velagnss-table-" + std::to_string(::getpid());
  options.insert(options.end(), {"-o", file, caster});
  std::reverse(options.begin(), options.end());  // the parser takes the last one first
  const auto command = Host::kNtripTableCommand.make();
  CLI::App app;
  command->Declare(app);
  app.parse(options);
  const int code = command->Run();
  std::ifstream in(file);
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  std::remove(file.c_str());
  return code == 0 ? text : text + "<exit " + std::to_string(code) + ">";
}

constexpr char kTable[] =
    "SOURCETABLE 200 OK\r\n\r\nCAS;h.example;2101;Name;Op;0;AUT;48;11;;0;\r\n"
    "STR;B;Far;RTCM 3.3;;2;GPS+GLO;N;DEU;50.14;8.5;0;0;g;none;B;N;9600;\r\n"
    "STR;A\x1B;Near;RAW;;0;GPS;N;AUT;48.1;371;1;0;g;none;N;Y;;\r\nSTR;C;\xFC\r\nENDSOURCETABLE\r\n";

TEST(NtripTable, ForPeople) {
  Caster caster({kTable, kTable});
  const std::string name = "ntrip://127.0.0.1:" + caster.Port();
  EXPECT_EQ(RunTable(name, {}),
            "caster h.example:2101, Name\n"
            "mount  place  format    systems  latitude  longitude  gga     account  fee\n"
            "A\\x1b  Near   RAW       GPS      48.10     11.00      needed  -        yes\n"
            "B      Far    RTCM 3.3  GPS+GLO  50.14     8.50       -       needed   -\n"
            "C      \\xfc                      -         -          -       -        -\n");
  EXPECT_EQ(RunTable(name, {"--filter", "glo", "--position", "50.14,8.5,0"}),
            "mount  place  format    systems  latitude  longitude  gga  account  fee  km\n"
            "B      Far    RTCM 3.3  GPS+GLO  50.14     8.50       -    needed   -    0.0\n");
}

TEST(NtripTable, AsTheSchemaAllows) {
  Caster caster({kTable});
  const JsonSchema schema(nlohmann::json::parse(ReadHostFile("docs/velagnss.schema.json")));
  std::istringstream lines(RunTable("ntrip://127.0.0.1:" + caster.Port(), {"--json", "--position", "48.2,11,0"}));
  std::string mounts;
  double nearest = 1e9;
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json row = nlohmann::json::parse(line);
    EXPECT_EQ(schema.Check(row), "") << line;
    if (row["report"] != "stream") continue;
    mounts += row["mount"].get<std::string>();
    nearest = std::min(nearest, row["distance_m"].is_null() ? nearest : row["distance_m"].get<double>());
  }
  EXPECT_NEAR(nearest, 11'120, 10) << "0.1 degrees of latitude";
  EXPECT_EQ(mounts, "A\x1B\x42\x43") << "the nearest first";
}

TEST(NtripTable, Failures) {
  Caster caster({"HTTP/1.1 401 x\r\n\r\n", "HTTP/1.0 505 x\r\n\r\n", kTable, "<html>~", kTable});
  const std::string name = "ntrip://127.0.0.1:" + caster.Port();
  EXPECT_EQ(RunTable(name, {}), "<exit 3>");
  EXPECT_THAT(RunTable(name, {}), HasSubstr("caster h.example")) << "version 1 is tried at once";
  EXPECT_EQ(RunTable(name, {}), "<exit 3>") << "a page";
  EXPECT_EQ(RunTable(name, {"--filter", "nowhere"}).substr(0, 5), "mount");
  EXPECT_THROW(RunTable(name + "/M", {}), CLI::ValidationError);
}

}  // namespace
