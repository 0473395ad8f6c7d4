#include "apps/velagnss/jobs/TaskOutput.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {
namespace {

namespace fs = std::filesystem;

struct S_FormatRow {
  std::string_view format;
  std::string_view ending;
};
constexpr S_FormatRow kFormats[] = {{"frames", ".bin"}, {"json", ".jsonl"}, {"epochs", ".jsonl"}};

// Schemes and formats of destinations that leave out what they have already, in whatever order it comes.
constexpr std::string_view kIdempotent[] = {"nats:", "natss:", "sqlite:"};

struct S_Parts {
  std::string format;  // may be empty
  std::string where;
};
S_Parts PartsOf(const std::string& text) {
  const std::size_t colon = text.find(':');
  const std::string first = text.substr(0, colon);
  const bool isFormat = std::ranges::find(kFormats, first, &S_FormatRow::format) != std::end(kFormats);
  if (!isFormat || colon == std::string::npos) return {"", text};
  return {first, text.substr(colon + 1)};
}

bool IsIdempotent(const std::string& where) {
  return std::any_of(std::begin(kIdempotent), std::end(kIdempotent),
                     [&where](std::string_view scheme) { return where.starts_with(scheme); });
}

std::string CheckOne(const std::string& text) {
  const auto [format, where] = PartsOf(text);
  if (IsIdempotent(where)) return {};
  std::error_code none;
  if (format.empty() || !where.ends_with('/'))
    return fmt::format(
        "'{}': a task may be done more than once; write to a directory, as in json:results/, or to a "
        "destination that leaves out repeats, such as json:nats://host/STREAM",
        text);
  return fs::is_directory(where, none) ? std::string() : fmt::format("{} is not a directory; create it first", where);
}

bool Sync(const fs::path& path, int flags) {
  const C_FileDescriptor descriptor(::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC));
  return descriptor.IsOpen() && ::fsync(descriptor.Get()) == 0;
}

// What workers that were killed have left of other tries: hidden files with the name of this one in theirs.
void RemoveTries(const fs::path& file) {
  std::error_code none;
  const std::string name = file.stem();
  for (const fs::directory_entry& entry : fs::directory_iterator(file.parent_path(), none)) {
    const std::string other = entry.path().filename();
    if (other.starts_with('.') && other.find(name) != std::string::npos) fs::remove(entry.path(), none);
  }
}

}  // namespace

std::string C_TaskOutput::Check(const std::vector<std::string>& destinations) {
  for (auto text = destinations.begin(); text != destinations.end(); ++text) {
    if (std::string error = CheckOne(*text); !error.empty()) return "--to " + error;
    if (std::find(destinations.begin(), text, *text) != text) return fmt::format("--to '{}': is given twice", *text);
  }
  return {};
}

C_TaskOutput::C_TaskOutput(const std::vector<std::string>& destinations, const S_Task& task,
                           const std::string& worker) {
  for (const std::string& text : destinations) {
    const auto [format, where] = PartsOf(text);
    if (IsIdempotent(where)) {
      m_destinations.push_back(text);
      continue;
    }
    const auto* const row = std::ranges::find(kFormats, format, &S_FormatRow::format);
    const std::string name = FileNameOf(task);
    m_files.push_back({fs::path(where) / fmt::format(".{}.{}{}", name, worker, row->ending),
                       fs::path(where) / fmt::format("{}{}", name, row->ending)});
    m_destinations.push_back(fmt::format("{}:{}", format, m_files.back().hidden.native()));
  }
}

C_TaskOutput::~C_TaskOutput() {
  for (const S_File& file : m_files) ::unlink(file.hidden.c_str());
}

// The contents, then the name, then the directory that holds it. Another worker that did the same task at the same time
// may have put its file there, and taken ours away.
bool C_TaskOutput::Commit() {
  for (const S_File& file : m_files) {
    const bool isThere = Sync(file.hidden, 0) && ::rename(file.hidden.c_str(), file.file.c_str()) == 0;
    if ((isThere || ::access(file.file.c_str(), F_OK) == 0) && Sync(file.file.parent_path(), O_DIRECTORY)) {
      RemoveTries(file.file);
      continue;
    }
    ReportError(fmt::format("{}: cannot be completed: {}", file.file.native(), std::strerror(errno)));
    return false;
  }
  m_files.clear();
  return true;
}

}  // namespace Host
