#include "framing/RawDataMessage.h"

#include <cstring>

C_RawDataMessage::C_RawDataMessage() : C_RawDataMessage(nullptr, 0) {}

C_RawDataMessage::C_RawDataMessage(unsigned char* buffer, unsigned int bufferCapacity)
    : capacity(bufferCapacity), data(buffer) {
  Reset();
}

// All ones, not zero, for the types: 0 is a type of several protocols.
void C_RawDataMessage::Reset() {
  protocol = eNoProtocol;
  messageType = 0xFFFFFFFF;
  messageSubtype = 0xFFFFFFFF;
  if (data != nullptr) std::memset(data, 0, capacity);
  length = 0;
}
