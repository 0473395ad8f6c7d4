// C_NMEA_EncodeDecode::MakeDecodable, and what comes back of a record that is encoded, found in a stream, made
// decodable and decoded.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/NmeaSentences.h"

namespace {

using t_Nmea = C_NMEA_EncodeDecode;
using t_Type = C_RawDataMessage;

struct S_MakeCase {
  const char* name;
  std::string sentence;
  unsigned int result;
  std::string made;  // without checksum
};

// clang-format off
const S_MakeCase kMakeCases[] = {
    {"Complete", "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41\r\n", 0, "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A"},
    {"RmcOf11Fields", "$GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E*68", 0,
     "$GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,,"},
    {"RmcOf12Fields", NmeaSentence("$GNRMC,001031.00,A,4404.13993,N,12118.86023,W,0.146,,100117,,,A"), 0,
     "$GNRMC,001031.00,A,4404.13993,N,12118.86023,W,0.146,,100117,,E,A,"},
    {"RmcOf13Fields", NmeaSentence("$GNRMC,001031.00,A,4404.1,N,12118.8,W,0.1,,100117,1.0,W,A,V"), 0,
     "$GNRMC,001031.00,A,4404.1,N,12118.8,W,0.1,,100117,1.0,W,A,V"},
    {"RmcOf9Fields", NmeaSentence("$GPRMC,,V,,,,,,,100117"), 0, "$GPRMC,,V,,,,,,,100117,,E,,"},
    {"GllOf4Fields", "$GPGLL,4916.45,N,12311.12,W*71", 0, "$GPGLL,4916.45,N,12311.12,W,,,"},
    {"GllOf6Fields", "$GPGLL,4916.45,N,12311.12,W,225444,A*31", 0, "$GPGLL,4916.45,N,12311.12,W,225444,A,"},
    {"VtgOf8Fields", "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K*48", 0, "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,"},
    {"VtgWithoutUnits", NmeaSentence("$GPVTG,054.7,034.4,005.5,010.2"), 0, "$GPVTG,054.7,,034.4,,005.5,,010.2,,"},
    {"VtgCut", NmeaSentence("$GPVTG,054.7,T,034.4,M"), 0, "$GPVTG,054.7,T,034.4,M,,,,,"},
    {"GgaWithoutStation", NmeaSentence("$GPGGA,,,,,,1,,,,M,,M,2.0"), 0, "$GPGGA,,,,,,1,,,,M,,M,2.0,"},
    {"GnsOf12Fields", NmeaSentence("$GNGNS,112257.00,3844.24011,N,00908.43828,W,AN,03,10.5,,,,"), 0,
     "$GNGNS,112257.00,3844.24011,N,00908.43828,W,AN,03,10.5,,,,,"},
    {"GsaWithoutSystem", "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1*39", 0,
     "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1,"},
    {"ZdaWithoutZone", NmeaSentence("$GPZDA,160012.71,11,03,2004"), 0, "$GPZDA,160012.71,11,03,2004,,"},
    {"GsvNoSatellite", NmeaSentence("$GPGSV,1,1,00"), 0, "$GPGSV,1,1,00,,,,,,,,,,,,,,,,,"},
    {"GsvNoSatelliteButSignal", NmeaSentence("$GPGSV,1,1,00,1"), 0, "$GPGSV,1,1,00,,,,,,,,,,,,,,,,,1"},
    {"GsvOneSatellite", NmeaSentence("$GPGSV,3,3,09,29,,,20"), 0, "$GPGSV,3,3,09,29,,,20,,,,,,,,,,,,,"},
    {"GsvTwoSatellitesAndSignal", NmeaSentence("$GLGSV,2,2,06,65,1,2,3,66,4,5,6,1"), 0, "$GLGSV,2,2,06,65,1,2,3,66,4,5,6,,,,,,,,,1"},
    {"GsvThreeSatellites", NmeaSentence("$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12"), 0, "$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,,,,,"},
    {"GsvThreeSatellitesAndSignal", NmeaSentence("$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,8"), 0, "$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,,,,,8"},
    {"GsvFourSatellites", NmeaSentence("$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16"), 0, "$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,"},
    {"GsvSignalLetter", "$GBGSV,1,1,01,09,22,048,09,B*38", 0, "$GBGSV,1,1,01,09,22,048,09,,,,,,,,,,,,,11"},
    {"MoreFieldsThanKnown", NmeaSentence("$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,1,x,,y"), 0,
     "$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,1,x,,y"},
    {"NoField", NmeaSentence("$GPZDA"), 0, "$GPZDA,,,,,,"},
    {"StarInside", NmeaSentence("$GPZDA,1*2"), 0, "$GPZDA,1,2,,,,"},
    {"OtherType", NmeaSentence("$GPHDT,1.0,T"), 2, ""},
    {"NotASentence", "GPGLL,4916.45,N,12311.12,W*71", 2, ""},
    {"Nothing", "", 2, ""},
    {"WrongChecksum", "$GPGLL,4916.45,N,12311.12,W*72", 4, ""},
    {"NoChecksum", "$GPGLL,4916.45,N,12311.12,W", 4, ""},
    {"TypeBeforeChecksum", "$GPHDT,1.0,T*00", 2, ""},
    {"Fits", NmeaSentence("$GPZDA,,,,,," + std::string(1023 - 12 - 3, 'x')), 0, "$GPZDA,,,,,," + std::string(1023 - 12 - 3, 'x')},
    {"DoesNotFit", NmeaSentence("$GPZDA,,,,,," + std::string(1024 - 12 - 3, 'x')), 9, ""},
    {"GrowsTooLong", NmeaSentence("$GPZDA," + std::string(1023 - 7 - 3, 'x')), 9, ""},
};
// clang-format on

TEST_ROWS(Make, Decodable, kMakeCases, c) {
  GuardedPage page(2048);
  unsigned char out[1025];
  std::memset(out, '#', sizeof out);
  unsigned short length = 77;
  EXPECT_EQ(t_Nmea::MakeDecodable(page.AtEnd(c.sentence), static_cast<unsigned short>(c.sentence.size()), out, length),
            c.result);
  const std::string made = c.result == 0 ? NmeaSentence(c.made) : std::string(77, '#');
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(out), length), made);
  EXPECT_EQ(out[length], c.result == 0 ? '\0' : '#');
  EXPECT_EQ(out[1024], '#');
}

