// Runs the built program as users do: in a shell, in a directory of its own.
#ifndef VELAGNSS_TESTS_PROGRAM_RUN_H
#define VELAGNSS_TESTS_PROGRAM_RUN_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

struct Outcome {
  int code = -1;
  std::string output;
  std::string messages;
};

inline std::string Slurp(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A directory of the test's own, gone at its end; shell commands run in it. `velagnss` is the program, `$S` the sample.
class Program : public testing::Test {
 protected:
  Program() : m_directory(std::filesystem::temp_directory_path() / ("velagnss-" + std::to_string(::getpid()))) {
    std::filesystem::remove_all(m_directory);  // of an earlier process with this number that was killed
    std::filesystem::create_directories(m_directory);
  }
  ~Program() override { std::filesystem::remove_all(m_directory); }

  void Write(const std::string& name, std::string_view bytes) const {
    std::ofstream(m_directory / name, std::ios::binary) << bytes;
  }
  Outcome Run(const std::string& command) const {
    const std::string script = "velagnss() { " VELAGNSS_PROGRAM " \"$@\"; }; S='" VELAGNSS_SOURCE_DIR
                               "/samples/session.bin'; cd '" +
                               m_directory.string() + "'; ";
    Write("script", script + command);
    const std::string shell = "bash " + (m_directory / "script").string() + " >" + (m_directory / "out").string() +
                              " 2>" + (m_directory / "err").string() + " </dev/null";
    const int status = std::system(shell.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Slurp(m_directory / "out"), Slurp(m_directory / "err")};
  }

  std::filesystem::path m_directory;
};

#endif  // VELAGNSS_TESTS_PROGRAM_RUN_H
