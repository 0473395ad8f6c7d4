#include "apps/velagnss/sinks/live/FileSink.h"

namespace Host {

void C_FileSink::Put(const t_Piece& piece) {
  if (!m_output.Write(piece->bytes)) {
    m_totals.dropped += piece->ends.size();
    return;
  }
  m_totals.units += piece->ends.size();
  m_totals.bytes += piece->bytes.size();
}

}  // namespace Host
