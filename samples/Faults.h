// What goes wrong on the line: noise, damaged frames, false starts, and lines that end in unusual ways.
#ifndef VELAGNSS_SAMPLES_FAULTS_H
#define VELAGNSS_SAMPLES_FAULTS_H

#include "samples/Session.h"

// Adds what goes wrong in this second ahead of the frames of one group: the text sentences, the blocks and replies, or
// RTCM 3. Each row of faults has its second; noise comes every few seconds.
enum eGroup { eTextGroup, eBlockGroup, eRtcmGroup };
void AddFaults(C_Session& session, S_Context& context, eGroup group);

#endif  // VELAGNSS_SAMPLES_FAULTS_H
