// Frames to begin from: a fuzzer would take long to find them.
#ifndef VELAGNSS_FUZZ_SAMPLES_H
#define VELAGNSS_FUZZ_SAMPLES_H

#include <array>
#include <string>

namespace Fuzz {

// Sentences without "$" and checksum.
inline const std::array<std::string, 11> kNmeaSamples = {
    "GPGGA,123456.78,0130.0,N,01130.0,E,4,08,0.9,545.4,M,46.9,M,2.5,0031",
    "GNGNS,014035.00,4330.0,S,17230.0,E,RRN,13,0.9,25.63,11.24,1.5,7,U",
    "GPZDA,160012.71,11,03,2004,-1,30",
    "GPGLL,3730.0,N,12130.0,W,161229.48,A,D",
    "GPGLL,3730.0,N,12130.0,W",
    "GLGSV,3,1,11,03,04,111,00,14,15,270,,,,,,13,06,292,40,1",
    "GPGSV,3,3,09,03,04,111,00",
    "GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,1",
    "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E",
    "GPRMC,083559.00,A,4717.11437,N,00833.91522,E,0.004,77.52,091202,,,A,V",
    "GPVTG,77.52,T,,M,0.004,N,0.008,K,A",
};

// Of other sentences; the recognizer does not know all of them.
inline const std::array<std::string, 12> kMoreNmeaSamples = {
    "GNGST,172814.0,0.006,0.023,0.020,273.6,0.023,0.020,0.031",
    "GNGBS,235458.00,1.4,1.3,3.1,03,,-21.4,3.8,1,B",
    "GNGRS,104148.00,1,2.6,2.2,-1.6,,,,,,,,,0.5,1,8",
    "GPHDT,274.07,T",
    "GPDTM,999,x,0.08,S,0.07,W,-47.7,P90",
    "GNTXT,01,02,07,a, b,,^2C,",
    "SDDBT,1.8,f,0.5,M,0.3,F",
    "WIMWV,297.6,R,5.6,N,A",
    "GPRMB,A,0.66,L,003,004,4915.00,N,12330.0,W,001.3,052.5,000.5,V",
    "GPAPB,A,A,0.10,R,N,V,V,011,M,DEST,012,T,013,M,A",
    "GPBWC,195811,5307.5,N,00521.0,E,213.9,T,213.2,M,4.25,N,HOME,A",
    "PGRME,15.0,M,45.0,M,25.0,M",
};

// The same of the maker's own; the last one has no checksum but a line end.
inline const std::array<std::string, 12> kProprietarySamples = {
    "PKVN,RAW,1,12,\x80\x81\x82",
    "PKVN,ATTSTAT,1,text,1.5,2.5,N,3.5,4.5,P,2,L1,(1,2,3),G1,(4),E5a,(5)",
    "PKVN,GBS,123519.00,1.5,2.5,3.5,7,0.1,0.2,0.3,1,2,3",
    "PKVN,HPR,120000.00,271.50,-1.25,0.75,G",
    "PKVN,BLV,120000.00,010324,1.5,2.5,3.5,4,5,6,7.5",
    "PKVN,FVI,120000.00,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,text,1.5,2.5,1,2,3,4,5.5,6.5",
    "PKVN,RTKSTAT,1.5,2.5,1F,A0,7,8,9,L1,(1,2),L2,(3,4),G1,(5,6),B1,(7),E6,8,9,10",
    "PKVN,VCT,2,120000.00,1.5,2.5,3.5,4.5,5.5,6.5,7.5,8.5",
    "PKVN,INTLT,1.5",
    "PKVN,TEMPERATURE,-12.25",
    "PKVN,ARN_ROUTER,1,2,3,4,5,6,7,8,9,10,11,12",
    "RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF",
};

// Binary messages and the bytes of their data.
struct S_Body {
  unsigned short number;
  unsigned short bytes;
};
inline constexpr S_Body kBodies[] = {{1, 52},   {2, 16},   {3, 116},  {5, 72},   {16, 312},  {25, 128}, {34, 32},
                                     {35, 128}, {36, 336}, {44, 56},  {45, 128}, {65, 68},   {66, 352}, {76, 448},
                                     {93, 56},  {94, 96},  {95, 128}, {122, 80}, {180, 232}, {209, 332}};

}  // namespace Fuzz

#endif  // VELAGNSS_FUZZ_SAMPLES_H
