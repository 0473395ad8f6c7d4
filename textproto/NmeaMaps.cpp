// Tables of NMEA 0183: sentence ids, one-character fields, systems and signals.
//
// The map of systems and signals is exported data: its irregular rows are part of the interface and stay as they are.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/SentenceIds.h"

namespace {

using namespace ALGO;

// Letters by value; the NUL after the last of them is the empty field. A value beyond that is not valid.
// Mode indicator of NMEA 0183: no fix, autonomous, differential, precise, RTK, float RTK, estimated, manual, simulator.
constexpr char kModeLetters[] = "NADPRFEMSN";
// Navigational status of NMEA 0183: safe, caution, unsafe, not valid.
constexpr char kNavLetters[] = "SCUVV";
// Status of GLL and RMC: valid or not. The letters between are what receivers send beyond the standard.
constexpr char kGllLetters[] = "ADVV";
constexpr char kRmcLetters[] = "ADFPRVV";

template <std::size_t N>
constexpr char LetterOf(const char (&letters)[N], unsigned int value, char notValid) {
  return value < N ? letters[value] : notValid;
}

// First value that is written with the letter, NUL included.
template <class Enum, std::size_t N>
constexpr Enum ValueOf(const char (&letters)[N], char letter, Enum notValid) {
  const char* const found = std::find(letters, letters + N, letter);
  return found == letters + N ? notValid : static_cast<Enum>(found - letters);
}

static_assert(ValueOf(kModeLetters, 'N', eNmeaModeEmpty) == eNmeaModeNotValid);
static_assert(ValueOf(kModeLetters, '\0', eNmeaModeNotValid) == eNmeaModeEmpty);
static_assert(ValueOf(kNavLetters, '\0', eNmeaNavNotValid) == eNmeaNavEmpty);
static_assert(ValueOf(kGllLetters, '\0', eNmeaGllNotValid) == eNmeaGllEmpty);
static_assert(ValueOf(kRmcLetters, '\0', eNmeaRmcNotValid) == eNmeaRmcEmpty);

// Fix type by mode indicator.
constexpr unsigned int kNoFixType = 15;
constexpr unsigned int kFixTypes[] = {kNoFixType, 0, 3, 3, 5, 6, kNoFixType, 8};

bool IsOfSystem(const S_NmeaSS2Algo& row, unsigned char nmeaSystem) { return row.nmeaSystem == nmeaSystem; }
bool IsOfSystem(const S_NmeaSS2Algo& row, eGNSSSystem system) { return row.system == system; }

// First row that `isWanted` accepts in the blocks of a system; null when there is none. The first row of a block gives
// the system of all its rows. BeiDou and QZSS share an id, so that the search goes on in the next block.
template <class System, class Predicate>
const S_NmeaSS2Algo* FindRow(System system, Predicate isWanted) {
  for (const auto& block : C_NMEA_EncodeDecode::mpps_NmeaSS2AlgoMap) {
    if (!IsOfSystem(block[0], system)) continue;
    const S_NmeaSS2Algo* const row = std::find_if(std::begin(block), std::end(block), isWanted);
    if (row != std::end(block)) return row;
  }
  return nullptr;
}

bool IsAnyRow(const S_NmeaSS2Algo&) { return true; }

}  // namespace

// clang-format off
const S_NmeaSS2Algo C_NMEA_EncodeDecode::mpps_NmeaSS2AlgoMap[6][16] = {
    {{1, 0, GNSS_GPS, FREQ_ALL, TRACK_ALL},
     {1, 1, GNSS_GPS, FREQ_L1,  TRACK_CA},
     {1, 2, GNSS_GPS, FREQ_L1,  TRACK_PY},
     {1, 3, GNSS_GPS, FREQ_L1,  TRACK_M},
     {1, 4, GNSS_GPS, FREQ_L2,  TRACK_PY},
     {1, 5, GNSS_GPS, FREQ_L2,  TRACK_M},
     {1, 6, GNSS_GPS, FREQ_L2,  TRACK_L},
     {1, 7, GNSS_GPS, FREQ_L5,  TRACK_I},
     {1, 8, GNSS_GPS, FREQ_L5,  TRACK_Q}},

    {{2, 0, GNSS_GLONASS, FREQ_ALL, TRACK_ALL},
     {2, 1, GNSS_GLONASS, FREQ_G1,  TRACK_CA},
     {2, 2, GNSS_GLONASS, FREQ_G1,  TRACK_P},
     {2, 3, GNSS_GLONASS, FREQ_G2,  TRACK_CA},
     {2, 4, GNSS_GLONASS, FREQ_G2,  TRACK_P}},

    {{3, 0, GNSS_GALILEO, FREQ_ALL, TRACK_ALL},
     {3, 1, GNSS_GALILEO, FREQ_L5,  TRACK_E5X},
     {3, 2, GNSS_GALILEO, FREQ_E5B, TRACK_E5X},
     {3, 3, GNSS_GALILEO, FREQ_E5,  TRACK_ALTBOC},
     {3, 4, GNSS_GALILEO, FREQ_E6,  TRACK_A},
     {3, 5, GNSS_GALILEO, FREQ_E6,  TRACK_BC},
     {3, 6, GNSS_GALILEO, FREQ_L1,  TRACK_A},
     {3, 7, GNSS_GALILEO, FREQ_L5,  TRACK_BC}},

    {},  // no system

    {{5, 0, GNSS_BEIDOU, FREQ_ALL, TRACK_ALL},
     {5, 1, GNSS_BEIDOU, FREQ_B1,  TRACK_I},
     {5, 2, GNSS_BEIDOU, FREQ_B1,  TRACK_Q},
     {5, 3, GNSS_BEIDOU, FREQ_E5B, TRACK_I},
     {5, 4, GNSS_BEIDOU, FREQ_E5B, TRACK_Q},
     {6, 5, GNSS_BEIDOU, FREQ_B3,  TRACK_I},   // serves system 5: only the block's first row decides
     {1, 6, GNSS_BEIDOU, FREQ_B3,  TRACK_Q}},  // the same

    {{5, 0, GNSS_QZSS, FREQ_ALL, TRACK_ALL},
     {5, 1, GNSS_QZSS, FREQ_L1,  TRACK_CA},
     {5, 2, GNSS_QZSS, FREQ_L1,  TRACK_L1C},
     {5, 3, GNSS_QZSS, FREQ_L2,  TRACK_L1C},
     {5, 4, GNSS_QZSS, FREQ_L5,  TRACK_Q}},
};
// clang-format on

