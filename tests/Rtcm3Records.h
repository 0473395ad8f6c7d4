// Decodes payloads of RTCM 3 messages for tests.
#ifndef VELAGNSS_TESTS_RTCM3_RECORDS_H
#define VELAGNSS_TESTS_RTCM3_RECORDS_H

#include <gtest/gtest.h>

#include <vector>

#include "records/ResultCodes.h"
#include "rtcm3/Rtcm3Decoder.h"
#include "tests/ExactCopy.h"
#include "tests/Rtcm3Bits.h"

using t_Values = std::vector<double>;

// A decoder that is given payloads; their frames lie in blocks of their exact size.
class Rtcm3Payloads {
 public:
  Rtcm3Payloads() = default;
  explicit Rtcm3Payloads(const C_GnssTime& seed) { decoder.SeedTime(seed); }

  const velagnss::Rtcm3Decoded& Decode(std::string_view payload) {
    ExactCopy frame(RtcmFrame(payload));
    return decoder.Decode(frame.Data(), frame.Size());
  }
  unsigned int Result(const Rtcm3Bits& bits) { return Decode(bits.Payload()).result; }

  // The record of a message that must be of this kind; an empty one if it is not.
  template <class Record>
  Record Get(const Rtcm3Bits& bits, unsigned int result = eResultOk) {
    const velagnss::Rtcm3Decoded& decoded = Decode(bits.Payload());
    EXPECT_EQ(decoded.result, result);
    const auto* const record = std::get_if<Record>(&decoded.record);
    EXPECT_NE(record, nullptr) << "message " << decoded.message;
    return record != nullptr ? *record : Record{};
  }

  velagnss::Rtcm3Decoder decoder;
};

#endif  // VELAGNSS_TESTS_RTCM3_RECORDS_H
