// Cost of one NMEA 0183 sentence, decoded with its checksum or encoded, and of one number of it.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "textproto/CheckedSentence.h"
#include "textproto/FieldValues.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NmeaSentenceCodec.h"
#include "textproto/NumberText.h"

namespace {

namespace NumberText = velagnss::textproto::NumberText;
using t_Type = C_RawDataMessage;

// As MakeDecodable leaves them.
constexpr const char* kGga = "$GPGGA,123519.00,4807.03812345,N,01131.00098765,E,4,08,0.9,545.412,M,46.912,M,1.0,0031";
constexpr const char* kGns = "$GNGNS,014035.00,4332.69262,S,17235.48549,E,RRNN,13,0.9,25.63,11.24,,,V";
constexpr const char* kZda = "$GPZDA,160012.71,11,03,2004,-1,00";
constexpr const char* kGll = "$GPGLL,3723.2475,N,12158.3416,W,161229.48,A,A";
constexpr const char* kGsv = "$GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00,1";
constexpr const char* kGsa = "$GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2";
constexpr const char* kRmc = "$GPRMC,225446.33,A,4916.45123,N,12311.12456,W,000.5,054.7,191124,020.3,E,A,V";
constexpr const char* kVtg = "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,A";

std::string WithChecksum(const char* text) {
  const C_NMEA_EncodeDecode nmea;
  char sentence[1024];
  unsigned short length = 0;
  std::strcpy(sentence, text);
  nmea.MsgAdd_ChecksumCrLf(sentence, length);
  return {sentence, length};
}

void Decode(benchmark::State& state, const char* text, t_Type::eNMEA0183Messages type) {
  std::string sentence = WithChecksum(text);
  C_NMEA_EncodeDecode nmea;
  U_EcdDcdData data;
  for (auto _ : state) {
    const unsigned int result = nmea.Decode(reinterpret_cast<unsigned char*>(sentence.data()),
                                            static_cast<unsigned short>(sentence.size()), type, data);
    if (result != 0) return state.SkipWithError("not decoded");
    benchmark::DoNotOptimize(data);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sentence.size()));
}
BENCHMARK_CAPTURE(Decode, GGA, kGga, t_Type::eNmeaGGA);
BENCHMARK_CAPTURE(Decode, GNS, kGns, t_Type::eNmeaGNS);
BENCHMARK_CAPTURE(Decode, ZDA, kZda, t_Type::eNmeaZDA);
BENCHMARK_CAPTURE(Decode, GLL, kGll, t_Type::eNmeaGLL);
BENCHMARK_CAPTURE(Decode, GSV, kGsv, t_Type::eNmeaGSV);
BENCHMARK_CAPTURE(Decode, GSA, kGsa, t_Type::eNmeaGSA);
BENCHMARK_CAPTURE(Decode, RMC, kRmc, t_Type::eNmeaRMC);
BENCHMARK_CAPTURE(Decode, VTG, kVtg, t_Type::eNmeaVTG);

// Any sentence, by its address.
void DecodeAny(benchmark::State& state, const char* text) {
  const std::string sentence = WithChecksum(text);
  velagnss::NmeaRecord record;
  for (auto _ : state) {
    if (velagnss::DecodeSentence(sentence, record) != 0) return state.SkipWithError("not decoded");
    benchmark::DoNotOptimize(record);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sentence.size()));
}
BENCHMARK_CAPTURE(DecodeAny, HDT, "$GPHDT,274.07,T");
BENCHMARK_CAPTURE(DecodeAny, TXT, "$GPTXT,01,01,01,ANTENNA OK");

void MakeDecodable(benchmark::State& state, const char* text) {
  const std::string sentence = WithChecksum(text);
  unsigned char out[1024];
  unsigned short length = 0;
  for (auto _ : state) {
    C_NMEA_EncodeDecode::MakeDecodable(reinterpret_cast<const unsigned char*>(sentence.data()),
                                       static_cast<unsigned short>(sentence.size()), out, length);
    benchmark::DoNotOptimize(out);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sentence.size()));
}
BENCHMARK_CAPTURE(MakeDecodable, RMC, kRmc);
BENCHMARK_CAPTURE(MakeDecodable, GSV, kGsv);

// From the recognizer to the record, sentences whole and older: by a host, and by the library's own layer above.
constexpr const char* kOldRmc = "$GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E";
constexpr const char* kShortGsv = "$GPGSV,3,3,09,29,36,029,42,1";

