// Decodes RTCM 3 messages: the position of a station, and an observation.
#include <cstdio>
#include <initializer_list>
#include <utility>
#include <vector>

#include "framing/BitBufAcc.h"
#include "framing/CRC24.h"
#include "records/ResultCodes.h"
#include "rtcm3/Rtcm3Decoder.h"

// The standard's example of a message 1005 (RTCM 10403).
static const unsigned char kStation[] = {0xD3, 0x00, 0x13, 0x3E, 0xD7, 0xD3, 0x02, 0x02, 0x98, 0x0E, 0xDE, 0xEF, 0x34,
                                         0xB4, 0xBD, 0x62, 0xAC, 0x09, 0x41, 0x98, 0x6F, 0x33, 0x36, 0x0B, 0x98};

// A frame of the fields of a message: numbers and their bits.
static std::vector<unsigned char> BuildFrame(std::initializer_list<std::pair<int, int>> fields) {
  std::vector<unsigned char> frame(256);
  int position = 24;  // after the preamble and the length
  for (const auto& [value, bits] : fields)
    C_BitBufAcc::PackU32(frame.data(), position, bits, static_cast<unsigned int>(value));
  const int length = (position - 24 + 7) / 8;
  frame[0] = 0xD3;
  frame[2] = static_cast<unsigned char>(length);
  const unsigned int crc = C_CRC24::ComputeCRC(frame.data(), static_cast<unsigned short>(3 + length));
  position = 8 * (3 + length);
  C_BitBufAcc::PackU32(frame.data(), position, 24, crc);
  frame.resize(3 + static_cast<std::size_t>(length) + 3);
  return frame;
}

int main() {
  velagnss::Rtcm3Decoder decoder;
  decoder.SeedTime(C_GnssTime(2314, 345000.0, ALGO::GNSS_GPS));  // observations do not carry their week

  const velagnss::Rtcm3Decoded& decoded = decoder.Decode(kStation, sizeof kStation);
  if (const auto* station = std::get_if<velagnss::Rtcm3Station>(&decoded.record))
    std::printf("station %u at %.4f %.4f %.4f m\n", unsigned{station->station}, station->x, station->y, station->z);

  // An MSM4 with the C/A code of GPS satellite 5: 75 + 512/1024 light-milliseconds, and fine parts.
  const std::vector<unsigned char> frame = BuildFrame({{1074, 12},
                                                       {2003, 12},
                                                       {345600000, 30},
                                                       {0, 1 + 18},
                                                       {1 << 27, 32},
                                                       {0, 32},
                                                       {1 << 30, 32},
                                                       {1, 1},
                                                       {75, 8},
                                                       {512, 10},
                                                       {-1234, 15},
                                                       {654321, 22},
                                                       {15, 4},
                                                       {0, 1},
                                                       {45, 6}});
  decoder.Decode(frame.data(), frame.size());  // `decoded` refers to the new answer
  const auto* epoch = std::get_if<velagnss::Rtcm3Observations>(&decoded.record);
  if (decoded.result != eResultOk || epoch == nullptr) return 1;
  std::printf("week %u, %.1f s, more to come: %s\n", unsigned{epoch->time.week}, epoch->time.seconds,
              epoch->isMoreToCome ? "yes" : "no");
  for (unsigned int i = 0; i < epoch->numSignals; ++i) {
    const velagnss::Rtcm3Signal& signal = epoch->signals[i];
    std::printf("satellite %u, %s: %.3f m, %.3f cycles, %.0f dB-Hz, Doppler %s\n",
                unsigned{epoch->satellites[signal.satellite].svId}, signal.code, signal.data.Pseudorange,
                signal.data.CarrierPhase, signal.data.SignalStrength,
                IsNotAvailable(signal.data.Measurement3) ? "not available" : "available");
  }
  return 0;
}
