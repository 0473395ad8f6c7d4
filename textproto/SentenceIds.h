// Which NMEA 0183 sentence three letters name: the decoder and the frame recognizer look them up. Internal.
//
// The recognizer asks this of every "$" in a stream, so it is a table of slots without collisions instead of a search.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_IDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_IDS_H

#include <array>
#include <cstdint>
#include <iterator>

#include "framing/RawDataMessage.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace velagnss::textproto::SentenceIds {

using t_Sentence = C_RawDataMessage::eNMEA0183Messages;

// An empty slot has id 0, which no three letters give.
struct S_Slot {
  std::uint32_t id = 0;
  t_Sentence sentence = C_RawDataMessage::eNmeaUnknown;
};

// By shifts, not by memcpy: the same on every byte order, and the compiler can do it.
constexpr std::uint32_t Pack(const char* id) {
  const auto byte = [id](unsigned int i) { return std::uint32_t{static_cast<unsigned char>(id[i])}; };
  return byte(0) | byte(1) << 8 | byte(2) << 16;
}

// Spreads the ids over the slots so that no two of them collide. The factor was found by trial.
inline constexpr unsigned int kSlotBits = 5;
constexpr unsigned int SlotOf(std::uint32_t id) { return (id * 0x39381747) >> (32 - kSlotBits); }

inline constexpr auto kSlots = [] {
  std::array<S_Slot, 1U << kSlotBits> slots = {};
  for (unsigned int i = 0; i < std::size(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs); ++i) {
    const std::uint32_t id = Pack(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[i]);
    slots[SlotOf(id)] = {id, static_cast<t_Sentence>(i)};
  }
  return slots;
}();

// The sentence whose id these three characters are; `eNmeaUnknown` for any others.
// One multiplication and one comparison.
constexpr t_Sentence Find(const char* id) {
  const S_Slot& slot = kSlots[SlotOf(Pack(id))];
  return slot.id == Pack(id) ? slot.sentence : C_RawDataMessage::eNmeaUnknown;
}

constexpr bool FindsAll() {
  unsigned int expected = 0;
  for (const char* id : C_NMEA_EncodeDecode::mppz_NmeaMsgIDs) {
    if (Find(id) != expected++) return false;
  }
  return true;
}
static_assert(FindsAll(), "two ids collide in a slot");

}  // namespace velagnss::textproto::SentenceIds

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_IDS_H