TEST(MakeDecodable, EndsAtANulAndRefusesNull) {
  std::string sentence = NmeaSentence("$GPZDA,,,,,,");
  sentence[8] = '\0';
  unsigned char out[1024];
  unsigned short length = 77;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(sentence.data());
  EXPECT_EQ(t_Nmea::MakeDecodable(bytes, static_cast<unsigned short>(sentence.size()), out, length), 4U);
  EXPECT_EQ(t_Nmea::MakeDecodable(nullptr, 10, out, length), 1U);
  EXPECT_EQ(t_Nmea::MakeDecodable(bytes, 10, nullptr, length), 1U);
  EXPECT_EQ(length, 77);
}

// --- Encode, recognize, make decodable, decode: the record comes back ---
//
// Over records whose values have the digits that are printed. Not among them is what the rules fold: the variation
// direction of RMC; the age of GGA without a station; an empty operation mode or fix type of GSA, which is not decoded;
// a date of which a part is missing; mode 9, status 3 of GLL, 4 of navigation and 6 of RMC, which share their letter.

class RandomRecords {
 public:
  explicit RandomRecords(std::uint64_t seed) : m_random(seed) {}

  // A multiple of 10^-decimals, or the marker.
  double Number(double limit, int decimals) {
    if (Below(5) == 0) return NA_DOUBLE;
    const double unit = std::pow(10.0, decimals);
    const double steps = static_cast<double>(m_random() % (static_cast<std::uint64_t>(limit * unit) + 1));
    return (Below(2) == 0 && steps != 0 ? -steps : steps) / unit;
  }
  double Time() { return Below(5) == 0 ? NA_DOUBLE : Below(86400 * 4) / 4.0; }  // exact, whatever they are added to
  template <class Value = unsigned char>
  Value Integer(unsigned int limit, Value marker) {
    return Below(5) == 0 ? marker : static_cast<Value>(Below(limit));
  }
  unsigned char Byte() { return Integer<unsigned char>(255, NA_U8); }
  unsigned short Short() { return Integer<unsigned short>(65535, NA_U16); }
  unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }
  template <class Enum>
  Enum OneOf(std::initializer_list<unsigned int> values) {
    return static_cast<Enum>(*(values.begin() + Below(static_cast<unsigned int>(values.size()))));
  }
  eNmeaModeIndicator Mode() { return OneOf<eNmeaModeIndicator>({0, 1, 2, 3, 4, 5, 6, 7, 8, 10}); }
  eNmeaNavStatus Nav() { return OneOf<eNmeaNavStatus>({0, 1, 2, 3, 5}); }

  void Fill(S_GGA_Data& r) {
    r = {{'G', 'L'},     Time(),         Angle(90),      Angle(180), Below(11), Byte(),
         Number(1e6, 1), Number(1e6, 3), Number(1e6, 3), NA_DOUBLE,  Short()};
    if (r.referenceStation != 0 && r.referenceStation != NA_U16) r.differentialAge = Number(1e4, 1);
  }
  void Fill(S_GNS_Data& r) {
    r = {{'G', 'N'},     Time(),         Angle(90),      Angle(180),     {},      Byte(),
         Number(1e6, 1), Number(1e6, 3), Number(1e6, 3), Number(1e4, 1), Short(), Nav()};
    std::fill(std::begin(r.mode), std::end(r.mode), eNmeaModeEmpty);
    for (unsigned int i = Below(7); i-- > 0;) r.mode[i] = OneOf<eNmeaModeIndicator>({0, 1, 2, 3, 4, 5, 6, 7, 8});
  }
  void Fill(S_ZDA_Data& r) {
    r = {{'G', 'P'}, Short(), Byte(), Byte(), Time(), static_cast<signed char>(Below(256) - 128), Byte()};
  }
  void Fill(S_GLL_Data& r) {
    r = {{'G', 'A'}, Time(), Angle(90), Angle(180), OneOf<eNmeaGllStatus>({0, 1, 2, 4}), Mode()};
  }
  void Fill(S_GSV_Data& r) {
    r = {{'G', 'B'}, Byte(), Byte(), Byte(), {}, {}, {}, {}, Byte()};
    for (int i = 0; i < 4; ++i) {
      r.satelliteId[i] = Byte();
      r.elevation[i] = Byte();
      r.azimuth[i] = Short();
      r.snr[i] = Byte();
    }
  }
  void Fill(S_GSA_Data& r) {
    r = {{'G', 'Q'}, "MA"[Below(2)], "123" [Below(3)], {}, Number(1e3, 1), Number(1e3, 1), Number(1e3, 1), Byte()};
    for (unsigned char& id : r.satelliteId) id = Byte();
  }
  void Fill(S_RMC_Data& r) {
    r = {{'G', 'I'},
         NA_U16,
         NA_U8,
         NA_U8,
         Time(),
         Angle(90),
         Angle(180),
         Number(1e4, 3),
         Number(360, 2),
         Number(180, 2),
         0,
         Mode(),
         OneOf<eNmeaRmcStatus>({0, 1, 2, 3, 4, 5, 7}),
         Nav()};
    if (Below(5) == 0) return;
    r.year = static_cast<unsigned short>(2000 + Below(100));
    r.month = static_cast<unsigned char>(1 + Below(12));
    r.day = static_cast<unsigned char>(1 + Below(31));
  }
  void Fill(S_VTG_Data& r) { r = {{'X', 'X'}, Number(360, 2), Number(360, 2), Number(1e4, 2), Number(1e4, 2), Mode()}; }

 private:
  // Whole degrees, half and quarter degrees: their minutes are exact.
  double Angle(unsigned int limit) { return Below(5) == 0 ? NA_DOUBLE : Below(8 * limit + 1) / 4.0 - limit; }

  std::mt19937_64 m_random;
};

