// What a binary decoder keeps between frames.
//
// Internal, so that the public class is a pointer to it and nothing else: a message or a counter can be added without a
// change to the layout that hosts were compiled against.
#ifndef VELAGNSS_BINPROTO_DECODER_STATE_H
#define VELAGNSS_BINPROTO_DECODER_STATE_H

#include <array>

#include "binproto/ContinuityTracker.h"
#include "binproto/VelaBIN_Messages.h"
#include "geo/GnssTime.h"

namespace velagnss::binproto {

inline constexpr unsigned int kSystems = 7;         // slots of the seed table: `ALGO::eGNSSSystem` 0 to 6
inline constexpr unsigned char kGlonassSlots = 24;  // of the constellation, numbered from 1 (GLONASS ICD, 4.4)

// The message of each number that was received last, as it was on the wire. Messages of one layout have a record each,
// so that none overwrites another.
struct S_StoredMessages {
  VelaBIN_Messages::S_BinMsg1 bin1;
  VelaBIN_Messages::S_BinMsg2 bin2;
  VelaBIN_Messages::S_BinMsg3 bin3;
  VelaBIN_Messages::S_BinMsg5 bin5;
  VelaBIN_Messages::S_BinMsg16 bin16;
  VelaBIN_Messages::S_BinMsg95 bin25;
  VelaBIN_Messages::S_RawBinMsg34 bin34;
  VelaBIN_Messages::S_BinMsg95 bin35;
  VelaBIN_Messages::S_BinMsg36 bin36;
  VelaBIN_Messages::S_BinMsg44 bin44;
  VelaBIN_Messages::S_BinMsg95 bin45;
  VelaBIN_Messages::S_BinMsg65 bin65;
  VelaBIN_Messages::S_BinMsg66 bin66;
  VelaBIN_Messages::S_BinMsg76 bin76;
  VelaBIN_Messages::S_BinMsg93 bin93;
  VelaBIN_Messages::S_BinMsg94 bin94;
  VelaBIN_Messages::S_BinMsg95 bin95;
  VelaBIN_Messages::S_BinMsg122 bin122;
  VelaBIN_Messages::S_BinMsg180 bin180;
  VelaBIN_Messages::S_BinMsg209 bin209;
};

// Of one `C_VelaBin_Decode`; its `Reset` gives everything but the tracker's list and slots a first value.
struct S_DecoderState {
  S_DecoderState(const C_SatelliteList* list, unsigned short slots) : tracker(list, slots) {}

  // Bound to the list of the constructor, and the one member that owns memory of its own.
  C_ContinuityTracker tracker;
  std::array<unsigned int, VelaBIN_Messages::kMaxMessageNumber + 1> received{};  // decoded frames by message number
  S_StoredMessages stored{};
  std::array<C_GnssTime, kSystems> seeds{};                      // latest known time by system
  std::array<signed char, kGlonassSlots + 1> glonassChannels{};  // by slot; 0 is not a slot
  unsigned int lastResult = 0;
};

}  // namespace velagnss::binproto

#endif  // VELAGNSS_BINPROTO_DECODER_STATE_H
