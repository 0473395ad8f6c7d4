#include "framing/RawDataMessage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

namespace {

void ExpectNoFrame(const C_RawDataMessage& message) {
  EXPECT_EQ(message.protocol, C_RawDataMessage::eNoProtocol);
  EXPECT_EQ(message.messageType, 0xFFFFFFFF);
  EXPECT_EQ(message.messageSubtype, 0xFFFFFFFF);
  EXPECT_EQ(message.length, 0);
  EXPECT_EQ(message.capacity, 3U);
}

TEST(RawDataMessage, ResetAndConstructionClearTheCallersBuffer) {
  unsigned char buffer[4] = {1, 2, 3, 4};
  alignas(C_RawDataMessage) unsigned char memory[sizeof(C_RawDataMessage)];
  std::memset(memory, 0xA5, sizeof memory);
  C_RawDataMessage& message = *new (memory) C_RawDataMessage(buffer, 3);
  EXPECT_EQ(buffer[2], 0);
  ExpectNoFrame(message);
  message.protocol = C_RawDataMessage::eNMEA0183;
  message.messageType = 8;
  message.messageSubtype = 1;
  message.length = 3;
  buffer[0] = 5;
  message.Reset();
  ExpectNoFrame(message);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[3], 4) << "beyond the capacity";
}

}  // namespace
