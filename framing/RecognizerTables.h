// What is known of the protocols, one row each. Internal to the recognizer.
#ifndef VELAGNSS_FRAMING_RECOGNIZER_TABLES_H
#define VELAGNSS_FRAMING_RECOGNIZER_TABLES_H

#include "framing/FrameRecognizer.h"

struct C_FrameRecognizer::S_ProtocolRow {
  S_FrameDescriptor frame;
  unsigned short neededLength;                  // bytes from which a frame's type and length can be told
  bool (C_FrameRecognizer::*readParameters)();  // sets type and length limits; null: every match passes
  eBody body;                                   // how the body ends and is checked
};

#endif  // VELAGNSS_FRAMING_RECOGNIZER_TABLES_H
