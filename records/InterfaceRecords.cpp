#include "records/InterfaceRecords.h"

#include <cstddef>
#include <cstring>

#include "geo/GnssEnums.h"
#include "geo/NotAvailable.h"

namespace {

// Hosts read these records through bindings that know the offsets; a field moved is an interface broken.
static_assert(sizeof(S_IFKeplerEphRec) == 280 && offsetof(S_IFKeplerEphRec, TimeSystem) == 12);
static_assert(offsetof(S_IFKeplerEphRec, TxWeek) == 14 && offsetof(S_IFKeplerEphRec, Toc) == 48);
static_assert(offsetof(S_IFKeplerEphRec, M0) == 80 && offsetof(S_IFKeplerEphRec, Cis) == 216);
static_assert(offsetof(S_IFKeplerEphRec, Iode2) == 224 && offsetof(S_IFKeplerEphRec, FitInterval) == 272);
static_assert(sizeof(S_IFPvaEphRec) == 184 && offsetof(S_IFPvaEphRec, RefTime) == 32);
static_assert(offsetof(S_IFPvaEphRec, PosX) == 56 && offsetof(S_IFPvaEphRec, DeltaTauN) == 128);
static_assert(offsetof(S_IFPvaEphRec, TauGps) == 152 && offsetof(S_IFPvaEphRec, Ln) == 179);
static_assert(sizeof(S_IFGnssObsData) == 48 && offsetof(S_IFGnssObsData, LockCount) == 40);

// The doubles whose empty value is "invalid". Times and weeks are not among them: they are 0 when empty.
// clang-format off
constexpr double S_IFKeplerEphRec::*kInvalidKepler[] = {
    &S_IFKeplerEphRec::Af0,    &S_IFKeplerEphRec::Af1,    &S_IFKeplerEphRec::Af2,    &S_IFKeplerEphRec::M0,
    &S_IFKeplerEphRec::DeltaN, &S_IFKeplerEphRec::Spare0, &S_IFKeplerEphRec::Ecc,    &S_IFKeplerEphRec::SqrtA,
    &S_IFKeplerEphRec::Spare1, &S_IFKeplerEphRec::Spare2, &S_IFKeplerEphRec::Omega0, &S_IFKeplerEphRec::I0,
    &S_IFKeplerEphRec::Omega,  &S_IFKeplerEphRec::OmegaDot, &S_IFKeplerEphRec::IDot, &S_IFKeplerEphRec::Cuc,
    &S_IFKeplerEphRec::Cus,    &S_IFKeplerEphRec::Crc,    &S_IFKeplerEphRec::Crs,    &S_IFKeplerEphRec::Cic,
    &S_IFKeplerEphRec::Cis,    &S_IFKeplerEphRec::Ura,    &S_IFKeplerEphRec::Tgd,    &S_IFKeplerEphRec::Spare4,
    &S_IFKeplerEphRec::FitInterval,
};
constexpr double S_IFPvaEphRec::*kInvalidPva[] = {
    &S_IFPvaEphRec::TauN, &S_IFPvaEphRec::GammaN,
    &S_IFPvaEphRec::PosX, &S_IFPvaEphRec::PosY, &S_IFPvaEphRec::PosZ,
    &S_IFPvaEphRec::VelX, &S_IFPvaEphRec::VelY, &S_IFPvaEphRec::VelZ,
    &S_IFPvaEphRec::AccX, &S_IFPvaEphRec::AccY, &S_IFPvaEphRec::AccZ,
    &S_IFPvaEphRec::DeltaTauN, &S_IFPvaEphRec::TauGps, &S_IFPvaEphRec::TauC,
};
// clang-format on

// The empty state that both ephemeris records share. Padding is zeroed too, because hosts compare records byte by byte.
template <class Record, std::size_t N>
void SetEmpty(Record& record, double Record::*const (&invalid)[N]) {
  std::memset(&record, 0, sizeof record);
  record.System = ALGO::GNSS_UNKNOWN;
  record.SvId = NA_U8;
  record.FreqChannel = NA_CHANNEL;
  record.Spare = NA_U8;
  record.Health = NA_U32;
  record.TimeSystem = ALGO::GNSS_UNKNOWN;
  for (const auto member : invalid) record.*member = NA_DOUBLE;
}

}  // namespace

void SetEmpty_IFEphRec(S_IFKeplerEphRec& record) {
  SetEmpty(record, kInvalidKepler);
  record.Iode2 = NA_U32;
  record.SvHealth = NA_U32;
}

void SetEmpty_IFEphRec(S_IFPvaEphRec& record) {
  SetEmpty(record, kInvalidPva);
  record.Bn = NA_U32;
  record.En = NA_U16;
  record.Ft = NA_U16;
  record.Tb = NA_U32;
}

void SetEmpty_IFGnssObsData(S_IFGnssObsData& record, unsigned char clearAll) {
  if (clearAll != 0) std::memset(&record, 0, sizeof record);
  record.Frequency = ALGO::FREQ_UNKNOWN;
  record.TrackType = ALGO::TRACK_UNKNOWN;
  record.Flags = NA_U32;
  record.Pseudorange = NA_DOUBLE;
  record.CarrierPhase = NA_DOUBLE;
  record.Measurement3 = NA_DOUBLE;
  record.SignalStrength = NA_DOUBLE;
  record.LockCount = NA_U32;
}
