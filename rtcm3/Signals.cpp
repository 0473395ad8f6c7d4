#include "rtcm3/Signals.h"

#include <array>
#include <string_view>

#include "rtcm3/Rtcm3Records.h"

namespace velagnss::rtcm3 {
namespace {

using namespace ALGO;

// Systems in the order of the columns below.
enum Column : unsigned char { kG, kR, kE, kS, kJ, kC, kI, kColumns };
constexpr Column kColumnOf[kSystems] = {kG, kR, kC, kE, kS, kJ, kI};  // by `ALGO::eGNSSSystem`

// A band of a system, by its digit in a RINEX code.
struct Band {
  Column system;
  char digit;
  eGNSSFrequency frequency;
  double kilohertz;
  double kilohertzPerChannel = 0;
};
// clang-format off
constexpr Band kBands[] = {
    {kG, '1', FREQ_L1, 1575420}, {kG, '2', FREQ_L2, 1227600}, {kG, '5', FREQ_L5, 1176450},
    {kR, '1', FREQ_G1, 1602000, 562.5}, {kR, '2', FREQ_G2, 1246000, 437.5},
    {kE, '1', FREQ_L1, 1575420}, {kE, '5', FREQ_L5, 1176450}, {kE, '6', FREQ_E6, 1278750},
    {kE, '7', FREQ_E5B, 1207140}, {kE, '8', FREQ_E5, 1191795},
    {kS, '1', FREQ_L1, 1575420}, {kS, '5', FREQ_L5, 1176450},
    {kJ, '1', FREQ_L1, 1575420}, {kJ, '2', FREQ_L2, 1227600}, {kJ, '5', FREQ_L5, 1176450}, {kJ, '6', FREQ_E6, 1278750},
    {kC, '1', FREQ_L1, 1575420}, {kC, '2', FREQ_B1, 1561098}, {kC, '5', FREQ_L5, 1176450},
    {kC, '6', FREQ_B3, 1268520}, {kC, '7', FREQ_E5B, 1207140},
    {kI, '5', FREQ_L5, 1176450}, {kI, '9', FREQ_UNKNOWN, 2492028},
};

// The component of a signal. The first row that fits counts; a '*' fits every band.
struct Track {
  Column system;
  char digit;
  std::string_view attributes;
  eGNSSTrackType type;
};
constexpr Track kTracks[] = {
    {kG, '1', "SLX",  TRACK_L1C},    {kG, '*', "C",   TRACK_CA}, {kG, '*', "PWD", TRACK_PY}, {kG, '2', "S", TRACK_M},
    {kG, '2', "L",    TRACK_L},      {kG, '*', "I",   TRACK_I},  {kG, '*', "Q",   TRACK_Q},  {kG, '*', "X", TRACK_ALL},
    {kR, '*', "C",    TRACK_CA},     {kR, '*', "P",   TRACK_P},
    {kE, '*', "A",    TRACK_A},      {kE, '1', "BCX", TRACK_BC}, {kE, '6', "BCX", TRACK_BC}, {kE, '*', "I", TRACK_I},
    {kE, '*', "Q",    TRACK_Q},      {kE, '8', "X",   TRACK_ALTBOC}, {kE, '*', "X", TRACK_E5X},
    {kE, '*', "Z",    TRACK_ALL},
    {kS, '*', "C",    TRACK_CA},     {kS, '*', "I",   TRACK_I},  {kS, '*', "Q",   TRACK_Q},  {kS, '*', "X", TRACK_ALL},
    {kJ, '1', "SLX",  TRACK_L1C},    {kJ, '*', "C",   TRACK_CA}, {kJ, '2', "S",   TRACK_M},  {kJ, '2', "L", TRACK_L},
    {kJ, '*', "I",    TRACK_I},      {kJ, '*', "Q",   TRACK_Q},  {kJ, '*', "X",   TRACK_ALL},
    {kC, '*', "I",    TRACK_I},      {kC, '*', "Q",   TRACK_Q},  {kC, '*', "X",   TRACK_ALL},
};

struct MsmRow {
  unsigned char number;
  const char* codes[kColumns];  // by column; empty: reserved
};
constexpr MsmRow kMsmRows[] = {  // RTCM 10403, signal masks of the MSM
    //    GPS   GLO   GAL   SBAS  QZSS  BDS   NavIC
    { 2, {"1C", "1C", "1C", "1C", "1C", "2I", ""}},
    { 3, {"1P", "1P", "1A", "",   "",   "2Q", ""}},
    { 4, {"1W", "",   "1B", "",   "",   "2X", ""}},
    { 5, {"",   "",   "1X", "",   "",   "",   ""}},
    { 6, {"",   "",   "1Z", "",   "",   "",   ""}},
    { 8, {"2C", "2C", "6C", "",   "",   "6I", "9A"}},
    { 9, {"2P", "2P", "6A", "",   "6S", "6Q", ""}},
    {10, {"2W", "",   "6B", "",   "6L", "6X", ""}},
    {11, {"",   "",   "6X", "",   "6X", "",   ""}},
    {12, {"",   "",   "6Z", "",   "",   "",   ""}},
    {14, {"",   "",   "7I", "",   "",   "7I", ""}},
    {15, {"2S", "",   "7Q", "",   "2S", "7Q", ""}},
    {16, {"2L", "",   "7X", "",   "2L", "7X", ""}},
    {17, {"2X", "",   "",   "",   "2X", "",   ""}},
    {18, {"",   "",   "8I", "",   "",   "",   ""}},
    {19, {"",   "",   "8Q", "",   "",   "",   ""}},
    {20, {"",   "",   "8X", "",   "",   "",   ""}},
    {22, {"5I", "",   "5I", "5I", "5I", "5D", "5A"}},
    {23, {"5Q", "",   "5Q", "5Q", "5Q", "5P", ""}},
    {24, {"5X", "",   "5X", "5X", "5X", "5X", ""}},
    {25, {"",   "",   "",   "",   "",   "7D", ""}},
    {30, {"1S", "",   "",   "",   "1S", "1D", ""}},
    {31, {"1L", "",   "",   "",   "1L", "1P", ""}},
    {32, {"1X", "",   "",   "",   "1X", "1X", ""}},
};

// By carrier and code indicator. The messages do not distinguish the L2C codes.
constexpr const char* kLegacyCodes[kColumns][2][4] = {
    {{"1C", "1P", "", ""}, {"2C", "2P", "2D", "2W"}},
    {{"1C", "1P", "", ""}, {"2C", "2P", "", ""}},
    {},
    {{"1C", "1P", "", ""}, {"2C", "2P", "2D", "2W"}},  // in messages of GPS
};

// Signal numbers of code biases, from 0. Only the four systems below have corrections that are decoded.
constexpr const char* kSsrCodes[kColumns][kSsrSignals] = {
    {"1C", "1P", "1W", "", "", "2C", "2D", "2S", "2L", "2X", "2P", "2W", "", "", "5I", "5Q", "5X"},
    {"1C", "1P", "2C", "2P"},
    {"1A", "1B", "1C", "1X", "1Z", "5I", "5Q", "5X", "7I", "7Q", "7X", "8I", "8Q", "8X", "6A", "6B", "6C", "6X", "6Z"},
    {},
    {},
    {"2I", "2Q", "2X", "6I", "6Q", "6X", "7I", "7Q", "7X", "1D", "1P", "1X", "5D", "5P", "5X"},
    {},
};
// clang-format on

constexpr eGNSSTrackType TrackTypeOf(Column system, char digit, char attribute) {
  for (const Track& row : kTracks)
    if (row.system == system && (row.digit == '*' || row.digit == digit) &&
        row.attributes.find(attribute) != std::string_view::npos)
      return row.type;
  return TRACK_UNKNOWN;
}

constexpr Signal SignalOf(Column system, const char* code) {
  Signal signal;
  if (code == nullptr || code[0] == '\0') return signal;
  signal.code[0] = code[0];
  signal.code[1] = code[1];
  signal.trackType = static_cast<unsigned char>(TrackTypeOf(system, code[0], code[1]));
  for (const Band& band : kBands) {
    if (band.system != system || band.digit != code[0]) continue;
    signal.frequency = static_cast<unsigned char>(band.frequency);
    signal.kilohertz = band.kilohertz;
    signal.kilohertzPerChannel = band.kilohertzPerChannel;
  }
  return signal;
}

constexpr auto kMsmSignalsOf = [] {
  std::array<std::array<Signal, kMsmSignals + 1>, kColumns> signals{};
  for (const MsmRow& row : kMsmRows)
    for (unsigned int column = 0; column < kColumns; ++column)
      signals[column][row.number] = SignalOf(static_cast<Column>(column), row.codes[column]);
  return signals;
}();

constexpr auto kLegacySignalsOf = [] {
  std::array<std::array<std::array<Signal, 4>, 2>, kColumns> signals{};
  for (unsigned int column = 0; column < kColumns; ++column)
    for (unsigned int carrier = 0; carrier < 2; ++carrier)
      for (unsigned int indicator = 0; indicator < 4; ++indicator)
        signals[column][carrier][indicator] =
            SignalOf(static_cast<Column>(column), kLegacyCodes[column][carrier][indicator]);
  return signals;
}();

consteval bool EverySignalHasACarrier() {
  for (const auto& signals : kMsmSignalsOf)
    for (const Signal& signal : signals)
      if (signal.code[0] != '\0' && signal.kilohertz == 0) return false;
  return true;
}
static_assert(EverySignalHasACarrier());

}  // namespace

const Signal& LegacySignal(eGNSSSystem system, unsigned int carrier, unsigned int indicator) {
  return kLegacySignalsOf[kColumnOf[system]][carrier][indicator];
}

const Signal& MsmSignal(eGNSSSystem system, unsigned int number) { return kMsmSignalsOf[kColumnOf[system]][number]; }

const char* SsrCode(eGNSSSystem system, unsigned int number) {
  const char* const code = kSsrCodes[kColumnOf[system]][number];
  return code != nullptr ? code : "";
}

}  // namespace velagnss::rtcm3