template <class Record>
class RoundTrip : public testing::Test {};
using t_Records =
    testing::Types<S_GGA_Data, S_GNS_Data, S_ZDA_Data, S_GLL_Data, S_GSV_Data, S_GSA_Data, S_RMC_Data, S_VTG_Data>;
TYPED_TEST_SUITE(RoundTrip, t_Records);

constexpr t_Type::eNMEA0183Messages TypeOf(const S_GGA_Data&) { return t_Type::eNmeaGGA; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_GNS_Data&) { return t_Type::eNmeaGNS; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_ZDA_Data&) { return t_Type::eNmeaZDA; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_GLL_Data&) { return t_Type::eNmeaGLL; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_GSV_Data&) { return t_Type::eNmeaGSV; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_GSA_Data&) { return t_Type::eNmeaGSA; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_RMC_Data&) { return t_Type::eNmeaRMC; }
constexpr t_Type::eNMEA0183Messages TypeOf(const S_VTG_Data&) { return t_Type::eNmeaVTG; }

// What a recognizer delivers of the bytes: one frame, or none of a sentence that is longer than those of its type are.
bool Recognize(C_FrameRecognizer& recognizer, const unsigned char* bytes, unsigned short length, t_Type& frame) {
  auto result = recognizer.DoRecognition(bytes, length, frame);
  while (result != eRecFrameComplete && result != eRecNoNewData) result = recognizer.DoRecognition(nullptr, 0, frame);
  return result == eRecFrameComplete;
}

TYPED_TEST(RoundTrip, GivesTheRecordBack) {
  const t_Type::eProtocols kNmeaOnly[] = {t_Type::eNMEA0183, t_Type::eAllProtocols};
  C_FrameRecognizer recognizer(kNmeaOnly, eCircBufOvrflowDropOldest, false);
  unsigned char buffer[2048];
  t_Type frame(buffer, sizeof buffer);
  int delivered = 0;
  RandomRecords random(20240605);
  t_Nmea nmea;
  for (int i = 0; i < 3000; ++i) {
    TypeParam record;
    random.Fill(record);
    const auto type = TypeOf(record);
    unsigned char sentence[1024];
    unsigned char decodable[1024];
    unsigned short length;
    U_EcdDcdData data;
    ASSERT_EQ(nmea.Encode(&record, type, sentence, length), 0U) << NmeaLine(record);
    if (Recognize(recognizer, sentence, length, frame)) {
      ++delivered;
      ASSERT_EQ(frame.messageType, type) << sentence;
      std::copy(frame.data, frame.data + frame.length, sentence);
      length = frame.length;
    }
    ASSERT_EQ(t_Nmea::MakeDecodable(sentence, length, decodable, length), 0U) << sentence;
    ASSERT_EQ(nmea.Decode(decodable, length, type, data), 0U) << decodable;
    ASSERT_EQ(NmeaLine(type, data), NmeaLine(record)) << sentence;
  }
  EXPECT_GT(delivered, 500);
}

}  // namespace
