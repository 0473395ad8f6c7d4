#include "apps/velagnss/sinks/SplitOutput.h"

namespace Host {
namespace {

constexpr std::size_t kFlushSize = 1 << 16;  // bytes to write at once

}  // namespace

std::string& C_SplitOutput::Part(std::string_view part) {
  auto found = m_files.find(part);
  if (found == m_files.end()) {
    found = m_files.try_emplace(std::string(part)).first;
    m_hasFailed = m_hasFailed || !found->second.output.Open(NameOf(part));
  }
  if (found->second.waiting.size() >= kFlushSize) Flush(found->second);
  return found->second.waiting;
}

void C_SplitOutput::Flush(S_File& file) {
  if (!m_hasFailed) m_hasFailed = !file.output.Write(file.waiting);
  file.waiting.clear();
}

void C_SplitOutput::Flush() {
  for (auto& [part, file] : m_files) Flush(file);
}

void C_SplitOutput::Close() {
  Flush();
  for (auto& [part, file] : m_files)
    if (!m_hasFailed) m_hasFailed = !file.output.Close();
}

}  // namespace Host
