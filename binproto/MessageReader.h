// Takes a message out of its frame into its record: header, body, trailer. The one reader of all messages.
#ifndef VELAGNSS_BINPROTO_MESSAGE_READER_H
#define VELAGNSS_BINPROTO_MESSAGE_READER_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

#include "binproto/VelaBIN_Messages.h"

inline constexpr unsigned short kFrameHeaderLength = 4 + 2 + 2;
inline constexpr unsigned short kMinFrameLength = kFrameHeaderLength + 2;  // no data, checksum
inline constexpr unsigned short kTerminator = 0x0A0D;                      // carriage return, line feed

// A record holds its body as the wire does: little-endian and without gaps, from behind the header (aligned) to the
// trailer. So a body is read by one copy, whatever its fields. `MessageTable.h` checks the lengths.
static_assert(std::endian::native == std::endian::little);

template <class Record>
inline constexpr std::size_t kBodyOffset = std::max(sizeof(VelaBIN_Messages::S_MsgHeader), alignof(Record));

template <class Record>
inline constexpr unsigned short kBodyLength = offsetof(Record, Trailer) - kBodyOffset<Record>;

// No data: the message's own number, and the terminator that every frame ends in.
template <class Record>
void Preset(Record& record, unsigned short number) {
  std::memset(&record, 0, sizeof record);
  record.Header.BlockId = number;
  record.Trailer.Terminator = kTerminator;
}

struct S_MessageParts {
  VelaBIN_Messages::S_MsgHeader& header;
  unsigned char* body;
  unsigned short bodyLength;
  VelaBIN_Messages::S_MsgTrailer& trailer;
};

// Reads the parts of message `number`. eResultNull, eResultBadSync for less than a frame, eResultWrongMessage for
// another number, eResultPastEnd for a part that ends behind `length`. Neither sync nor checksum are looked at.
[[nodiscard]] unsigned int ReadMessage(const unsigned char* frame, unsigned short length, unsigned short number,
                                       const S_MessageParts& parts);

// The same into a whole record, which is preset first.
template <class Record>
[[nodiscard]] unsigned int ReadMessage(const unsigned char* frame, unsigned short length, unsigned short number,
                                       Record& record) {
  Preset(record, number);
  auto* const bytes = reinterpret_cast<unsigned char*>(&record);
  return ReadMessage(frame, length, number,
                     S_MessageParts{record.Header, bytes + kBodyOffset<Record>, kBodyLength<Record>, record.Trailer});
}

#endif  // VELAGNSS_BINPROTO_MESSAGE_READER_H
