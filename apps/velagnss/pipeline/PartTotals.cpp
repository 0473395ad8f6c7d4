#include "apps/velagnss/pipeline/PartTotals.h"

namespace Host {

void C_PartTotals::NoteGap(const velagnss::StreamTotals& now, bool isInPart) {
  const auto take = [&](std::uint64_t velagnss::StreamTotals::*count) {
    if (isInPart) m_selected.*count += now.*count - m_noted.*count;
  };
  take(&velagnss::StreamTotals::bytesAccepted);
  take(&velagnss::StreamTotals::bytesDiscarded);
  take(&velagnss::StreamTotals::framesGood);
  take(&velagnss::StreamTotals::framesBad);
  m_noted = now;
}

void C_PartTotals::NoteFrame(velagnss::StreamTotals now, bool wasInPart, unsigned int length, bool isSelected) {
  now.bytesAccepted -= length;
  --now.framesGood;
  NoteGap(now, wasInPart);
  now.bytesAccepted += length;
  ++now.framesGood;
  NoteGap(now, isSelected);
}

}  // namespace Host
