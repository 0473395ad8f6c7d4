#include "records/InterfaceRecords.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

// `count` bytes of one value: the empty states below are written as runs of bytes, as a binding would see them.
std::string Bytes(std::size_t count, char byte) { return std::string(count, byte); }

template <class Record>
std::string Image(const Record& record) {
  return std::string(reinterpret_cast<const char*>(&record), sizeof record);
}

template <class Record>
Record FilledWith(int byte) {
  Record record;
  std::memset(&record, byte, sizeof record);
  return record;
}

// What both ephemeris records begin with: no system, no satellite, channel -128, spare; health; issue; no time system;
// week and time; week and time.
const std::string kHead = std::string("\x07\xFF\x80\xFF\xFF\xFF\xFF\xFF\0\0\0\0\x07", 13) + Bytes(27, '\0');

TEST(InterfaceRecords, EmptyKeplerEphemeris) {
  const std::string expected = kHead + Bytes(16, '\0')                                 // to Toc
                               + Bytes(21 * 8, '\xCC')                                 // Af0 to Cis
                               + Bytes(4, '\xFF') + Bytes(4, '\0')                     // Iode2, CodeOnL2, L2PDataFlag
                               + Bytes(8, '\xCC') + Bytes(4, '\xFF') + Bytes(4, '\0')  // Ura, SvHealth, Spare3
                               + Bytes(16, '\xCC') + Bytes(8, '\0') +
                               Bytes(8, '\xCC');  // Tgd, Spare4, Iodc, FitInterval
  for (const int before : {0x00, 0xAA, 0xFF}) {
    auto record = FilledWith<S_IFKeplerEphRec>(before);
    SetEmpty_IFEphRec(record);
    EXPECT_EQ(Image(record), expected);
  }
}

TEST(InterfaceRecords, EmptyPvaEphemeris) {
  const std::string expected = kHead + Bytes(12 * 8, '\xCC')           // TauN to DeltaTauN
                               + Bytes(12, '\xFF') + Bytes(4, '\0')    // Bn, En, Ft, Tb, Valid
                               + Bytes(16, '\xCC') + Bytes(16, '\0');  // TauGps, TauC, M to Ln
  for (const int before : {0x00, 0xAA, 0xFF}) {
    auto record = FilledWith<S_IFPvaEphRec>(before);
    SetEmpty_IFEphRec(record);
    EXPECT_EQ(Image(record), expected);
  }
}

TEST(InterfaceRecords, EmptyObservation) {
  const auto expected = [](char spare) {
    return std::string("\x0F\x15", 2) + Bytes(2, spare) + Bytes(4, '\xFF') + Bytes(32, '\xCC') + Bytes(4, '\xFF') +
           Bytes(4, spare);
  };
  auto record = FilledWith<S_IFGnssObsData>(0x5A);
  SetEmpty_IFGnssObsData(record, 0);
  EXPECT_EQ(Image(record), expected('\x5A'));
  SetEmpty_IFGnssObsData(record, 2);
  EXPECT_EQ(Image(record), expected('\0'));
}

}  // namespace
