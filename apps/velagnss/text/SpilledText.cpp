#include "apps/velagnss/text/SpilledText.h"

#include <algorithm>

namespace Host {

void C_SpilledText::Append(std::string_view text) {
  if (text.empty()) return;
  m_rest += text;
  m_last = text.back();
  if (m_rest.size() >= kMemory && m_file.Append(m_rest)) m_rest.clear();
}

void C_SpilledText::ForEach(const t_Take& take) {
  constexpr std::uint64_t kPiece = 1 << 16;
  std::string piece;
  for (std::uint64_t at = 0; at < m_file.Size(); at += piece.size()) {
    piece.resize(static_cast<std::size_t>(std::min(m_file.Size() - at, kPiece)));
    m_file.Read(at, piece.data(), piece.size());
    take(piece);
  }
  take(m_rest);
}

void C_SpilledText::MoveTo(const t_Take& take) {
  ForEach(take);
  m_rest.clear();
  m_file.Close();
}

}  // namespace Host
