#include "apps/velagnss/epoch/NmeaSatellites.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "rtcm3/Rtcm3Records.h"

namespace Host {
namespace {

using namespace ALGO;
using velagnss::kNavic;

struct S_TalkerRow {
  std::string_view talker;
  eGNSSSystem system;
};
constexpr S_TalkerRow kTalkers[] = {
    {"GP", GNSS_GPS},    {"GL", GNSS_GLONASS}, {"GA", GNSS_GALILEO}, {"GB", GNSS_BEIDOU},
    {"BD", GNSS_BEIDOU}, {"GQ", GNSS_QZSS},    {"QZ", GNSS_QZSS},    {"GI", kNavic},
};

// By system id. The map of C_NMEA_EncodeDecode is that of receivers before NMEA 0183 4.11, with BeiDou and QZSS as 5.
constexpr eGNSSSystem kSystems[] = {GNSS_UNKNOWN, GNSS_GPS, GNSS_GLONASS, GNSS_GALILEO, GNSS_BEIDOU, GNSS_QZSS, kNavic};

// What runs of numbers mean in sentences of a system; a number in no run is taken as it is.
struct S_NumberRow {
  eGNSSSystem sentence;
  unsigned char first;
  unsigned char last;
  eGNSSSystem system;
  int added;
};
// clang-format off
constexpr S_NumberRow kNumbers[] = {
    {GNSS_GPS,      33,  64, GNSS_SBAS,     87},
    {GNSS_GPS,      65,  99, GNSS_GLONASS, -64},
    {GNSS_GPS,     120, 158, GNSS_SBAS,      0},
    {GNSS_GPS,     193, 202, GNSS_QZSS,      0},
    {GNSS_GLONASS,  33,  64, GNSS_SBAS,     87},
    {GNSS_GLONASS,  65,  99, GNSS_GLONASS, -64},
    {GNSS_BEIDOU,  201, 254, GNSS_BEIDOU, -200},  // before 4.11
    {GNSS_QZSS,      1,  10, GNSS_QZSS,    192},
};
// clang-format on

// By signal id.
constexpr std::string_view kGps[] = {"", "L1 C/A", "L1 P(Y)", "L1 M", "L2 P(Y)", "L2C-M", "L2C-L", "L5-I", "L5-Q"};
constexpr std::string_view kGlonass[] = {"", "G1 C/A", "G1 P", "G2 C/A", "G2 P"};
constexpr std::string_view kGalileo[] = {"", "E5a", "E5b", "E5a+b", "E6-A", "E6-BC", "L1-A", "L1-BC"};
constexpr std::string_view kBeidou[] = {"",      "B1I", "B1Q", "B1C", "B1A", "B2a", "B2b",
                                        "B2a+b", "B3I", "B3Q", "B3A", "B2I", "B2Q"};
constexpr std::string_view kQzss[] = {"", "L1 C/A", "L1C-D", "L1C-P", "LIS", "L2C-M", "L2C-L", "L5-I", "L5-Q"};
constexpr std::string_view kOfNavic[] = {"", "L5-SPS", "S-SPS", "L5-RS", "S-RS", "L1-SPS"};

// Signals by the bands and attributes of RINEX 3.05, tables 4 to 10.
struct S_CodeRow {
  eGNSSSystem system;
  char band;
  std::string_view attributes;
  unsigned char id;
  unsigned char otherId = NA_U8;  // of the second component
};
// clang-format off
constexpr S_CodeRow kCodes[] = {
    {GNSS_GPS,     '1', "C",    1},     {GNSS_GPS,     '1', "PWY",  2},     {GNSS_GPS,     '1', "M",    3},
    {GNSS_GPS,     '2', "PWYD", 4},     {GNSS_GPS,     '2', "S",    5},     {GNSS_GPS,     '2', "L",    6},
    {GNSS_GPS,     '2', "X",    5, 6},  {GNSS_GPS,     '5', "I",    7},     {GNSS_GPS,     '5', "Q",    8},
    {GNSS_GPS,     '5', "X",    7, 8},
    {GNSS_GLONASS, '1', "C",    1},     {GNSS_GLONASS, '1', "P",    2},     {GNSS_GLONASS, '2', "C",    3},
    {GNSS_GLONASS, '2', "P",    4},
    {GNSS_GALILEO, '5', "IQX",  1},     {GNSS_GALILEO, '7', "IQX",  2},     {GNSS_GALILEO, '8', "IQX",  3},
    {GNSS_GALILEO, '6', "A",    4},     {GNSS_GALILEO, '6', "BCX",  5},     {GNSS_GALILEO, '1', "A",    6},
    {GNSS_GALILEO, '1', "BCX",  7},     {GNSS_GALILEO, '6', "Z",    4, 5},  {GNSS_GALILEO, '1', "Z",    6, 7},
    {GNSS_BEIDOU,  '2', "I",    1},     {GNSS_BEIDOU,  '2', "Q",    2},     {GNSS_BEIDOU,  '2', "X",    1, 2},
    {GNSS_BEIDOU,  '1', "DPX",  3},     {GNSS_BEIDOU,  '5', "DPX",  5},     {GNSS_BEIDOU,  '7', "D",    6},
    {GNSS_BEIDOU,  '6', "I",    8},     {GNSS_BEIDOU,  '6', "Q",    9},     {GNSS_BEIDOU,  '6', "X",    8, 9},
    {GNSS_BEIDOU,  '7', "I",   11},     {GNSS_BEIDOU,  '7', "Q",   12},     {GNSS_BEIDOU,  '7', "X",   11, 12},
    {GNSS_QZSS,    '1', "C",    1},     {GNSS_QZSS,    '1', "S",    2},     {GNSS_QZSS,    '1', "L",    3},
    {GNSS_QZSS,    '1', "X",    2, 3},  {GNSS_QZSS,    '2', "S",    5},     {GNSS_QZSS,    '2', "L",    6},
    {GNSS_QZSS,    '2', "X",    5, 6},  {GNSS_QZSS,    '5', "I",    7},     {GNSS_QZSS,    '5', "Q",    8},
    {GNSS_QZSS,    '5', "X",    7, 8},
    {GNSS_SBAS,    '1', "C",    1},     {GNSS_SBAS,    '5', "I",    7},     {GNSS_SBAS,    '5', "Q",    8},
    {GNSS_SBAS,    '5', "X",    7, 8},
    {kNavic,       '5', "A",    1},     {kNavic,       '9', "A",    2},
};
// clang-format on

// Null for a signal without an id.
const S_CodeRow* RowOf(eGNSSSystem system, std::string_view code) {
  const auto isIt = [&](const S_CodeRow& row) {
    return code.size() == 2 && row.system == system && row.band == code[0] &&
           row.attributes.find(code[1]) != std::string_view::npos;
  };
  const auto* const row = std::find_if(std::begin(kCodes), std::end(kCodes), isIt);
  return row == std::end(kCodes) ? nullptr : row;
}

std::span<const std::string_view> SignalsOf(eGNSSSystem system) {
  switch (system) {
    case GNSS_GPS:
    case GNSS_SBAS:  // has no id of its own and is sent with GPS
      return kGps;
    case GNSS_GLONASS:
      return kGlonass;
    case GNSS_GALILEO:
      return kGalileo;
    case GNSS_BEIDOU:
      return kBeidou;
    case GNSS_QZSS:
      return kQzss;
    case kNavic:
      return kOfNavic;
    default:
      return {};
  }
}

}  // namespace

eGNSSSystem SystemOfSentence(std::string_view talker, unsigned char systemId) {
  if (systemId > 0 && systemId < std::size(kSystems)) return kSystems[systemId];
  const auto* const row = std::find_if(std::begin(kTalkers), std::end(kTalkers),
                                       [talker](const S_TalkerRow& candidate) { return candidate.talker == talker; });
  return row == std::end(kTalkers) ? GNSS_UNKNOWN : row->system;
}

S_SatelliteName SatelliteOf(eGNSSSystem system, unsigned char id) {
  if (system == GNSS_UNKNOWN) system = GNSS_GPS;
  for (const S_NumberRow& row : kNumbers)
    if (row.sentence == system && id >= row.first && id <= row.last)
      return {row.system, static_cast<unsigned int>(id + row.added)};
  return {system, id};
}

unsigned char SignalIdOf(eGNSSSystem system, std::string_view code) {
  const S_CodeRow* const row = RowOf(system, code);
  return row != nullptr && IsNotAvailable(row->otherId) ? row->id : NA_U8;
}

bool CanBeSignal(eGNSSSystem system, std::string_view code, unsigned char signalId) {
  const S_CodeRow* const row = RowOf(system, code);
  return row != nullptr && !IsNotAvailable(signalId) && (row->id == signalId || row->otherId == signalId);
}

std::string_view NameOfSignal(eGNSSSystem system, unsigned char signalId) {
  const std::span<const std::string_view> signals = SignalsOf(system);
  return signalId < signals.size() ? signals[signalId] : std::string_view();
}

}  // namespace Host
