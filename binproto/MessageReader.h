// Takes a message out of its frame into its record: header, body, trailer.
//
// Internal. The one reader of all messages, whether their fields are known or not.
#ifndef VELAGNSS_BINPROTO_MESSAGE_READER_H
#define VELAGNSS_BINPROTO_MESSAGE_READER_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

#include "binproto/VelaBIN_Messages.h"

namespace velagnss::binproto {

inline constexpr unsigned short kFrameHeaderLength = 4 + 2 + 2;            // sync, message number, data length
inline constexpr unsigned short kMinFrameLength = kFrameHeaderLength + 2;  // no data, checksum
inline constexpr unsigned short kTerminator = 0x0A0D;                      // carriage return, line feed

// A record holds its body as the wire does: little-endian and without gaps, from the first aligned place after the
// header up to the trailer. That is why one copy reads any body, whatever its fields. `MessageTable.h` checks the
// lengths.
static_assert(std::endian::native == std::endian::little);

// Where the body starts in a record: the header fills 4 bytes, and a record with a double in it aligns its body to 8.
template <class Record>
inline constexpr std::size_t kBodyOffset = std::max(sizeof(VelaBIN_Messages::S_MsgHeader), alignof(Record));

template <class Record>
inline constexpr unsigned short kBodyLength = offsetof(Record, Trailer) - kBodyOffset<Record>;

// The state of a record before its first message: zero, but for the message number and the terminator that follows
// every frame. Padding is cleared as well, because hosts compare records byte by byte.
template <class Record>
void Preset(Record& record, unsigned short number) {
  std::memset(&record, 0, sizeof record);
  record.Header.BlockId = number;
  record.Trailer.Terminator = kTerminator;
}

// The parts of a record that are read, so that the reader itself is compiled once and not per message.
struct S_MessageParts {
  VelaBIN_Messages::S_MsgHeader& header;
  unsigned char* body;
  unsigned short bodyLength;
  VelaBIN_Messages::S_MsgTrailer& trailer;
};

// Reads the parts of message `number`. Neither sync nor checksum are looked at. Results, in the order of the checks:
//   eResultNull          `frame` is null
//   eResultBadSync       `length` is less than that of an empty frame
//   eResultWrongMessage  the frame has another number
//   eResultPastEnd       a part would end beyond `length`
[[nodiscard]] unsigned int ReadMessage(const unsigned char* frame, unsigned short length, unsigned short number,
                                       const S_MessageParts& parts);

// The same for a whole record, which is preset first: what a failure leaves unread is zero.
template <class Record>
[[nodiscard]] unsigned int ReadMessage(const unsigned char* frame, unsigned short length, unsigned short number,
                                       Record& record) {
  Preset(record, number);
  auto* const bytes = reinterpret_cast<unsigned char*>(&record);
  return ReadMessage(frame, length, number,
                     S_MessageParts{record.Header, bytes + kBodyOffset<Record>, kBodyLength<Record>, record.Trailer});
}

}  // namespace velagnss::binproto

#endif  // VELAGNSS_BINPROTO_MESSAGE_READER_H
