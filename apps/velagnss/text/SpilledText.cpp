#include "apps/velagnss/text/SpilledText.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace Host {
namespace {

// A file without a name in `directory`; -1 when that is not possible.
int OpenUnnamed(std::string directory) {
  const int unnamed = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (unnamed >= 0) return unnamed;
  directory += "/velagnss-XXXXXX";
  const int named = ::mkostemp(directory.data(), O_CLOEXEC);
  if (named >= 0) ::unlink(directory.c_str());
  return named;
}

}  // namespace

void C_SpilledText::Append(std::string_view text) {
  if (text.empty()) return;
  m_rest += text;
  m_last = text.back();
  if (m_rest.size() >= kMemory && !m_hasFailed) Spill();
}

// /var/tmp, because /tmp may itself be in memory.
bool C_SpilledText::OpenFile() {
  if (m_file != nullptr) return true;
  const char* const directory = std::getenv("TMPDIR");
  int descriptor = OpenUnnamed(directory != nullptr && *directory != '\0' ? directory : "/var/tmp");
  if (descriptor < 0) descriptor = OpenUnnamed("/tmp");
  if (descriptor >= 0) m_file.reset(::fdopen(descriptor, "w+b"));
  return m_file != nullptr && std::setvbuf(m_file.get(), nullptr, _IONBF, 0) == 0;
}

// Of a write that fails half way, the file's part is not counted: the text is still in memory.
void C_SpilledText::Spill() {
  m_hasFailed = !OpenFile() || std::fwrite(m_rest.data(), 1, m_rest.size(), m_file.get()) != m_rest.size();
  if (m_hasFailed) return;
  m_spilled += m_rest.size();
  m_rest.clear();
}

void C_SpilledText::MoveTo(const std::function<void(std::string_view piece)>& take) {
  constexpr std::uint64_t kPiece = 1 << 16;
  if (m_spilled > 0) std::rewind(m_file.get());
  std::string piece;
  while (m_spilled > 0) {
    piece.resize(static_cast<std::size_t>(std::min(m_spilled, kPiece)));
    if (std::fread(piece.data(), 1, piece.size(), m_file.get()) != piece.size()) throw S_SpillLost();
    take(piece);
    m_spilled -= piece.size();
  }
  take(m_rest);
  m_rest.clear();
  m_file.reset();
  m_hasFailed = false;
}

}  // namespace Host
