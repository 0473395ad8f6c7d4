// The frame of the binary protocol: readers of its fields and the check of a whole frame.
#include <cstring>

#include "binproto/MessageReader.h"
#include "binproto/VelaBin_Decode.h"
#include "records/ResultCodes.h"

using namespace VelaBIN_Messages;
using namespace velagnss::binproto;

namespace {

constexpr unsigned char kSync[] = {'$', 'B', 'I', 'N'};
constexpr unsigned short kMaxFrameLength = 2047;
constexpr unsigned short kTerminatorLength = 2;

// Little-endian, byte by byte, so that any alignment will do. `length` is that of a frame: what is shorter than the
// shortest one is refused before its bytes are counted.
template <class Value>
unsigned int ReadLittleEndian(const unsigned char* frame, unsigned short length, unsigned short& position,
                              Value& value) {
  value = 0;
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrameLength) return eResultBadSync;
  if (position + sizeof(Value) - 1 >= length) return eResultPastEnd;
  for (unsigned int shift = 0; shift < 8 * sizeof(Value); shift += 8)
    value = static_cast<Value>(value | static_cast<Value>(frame[position++]) << shift);
  return eResultOk;
}

// The checksum: each byte as an unsigned number, modulo 65536.
unsigned short SumOfBytes(const unsigned char* bytes, unsigned short count) {
  unsigned int sum = 0;
  for (unsigned short i = 0; i < count; ++i) sum += bytes[i];
  return static_cast<unsigned short>(sum);
}

}  // namespace

unsigned int C_VelaBin_Decode::Decode_Bin_U16(const unsigned char* frame, const unsigned short& length,
                                              unsigned short& position, unsigned short& value) {
  return ReadLittleEndian(frame, length, position, value);
}

unsigned int C_VelaBin_Decode::Decode_Bin_U32(const unsigned char* frame, const unsigned short& length,
                                              unsigned short& position, unsigned int& value) {
  return ReadLittleEndian(frame, length, position, value);
}

unsigned int C_VelaBin_Decode::Decode_Bin_Header(const unsigned char* frame, const unsigned short& length,
                                                 unsigned short& position, S_MsgHeader& header) {
  header = {0xFFFF, 0};  // a number that no message has, for callers who do not look at the result
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrameLength) return eResultBadSync;
  const unsigned int result = Decode_Bin_U16(frame, length, position, header.BlockId);
  if (result != eResultOk) return result;
  return Decode_Bin_U16(frame, length, position, header.DataLength);
}

unsigned int C_VelaBin_Decode::Decode_Bin_Trailer(const unsigned char* frame, const unsigned short& length,
                                                  unsigned short& position, S_MsgTrailer& trailer) {
  trailer = {0, kTerminator};  // records always end in the terminator, whether the frame was followed by one or not
  const unsigned int result = Decode_Bin_U16(frame, length, position, trailer.Checksum);
  if (result != eResultOk) return result;
  position = static_cast<unsigned short>(position + kTerminatorLength);  // not part of the frame: it may be missing
  return eResultOk;
}

// The order of the checks is part of the interface: of several faults the first one here is reported.
unsigned int C_VelaBin_Decode::ValidateFrame(const unsigned char* frame, unsigned short length,
                                             unsigned short& msgNumber, unsigned short& frameLength,
                                             unsigned short& position) {
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrameLength) return eResultTooShort;
  // The outputs are written as the checks go, so that a caller sees how far they got.
  position = 0;
  for (const unsigned char expected : kSync)
    if (frame[position++] != expected) return eResultBadSync;

  S_MsgHeader header;
  unsigned int result = Decode_Bin_Header(frame, length, position, header);
  if (result != eResultOk) return result;
  msgNumber = header.BlockId;
  frameLength = static_cast<unsigned short>(header.DataLength + kMinFrameLength);
  if (msgNumber > kMaxMessageNumber) return eResultUnknownMessage;  // before the length, which then means nothing
  if (frameLength < kMinFrameLength) return eResultBadSync;         // the sum has wrapped in its 16 bits
  if (length < frameLength) return eResultTooShort;
  if (frameLength > kMaxFrameLength) return eResultTooLong;

  auto endOfData = static_cast<unsigned short>(kFrameHeaderLength + header.DataLength);
  // Nothing is read beyond `length` here: the frame has been found to lie within it.
  S_MsgTrailer trailer;
  result = Decode_Bin_Trailer(frame, length, endOfData, trailer);
  if (result != eResultOk) return result;
  if (SumOfBytes(frame + kFrameHeaderLength, header.DataLength) != trailer.Checksum) return eResultChecksum;
  return eResultOk;
}

unsigned int velagnss::binproto::ReadMessage(const unsigned char* frame, unsigned short length, unsigned short number,
                                             const S_MessageParts& parts) {
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrameLength) return eResultBadSync;
  unsigned short position = sizeof kSync;
  const unsigned int result = C_VelaBin_Decode::Decode_Bin_Header(frame, length, position, parts.header);
  if (result != eResultOk) return result;
  if (parts.header.BlockId != number) return eResultWrongMessage;
  if (position + parts.bodyLength > length) return eResultPastEnd;
  // By the layout, not by the data length: a longer body is accepted, and the trailer is what follows the known part.
  std::memcpy(parts.body, frame + position, parts.bodyLength);
  position = static_cast<unsigned short>(position + parts.bodyLength);
  return C_VelaBin_Decode::Decode_Bin_Trailer(frame, length, position, parts.trailer);
}
