// Decodes the ephemeris of a GPS satellite from a frame of the receiver's binary protocol.
#include <cstdio>
#include <vector>

#include "binproto/VelaBin_Decode.h"
#include "records/ResultCodes.h"

// Subframes 1 to 3 of the satellite: ten words each, in the low 30 bits of a value.
static const unsigned int kWords[3][10] = {
    {0x22C00000, 0x1C202100, 0x0FC40000, 0x00000000, 0x00000000, 0x00000000, 0x00003A00, 0x0E558880, 0x003FF900,
     0x3ADAFD00},
    {0x22C00000, 0x1C204200, 0x0E40FC00, 0x0C93CC80, 0x13400F00, 0x00D6C080, 0x3C6A7F00, 0x043F6840, 0x034DD300,
     0x15888000},
    {0x22C00000, 0x1C206300, 0x000A2A80, 0x02507D00, 0x3FFA49C0, 0x1AF3BAC0, 0x06EE88C0, 0x2DA934C0, 0x3FE9DA40,
     0x0E424C00},
};

// A message 95 as the receiver sends it: header, satellite number, six reserved bytes, the words, checksum.
static std::vector<unsigned char> BuildFrame(unsigned char satellite) {
  std::vector<unsigned char> frame = {'$', 'B', 'I', 'N', 95, 0, 128, 0, satellite, 0, 0, 0, 0, 0, 0, 0};
  for (const auto& subframe : kWords)
    for (const unsigned int word : subframe)
      for (int shift = 0; shift < 32; shift += 8) frame.push_back(static_cast<unsigned char>(word >> shift));
  unsigned int sum = 0;
  for (std::size_t i = 8; i < frame.size(); ++i) sum += frame[i];
  frame.push_back(static_cast<unsigned char>(sum));
  frame.push_back(static_cast<unsigned char>(sum >> 8));
  return frame;
}

int main() {
  C_VelaBin_Decode decoder(nullptr);  // no satellite list: only observations need one
  static U_VelaBIN_EcdDcdData record;
  std::vector<unsigned char> frame = BuildFrame(5);
  const auto length = static_cast<unsigned short>(frame.size());
  unsigned short number = 0;

  // Satellites send their week modulo 1024. Without a known time the decoder does not guess.
  if (decoder.Decode(frame.data(), length, number, record) == eResultNoSeed) std::puts("no time known yet");

  C_GnssTime time;
  time.Set(2024, 2, 7, 12, 0, 0.0, ALGO::GNSS_GPS);  // 7 February 2024, noon; a few years off works too
  decoder.SeedTime(time);
  if (decoder.Decode(frame.data(), length, number, record) != eResultOk) return 1;

  const S_IFKeplerEphRec& ephemeris = record.keplerEph;
  std::printf("message %u, G%02u, valid around week %u, %.0f s\n", unsigned{number}, unsigned{ephemeris.SvId},
              unsigned{ephemeris.ToeWeek}, ephemeris.Toe);
  std::printf("semi-major axis %.3f km, eccentricity %.6f, inclination %.6f rad\n",
              ephemeris.SqrtA * ephemeris.SqrtA / 1000, ephemeris.Ecc, ephemeris.I0);
  std::printf("clock bias %.3f us, accuracy %.1f m, fit interval %.0f h\n", ephemeris.Af0 * 1e6, ephemeris.Ura,
              ephemeris.FitInterval);
  std::printf("decoded %u of these\n", decoder.GetReceivedMsgCount(VelaBIN_Messages::eBin95));
  return 0;
}
