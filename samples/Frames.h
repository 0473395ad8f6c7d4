// The frames of a session, one builder for each kind.
#ifndef VELAGNSS_SAMPLES_FRAMES_H
#define VELAGNSS_SAMPLES_FRAMES_H

#include <string>
#include <string_view>
#include <vector>

#include "samples/Session.h"

using t_Build = S_Frame (*)(S_Context& context);

// --- NMEA 0183 (NmeaFrames.cpp) -------------------------------------------------------------------------------------

// "$", `body`, "*", checksum and CR LF: "GPHDT,274.07,T". The length must lie within the limits of the formatter.
S_Frame Sentence(const std::string& body);
S_Frame MakeGga(S_Context& context);
S_Frame MakeRmc(S_Context& context);         // as of NMEA 4.1: mode and navigation status
S_Frame MakeRmcOfNmea2(S_Context& context);  // ends with the magnetic variation
S_Frame MakeVtg(S_Context& context);         // as long as a VTG may be
S_Frame MakeVtgOfNmea2(S_Context& context);  // without mode
S_Frame MakeGns(S_Context& context);
S_Frame MakeGll(S_Context& context);
S_Frame MakeZda(S_Context& context);
S_Frame MakeGst(S_Context& context);
S_Frame MakeRareSentence(S_Context& context);  // one of the other formatters after the other
// All satellites in view, four to a sentence, of all systems; one GSA for each system.
std::vector<S_Frame> MakeGsvSet(S_Context& context);
std::vector<S_Frame> MakeGsaSet(S_Context& context);
// Forms of earlier versions: no signal id, no system id.
std::vector<S_Frame> MakeGsvSetOfNmea2(S_Context& context);
std::vector<S_Frame> MakeGsaSetOfNmea2(S_Context& context);

// --- RTCM 3 (RtcmFrames.cpp) ----------------------------------------------------------------------------------------

constexpr int kStationId = 42;
constexpr int kMsmPeriod = 4;  // s
constexpr int kMsmPhase = 1;   // s, first epoch

S_Frame RtcmFrame(std::string_view payload);  // the message number is read from the payload
S_Frame MakeStation(S_Context& context);      // 1005 and 1006 in turn
S_Frame MakeGpsEphemeris(S_Context& context);
S_Frame MakeGalileoEphemeris(S_Context& context);
S_Frame MakeBeidouEphemeris(S_Context& context);
S_Frame MakeGlonassEphemeris(S_Context& context);
std::vector<S_Frame> MakeMsmSet(S_Context& context);  // one epoch: 1077, 1087, 1097, 1127 (MsmFrames.cpp)
S_Frame MakeCodePhaseBias(S_Context& context);        // 1230
S_Frame MakeProprietaryRtcm(S_Context& context);      // 4072

// --- Binary blocks (BlockFrames.cpp) --------------------------------------------------------------------------------

S_Frame BlockFrame(unsigned int id, std::string_view data);
S_Frame MakeGpsBlock(S_Context& context);          // 95, one satellite after the other
S_Frame MakeQzssBlock(S_Context& context);         // 25
S_Frame MakeGlonassBlock(S_Context& context);      // 65
S_Frame MakeSbasBlock(S_Context& context);         // 93
S_Frame MakeRawWordsBlock(S_Context& context);     // 35 and 45 in turn
S_Frame MakePositionBlock(S_Context& context);     // 1
S_Frame MakeObservationBlock(S_Context& context);  // 16, 36, 66, 76 in turn
S_Frame MakeStatusBlock(S_Context& context);       // all other blocks, one after the other

// --- The receiver's own text and packed replies (ReplyFrames.cpp) ---------------------------------------------------

S_Frame OwnSentence(const std::string& body);                          // "PKVN,HPR,...": as Sentence
S_Frame PackedSentence(unsigned int count, std::string_view payload);  // "$PKVN,RAW,", announcing `count` bytes
S_Frame PackedReply(std::string_view payload);                         // "$JROX,"
// A reply with the checksum, which is optional there, and without.
S_Frame CheckedReply(const std::string& body);
S_Frame BareReply(const std::string& body);
S_Frame MakeOwnSentence(S_Context& context);  // HPR, GBS ... one after the other
S_Frame MakePackedSentence(S_Context& context);
S_Frame MakePackedReply(S_Context& context);
S_Frame MakeDiagnostic(S_Context& context);    // "$RD1,"
S_Frame MakeReply(S_Context& context);         // "$>JI,", "$>JQUERY,", "$>JGEO," with and without checksum
S_Frame MakeLongestReply(S_Context& context);  // the same, as long as they may be
S_Frame MakeSiteRecord(S_Context& context);

#endif  // VELAGNSS_SAMPLES_FRAMES_H
