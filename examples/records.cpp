// Records as the library delivers them: a missing value holds a marker, which `IsNotAvailable` detects.
#include <cstdio>

#include "binproto/SatelliteList.h"
#include "binproto/VelaBin_Decode.h"
#include "geo/NotAvailable.h"
#include "records/InterfaceRecords.h"

int main() {
  S_IFPvaEphRec ephemeris;
  SetEmpty_IFEphRec(ephemeris);  // as every decoder does before it fills a record
  std::printf("channel %s, position %s\n", IsNotAvailable(ephemeris.FreqChannel) ? "unknown" : "known",
              IsNotAvailable(ephemeris.PosX) ? "unknown" : "known");

  S_IFGnssObsData observation;
  SetEmpty_IFGnssObsData(observation, 1);
  observation.Pseudorange = 21345678.9;  // m
  std::printf("pseudorange %.1f m, carrier phase %s\n", observation.Pseudorange,
              IsNotAvailable(observation.CarrierPhase) ? "unknown" : "known");

  // What a decoder knows besides the frames: a list, which must outlive it, and times and channels, which are set or
  // learned from frames.
  const C_SatelliteList satellites;
  C_VelaBin_Decode decoder(&satellites);
  decoder.SetGlonassSvChannelId(3, 5);
  decoder.SeedTime(2314, 604638.0, ALGO::GNSS_GPS);
  unsigned short week = 266;  // as broadcast, modulo 1024
  decoder.ResolveWeek(ALGO::GNSS_GPS, week);
  std::printf("slot 3 sends on channel %d, slot 4: %s; week %u\n", decoder.GetGlonassSvChannelId(3),
              IsNotAvailable(decoder.GetGlonassSvChannelId(4)) ? "unknown" : "known", unsigned{week});
}
