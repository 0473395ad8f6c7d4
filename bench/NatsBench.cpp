// Messages per second into a stream of a NATS server: the client library alone with messages of the length of frames,
// and the program with 8 MiB of the sample. The server is another process, which VELAGNSS_NATS_SERVER names: HOST:PORT.
#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "apps/velagnss/net/nats/NatsSession.h"

namespace {

constexpr int kCopies = 22;  // of the sample
constexpr int kFrames = 4245 * kCopies;
constexpr std::size_t kFrameBytes = 86;  // on average
constexpr int kWindow = 4'096;

// A session, and a stream that is there as long as this is.
class C_Stream {
 public:
  explicit C_Stream(std::string name) : m_name(std::move(name)) {
    const char* const server = std::getenv("VELAGNSS_NATS_SERVER");
    if (server == nullptr || !Host::ReadAddress(fmt::format("nats://{}/{}", server, m_name), m_address).empty()) return;
    const std::string subjects = m_name + ".>";
    const char* all[] = {subjects.c_str()};
    jsStreamConfig config;
    jsStreamConfig_Init(&config);
    config.Name = m_name.c_str();
    config.Subjects = all;
    config.SubjectsLen = 1;
    Host::t_StreamInfo info;
    m_isOpen = !m_session.Open(m_address, {}) && !m_session.OpenStream(config, true, info);
  }
  ~C_Stream() {
    if (m_isOpen) js_DeleteStream(Js(), m_name.c_str(), nullptr, nullptr);
  }
  C_Stream(const C_Stream&) = delete;
  C_Stream& operator=(const C_Stream&) = delete;

  bool IsOpen() const { return m_isOpen; }
  jsCtx* Js() const { return m_session.JetStream(); }
  natsConnection* Connection() const { return m_session.Connection(); }
  const Host::S_Address& Address() const { return m_address; }

 private:
  std::string m_name;
  Host::S_Address m_address;
  Host::C_NatsSession m_session;
  bool m_isOpen = false;
};

bool PublishBare(const C_Stream& stream) {
  jsOptions options;
  jsOptions_Init(&options);
  options.PublishAsync.MaxPending = kWindow;
  Host::t_JetStream js;
  if (Host::NatsMake(js, [&](jsCtx** made) { return natsConnection_JetStream(made, stream.Connection(), &options); }) !=
      NATS_OK)
    return false;
  const std::string data(kFrameBytes, 'x');
  bool isGood = true;
  for (int i = 0; isGood && i < kFrames; ++i) {
    const std::string id = fmt::format("BASE/0123456789abcdef:{}", i * kFrameBytes);
    jsPubOptions publish;
    jsPubOptions_Init(&publish);
    publish.MsgId = id.c_str();
    isGood = js_PublishAsync(js.get(), "bare.BASE.nmea.GGA", data.data(), kFrameBytes, &publish) == NATS_OK;
  }
  return isGood && js_PublishAsyncComplete(js.get(), nullptr) == NATS_OK;
}

void BareLibrary(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const C_Stream stream("bare");
    state.ResumeTiming();
    if (!stream.IsOpen() || !PublishBare(stream)) return state.SkipWithError("no server, see VELAGNSS_NATS_SERVER");
  }
  state.SetItemsProcessed(state.iterations() * kFrames);
}

void Program(benchmark::State& state) {
  const auto file = std::filesystem::temp_directory_path() / fmt::format("nats_bench.{}", ::getpid());
  {
    std::ifstream sample(VELAGNSS_SAMPLE, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(sample), {}};
    std::ofstream copy(file, std::ios::binary);
    for (int i = 0; i < kCopies; ++i) copy << bytes;
  }
  for (auto _ : state) {
    state.PauseTiming();
    const C_Stream stream("relayed");
    const std::string command = fmt::format(VELAGNSS_PROGRAM " -q relay {} --to 'nats://{}/relayed?prefix=relayed'",
                                            file.native(), stream.Address().HostAndPort());
    state.ResumeTiming();
    if (!stream.IsOpen() || std::system(command.c_str()) != 0) {
      state.SkipWithError("no server, see VELAGNSS_NATS_SERVER");
      break;
    }
  }
  std::filesystem::remove(file);
  state.SetItemsProcessed(state.iterations() * kFrames);
}

BENCHMARK(BareLibrary)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Program)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
