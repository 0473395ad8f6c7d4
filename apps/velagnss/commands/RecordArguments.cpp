#include "apps/velagnss/commands/RecordArguments.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/record/FileNames.h"
#include "apps/velagnss/text/Quantities.h"

namespace Host {
namespace {

namespace fs = std::filesystem;

std::string CheckEvery(const std::string& text) {
  using namespace std::chrono;
  const auto time = ParseDuration(text);
  if (time && *time >= 1s && *time <= 24h && *time % 1s == 0s) return {};
  return "'" + text + "' is not a time from 1s to 1d, as in 15m or 1h";
}

std::string CheckMaxSize(const std::string& text) {
  constexpr std::uint64_t kLeast = 1000;
  if (const auto size = ParseDataSize(text); size && *size >= kLeast) return {};
  return "'" + text + "' is not a size from 1k on, as in 500k, 100M or 2G";
}

// Devices and pipes have no ".part" and no final name.
bool IsOtherThanFile(const std::string& name) {
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  return fs::exists(status) && !fs::is_regular_file(status);
}

std::string FillTee(const std::string& name, S_InputOptions& input) {
  S_RecorderOptions options;
  std::string error = name.empty() ? "names no file" : FillPattern(name, 1, options);
  if (error.empty()) input.tee = std::make_shared<C_Recorders>(options);
  return error;
}

}  // namespace

void DeclareRotation(CLI::App& app, S_RecorderOptions& options) {
  app.add_option_function<std::string>(
         "--every",
         [&options](const std::string& text) {
           options.every = std::chrono::duration_cast<std::chrono::seconds>(*ParseDuration(text));
         },
         "begin a new file at each multiple of this time since midnight UTC,\nas in 15m, 1h or 1d")
      ->option_text("TIME")
      ->check(&CheckEvery);
  app.add_option_function<std::string>(
         "--max-size", [&options](const std::string& text) { options.maxSize = *ParseDataSize(text); },
         "begin a new file after the frame that makes one so large,\nas in 100M: 100 million bytes")
      ->option_text("SIZE")
      ->check(&CheckMaxSize);
  app.add_flag("--data-time", options.usesDataTime,
               "take the times of --every and of names from the stream, not from the machine");
  app.add_flag("--gzip", options.isCompressed, "compress the files; their names end with .gz");
}

void DeclareTee(CLI::App& app, S_InputOptions& input) {
  app.add_option_function<std::string>(
         "--tee",
         [&input](const std::string& name) {
           if (const std::string error = FillTee(name, input); !error.empty())
             throw CLI::ValidationError("--tee", error);
         },
         "also record the raw bytes in this file, as 'record -o FILE' does")
      ->option_text("FILE");
}

std::string FillPattern(const std::string& output, std::size_t sources, S_RecorderOptions& options) {
  std::error_code error;
  options.pattern = output.empty() ? std::string(kUsualPattern) : output;
  if (output.ends_with('/') || fs::is_directory(output, error)) options.pattern = fs::path(output) / kUsualPattern;
  if (output == "-") return "recordings need a file; to copy bytes to standard output, use cat or replay";
  if (std::string objection = CheckPattern(options.pattern); !objection.empty()) return objection;
  if (IsOtherThanFile(options.pattern)) return fmt::format("'{}' is not a regular file", options.pattern);
  if (sources > 1 && !HasSourceName(options.pattern))
    return "several sources need %n in the names of their files: it is the name of the source";
  if (options.isCompressed && !options.pattern.ends_with(kPackedEnding)) options.pattern += kPackedEnding;
  options.isCompressed = options.pattern.ends_with(kPackedEnding);
  return {};
}

}  // namespace Host
