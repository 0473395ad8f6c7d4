// What became of the bytes and frames of the selected part of a stream.
#ifndef VELAGNSS_APPS_PART_TOTALS_H
#define VELAGNSS_APPS_PART_TOTALS_H

#include "stream/FrameReader.h"

namespace Host {

// The growth of a reader's totals between two frames, which is damage and the line end after the first, counts when the
// stream was in the part then; a frame counts when it is selected itself.
class C_PartTotals {
 public:
  // What came since the last frame.
  void NoteGap(const velagnss::StreamTotals& now, bool isInPart);

  // What came since the last frame, and the next one, which is in the totals already.
  void NoteFrame(velagnss::StreamTotals now, bool wasInPart, unsigned int length, bool isSelected);

  const velagnss::StreamTotals& Selected() const { return m_selected; }

 private:
  velagnss::StreamTotals m_noted;
  velagnss::StreamTotals m_selected;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_PART_TOTALS_H
