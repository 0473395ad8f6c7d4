#include "framing/RawDataMessage.h"

#include <gtest/gtest.h>

namespace {

TEST(RawDataMessage, ResetClearsTheCallersBuffer) {
  unsigned char buffer[4] = {1, 2, 3, 4};
  C_RawDataMessage message(buffer, 3);
  message.protocol = C_RawDataMessage::eNMEA0183;
  message.messageType = 8;
  message.messageSubtype = 1;
  message.length = 3;
  buffer[0] = 5;
  message.Reset();
  EXPECT_EQ(message.protocol, C_RawDataMessage::eNoProtocol);
  EXPECT_EQ(message.messageType, 0xFFFFFFFF);
  EXPECT_EQ(message.messageSubtype, 0xFFFFFFFF);
  EXPECT_EQ(message.length, 0);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[3], 4) << "beyond the capacity";
}

}  // namespace