template <class Way>
void Measure(benchmark::State& state, const char* text, Way decode) {
  const std::string sentence = WithChecksum(text);
  U_EcdDcdData data;
  for (auto _ : state) {
    const unsigned int result = decode(reinterpret_cast<const unsigned char*>(sentence.data()),
                                       static_cast<unsigned short>(sentence.size()), data);
    if (result != 0) return state.SkipWithError("not decoded");
    benchmark::DoNotOptimize(data);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sentence.size()));
}

void AnyByHost(benchmark::State& state, const char* text, t_Type::eNMEA0183Messages type) {
  C_NMEA_EncodeDecode nmea;
  Measure(state, text, [&nmea, type](const unsigned char* sentence, unsigned short length, U_EcdDcdData& data) {
    unsigned char whole[1024];
    const unsigned int result = C_NMEA_EncodeDecode::MakeDecodable(sentence, length, whole, length);
    return result == 0 ? nmea.Decode(whole, length, type, data) : result;
  });
}

void AnyByLibrary(benchmark::State& state, const char* text, t_Type::eNMEA0183Messages type) {
  Measure(state, text, [type](const unsigned char* sentence, unsigned short length, U_EcdDcdData& data) {
    char variationLetter = '\0';
    const unsigned int result =
        velagnss::textproto::DecodeCheckedSentence(sentence, length, type, data, variationLetter);
    benchmark::DoNotOptimize(variationLetter);
    return result;
  });
}

#define BOTH_WAYS(name, text, type)               \
  BENCHMARK_CAPTURE(AnyByHost, name, text, type); \
  BENCHMARK_CAPTURE(AnyByLibrary, name, text, type)
BOTH_WAYS(GGA, kGga, t_Type::eNmeaGGA);
BOTH_WAYS(RMC, kRmc, t_Type::eNmeaRMC);
BOTH_WAYS(OldRMC, kOldRmc, t_Type::eNmeaRMC);
BOTH_WAYS(GSV, kGsv, t_Type::eNmeaGSV);
BOTH_WAYS(ShortGSV, kShortGsv, t_Type::eNmeaGSV);

void Encode(benchmark::State& state, const char* text, t_Type::eNMEA0183Messages type) {
  std::string sentence = WithChecksum(text);
  C_NMEA_EncodeDecode nmea;
  U_EcdDcdData data;
  nmea.Decode(reinterpret_cast<unsigned char*>(sentence.data()), static_cast<unsigned short>(sentence.size()), type,
              data);
  unsigned char out[1024];
  unsigned short length = 0;
  for (auto _ : state) {
    if (nmea.Encode(&data, type, out, length) != 0) return state.SkipWithError("not encoded");
    benchmark::DoNotOptimize(out);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(Encode, GGA, kGga, t_Type::eNmeaGGA);
BENCHMARK_CAPTURE(Encode, GSV, kGsv, t_Type::eNmeaGSV);
BENCHMARK_CAPTURE(Encode, RMC, kRmc, t_Type::eNmeaRMC);

void ReadNumber(benchmark::State& state, const char* text) {
  const std::string_view number(text);
  double value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(velagnss::textproto::StrToDBL(number, value, 1));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK_CAPTURE(ReadNumber, Short, "46.912");
BENCHMARK_CAPTURE(ReadNumber, Minutes, "07.03812345");
BENCHMARK_CAPTURE(ReadNumber, SeventeenDigits, "3.1415926535897931");

void WriteNumber(benchmark::State& state, double value, unsigned int decimals) {
  char out[NumberText::kMaxFixedLength + NumberText::kMaxDecimals];
  for (auto _ : state) {
    benchmark::DoNotOptimize(NumberText::WriteFixed(out, value, decimals));
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK_CAPTURE(WriteNumber, OneDecimal, 0.9, 1);
BENCHMARK_CAPTURE(WriteNumber, EightDecimals, 7.03812345, 8);
BENCHMARK_CAPTURE(WriteNumber, Enormous, 1e300, 1);

void Preamble(benchmark::State& state) {
  char talker[2];
  for (auto _ : state) {
    benchmark::DoNotOptimize(C_NMEA_EncodeDecode::GetNmeaPreamble(kVtg, 6, talker));
    benchmark::DoNotOptimize(talker);
  }
}
BENCHMARK(Preamble);

}  // namespace

BENCHMARK_MAIN();