C_RawDataMessage::eNMEA0183Messages C_NMEA_EncodeDecode::GetNmeaPreamble(const char* sentence, unsigned char length,
                                                                         char* talker) {
  // "$GPGGA": two characters of talker, three of formatter. The talker is given for unknown formatters, too.
  if (sentence == nullptr || length < 6 || sentence[0] != '$') return C_RawDataMessage::eNmeaUnknown;
  if (talker != nullptr) std::memcpy(talker, sentence + 1, 2);
  return velagnss::textproto::SentenceIds::Find(sentence + 3);
}

char C_NMEA_EncodeDecode::GetModIndicatorChar(eNmeaModeIndicator mode) { return LetterOf(kModeLetters, mode, 'N'); }
char C_NMEA_EncodeDecode::GetNavStatusChar(eNmeaNavStatus status) { return LetterOf(kNavLetters, status, 'V'); }
char C_NMEA_EncodeDecode::GetSysStatusChar_GLL(eNmeaGllStatus status) { return LetterOf(kGllLetters, status, 'V'); }
char C_NMEA_EncodeDecode::GetSysStatusChar_RMC(eNmeaRmcStatus status) { return LetterOf(kRmcLetters, status, 'V'); }

eNmeaModeIndicator C_NMEA_EncodeDecode::GetModIndicatorEnum(char letter) {
  return ValueOf(kModeLetters, letter, eNmeaModeNotValid);
}
eNmeaNavStatus C_NMEA_EncodeDecode::GetNavStatusEnum(char letter) {
  return ValueOf(kNavLetters, letter, eNmeaNavNotValid);
}
eNmeaGllStatus C_NMEA_EncodeDecode::GetSysStatusEnum_GLL(char letter) {
  return ValueOf(kGllLetters, letter, eNmeaGllNotValid);
}
eNmeaRmcStatus C_NMEA_EncodeDecode::GetSysStatusEnum_RMC(char letter) {
  return ValueOf(kRmcLetters, letter, eNmeaRmcNotValid);
}

unsigned int C_NMEA_EncodeDecode::MapNmeaFixIndicatorToHalcyon(eNmeaModeIndicator mode) {
  return mode < std::size(kFixTypes) ? kFixTypes[mode] : kNoFixType;
}

bool C_NMEA_EncodeDecode::MapNmeaSystemId2Algo(unsigned char nmeaSystem, eGNSSSystem& system) {
  const S_NmeaSS2Algo empty;
  const S_NmeaSS2Algo* const row = nmeaSystem == empty.nmeaSystem ? nullptr : FindRow(nmeaSystem, IsAnyRow);
  system = row == nullptr ? empty.system : row->system;
  return row != nullptr;
}

bool C_NMEA_EncodeDecode::MapAlgoSystemId2Nmea(const eGNSSSystem& system, unsigned char& nmeaSystem) {
  const S_NmeaSS2Algo* const row = FindRow(system, IsAnyRow);  // the block without a system answers for the unknown one
  nmeaSystem = row == nullptr ? S_NmeaSS2Algo().nmeaSystem : row->nmeaSystem;
  return row != nullptr;
}

bool C_NMEA_EncodeDecode::MapNmeaSignalId2Algo(unsigned char nmeaSystem, unsigned char nmeaSignal,
                                               eGNSSFrequency& frequency, eGNSSTrackType& trackType) {
  const S_NmeaSS2Algo empty;
  // Unused places of the map carry 255 for both ids. Asking for 255 must not find one of them.
  const bool isInRange = nmeaSystem < 7 && nmeaSignal < 16;
  const auto isWanted = [nmeaSignal](const S_NmeaSS2Algo& row) { return row.nmeaSignal == nmeaSignal; };
  const S_NmeaSS2Algo* const row = isInRange ? FindRow(nmeaSystem, isWanted) : nullptr;
  frequency = row == nullptr ? empty.frequency : row->frequency;
  trackType = row == nullptr ? empty.trackType : row->trackType;
  return row != nullptr;
}

bool C_NMEA_EncodeDecode::MapAlgoSigInfo2Nmea(eGNSSSystem system, eGNSSFrequency frequency, eGNSSTrackType trackType,
                                              unsigned char& nmeaSignal) {
  // The first row of a block means all signals and is not one of them; unused places have values beyond these.
  const bool isInRange = system <= GNSS_QZSS && frequency < FREQ_ALL && trackType < TRACK_ALL;
  const auto isWanted = [frequency, trackType](const S_NmeaSS2Algo& row) {
    return row.frequency == frequency && row.trackType == trackType;
  };
  const S_NmeaSS2Algo* const row = isInRange ? FindRow(system, isWanted) : nullptr;
  nmeaSignal = row == nullptr ? S_NmeaSS2Algo().nmeaSignal : row->nmeaSignal;
  return row != nullptr;
}
