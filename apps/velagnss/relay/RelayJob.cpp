#include "apps/velagnss/relay/RelayJob.h"

#include <algorithm>

namespace Host {
namespace {

// Large reads of a file become pieces of about this size, so that a queue can drop a little of it.
constexpr std::size_t kPieceSize = 1 << 13;

}  // namespace

void C_RelayJob::Feed(const S_Chunk& chunk) {
  for (std::span<const unsigned char> rest = chunk.bytes; !rest.empty() && WantsMore();) {
    S_Chunk part = chunk;
    part.bytes = rest.first(std::min(rest.size(), kPieceSize));
    m_destinations.OnBytes(part.bytes);
    m_run.Feed(part);
    m_destinations.Flush(kPieceSize);
    rest = rest.subspan(part.bytes.size());
  }
}

void C_RelayJob::BeforeWait() {
  m_run.BeforeWait();
  m_destinations.Flush();
}

void C_RelayJob::OnQuiet() {
  m_run.OnQuiet();
  m_destinations.Flush();
}

void C_RelayJob::Finish() {
  m_run.Finish();
  m_destinations.Finish();
}

}  // namespace Host
