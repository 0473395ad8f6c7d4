// The program from end to end: CPU time, user and system, of the process that reads 32 MiB of the sample from a file
// and writes to /dev/null.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern char** environ;

namespace {

constexpr std::size_t kInputBytes = std::size_t{32} << 20;
constexpr double kSampleFrames = 4238;  // see samples/session.json

// The sample over and over, in a file that goes away with the process.
class C_InputFile {
 public:
  C_InputFile() : m_path(std::filesystem::temp_directory_path() / ("program_bench." + std::to_string(getpid()))) {
    std::ifstream sample(VELAGNSS_SAMPLE, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(sample), {}};
    std::ofstream file(m_path, std::ios::binary);
    for (; m_bytes < kInputBytes; m_bytes += bytes.size(), m_frames += kSampleFrames) file << bytes;
  }
  ~C_InputFile() { std::filesystem::remove(m_path); }
  C_InputFile(const C_InputFile&) = delete;
  C_InputFile& operator=(const C_InputFile&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  std::size_t Bytes() const { return m_bytes; }
  double Frames() const { return m_frames; }

 private:
  std::filesystem::path m_path;
  std::size_t m_bytes = 0;
  double m_frames = 0;
};

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// CPU seconds of one run; negative when it failed.
double Run(std::vector<std::string> arguments) {
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int error = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  rusage usage = {};
  if (error != 0 || wait4(child, &status, 0, &usage) != child || status != 0) return -1;
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

void Program(benchmark::State& state, const std::vector<std::string>& options) {
  static const C_InputFile input;
  std::vector<std::string> arguments = {VELAGNSS_PROGRAM};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.push_back(input.Path());
  for (auto _ : state) {
    const double seconds = Run(arguments);
    if (seconds < 0) {
      state.SkipWithError("the program failed");
      return;
    }
    state.SetIterationTime(seconds);
  }
  const auto runs = static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<std::int64_t>(runs) * static_cast<std::int64_t>(input.Bytes()));
  state.counters["frames/s"] = benchmark::Counter(runs * input.Frames(), benchmark::Counter::kIsRate);
}

BENCHMARK_CAPTURE(Program, Decode, {"decode"})->UseManualTime();
BENCHMARK_CAPTURE(Program, DecodeFramesOnly, {"decode", "--frames"})->UseManualTime();
BENCHMARK_CAPTURE(Program, Stat, {"stat"})->UseManualTime();
BENCHMARK_CAPTURE(Program, ConvertToNmea, {"convert", "--to", "nmea"})->UseManualTime();
BENCHMARK_CAPTURE(Program, ConvertToCsv, {"convert", "--to", "csv"})->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
