// The encoders and field emitters of textproto/NMEA_EncodeDecode.h.
#include <cstring>
#include <random>
#include <string>

#include "tests/Cases.h"
#include "tests/LibraryTwins.h"
#include "tests/NmeaSentences.h"

namespace {

using velagnss::textproto::C_PrintFormat;
using t_Nmea = C_NMEA_EncodeDecode;
using t_Type = C_RawDataMessage;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// --- Emitters: what is appended to the message "$" ---

struct S_EmitCase {
  const char* name;
  unsigned int (*emit)(char* msg);
  unsigned int result;
  std::string appended;
};

unsigned int AddDouble(char* msg, const char* format, double value) {
  return t_Nmea::MsgAdd_DBL(msg, format, NA_DOUBLE, value, true);
}

unsigned int AddInteger(char* msg, const char* format, int value) {
  return t_Nmea::MsgAdd_S32(msg, format, -1, value, true);
}

unsigned int AddTime(char* msg, double value) { return t_Nmea::MsgAdd_TimeOfDay(msg, NA_DOUBLE, value, true); }
unsigned int AddLatitude(char* msg, double value) {
  return t_Nmea::MsgAdd_LatDegMin(msg, "%011.8lf", NA_DOUBLE, value, true, true);
}

unsigned int AddLongitude(char* msg, double value) {
  return t_Nmea::MsgAdd_LonDegMin(msg, "%011.8lf", NA_DOUBLE, value, true, true);
}

// clang-format off
const S_EmitCase kEmitCases[] = {
    {"Char",              [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%c", 'N', 'A', true); },   0, ",A"},
    {"CharNotAvailable",  [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%c", 'A', 'A', true); },   0, ","},
    {"CharNul",           [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%cx", 'A', '\0', true); }, 0, ","},
    {"CharSigned",        [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%d", 'A', '\xFF', true); }, 0, ",-1"},
    {"NoComma",           [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%c", 'N', 'A', false); },  0, "A"},
    {"NothingAtAll",      [](char* m) { return t_Nmea::MsgAdd_CHAR(m, "%c", 'N', 'N', false); },  0, ""},
    {"Integer",           [](char* m) { return AddInteger(m, "%02d", 5); },                       0, ",05"},
    {"Unsigned",          [](char* m) { return t_Nmea::MsgAdd_U32(m, "%u", 1, 4294967295U, true); }, 0, ",4294967295"},
    {"TextAround",        [](char* m) { return AddInteger(m, "100%%<%d>%%", 7); },                0, ",100%<7>%"},
    {"Double",            [](char* m) { return AddDouble(m, "%.3lf", 545.4); },                   0, ",545.400"},
    {"DoubleNotAvailable", [](char* m) { return AddDouble(m, "%.3lf", NA_DOUBLE); },              0, ","},
    {"DoubleNan",         [](char* m) { return t_Nmea::MsgAdd_DBL(m, "%.1lf", kNan, kNan, true); }, 0, ",nan"},
    {"DoubleInfinite",    [](char* m) { return AddDouble(m, "%.1lf", -kInf); },                   0, ",-inf"},
    {"RefusedThoughNotAvailable", [](char* m) { return AddInteger(m, "%s", -1); },                1, ""},
    {"NullFormat",        [](char* m) { return AddInteger(m, nullptr, 1); },                      1, ""},
    {"EnormousWidth",     [](char* m) { return AddInteger(m, "%99999999999d", 1); },              9, ""},
    {"DigitsThatThereAreNot", [](char* m) { return AddDouble(m, "%.70000g", 1.5); },              0, ",1.5"},
    {"CharacterHasNoDigits", [](char* m) { return AddInteger(m, "%.70000c", 'x'); },              0, ",x"},
    {"WidthOf65536Plus5", [](char* m) { return AddInteger(m, "%65541d", 1); },                    9, ""},
    {"WidthThatFits",     [](char* m) { return AddInteger(m, "%01016d", 1); },                    0, "," + std::string(1015, '0') + "1"},
    {"WidthOneTooMany",   [](char* m) { return AddInteger(m, "%01017d", 1); },                    9, ""},

    {"Time",              [](char* m) { return AddTime(m, 45296.784); },                          0, ",123456.78"},
    {"TimeCarries",       [](char* m) { return AddTime(m, 59.996); },                             0, ",000100.00"},
    {"TimeRoundsToTheDay", [](char* m) { return AddTime(m, 86399.996); },                         0, ",240000.00"},
    {"TimeNotAvailable",  [](char* m) { return AddTime(m, NA_DOUBLE); },                          0, ","},
    {"TimeNegativeZero",  [](char* m) { return AddTime(m, -0.0); },                               0, ",000000.00"},
    {"TimeNegative",      [](char* m) { return AddTime(m, -0.001); },                             8, ""},
    {"TimeOfTheDay",      [](char* m) { return AddTime(m, 86400.0); },                            8, ""},
    {"TimeNan",           [](char* m) { return AddTime(m, kNan); },                               8, ""},
    {"TimeInfinite",      [](char* m) { return AddTime(m, kInf); },                               8, ""},

    {"Latitude",          [](char* m) { return AddLatitude(m, 48.1173); },                        0, ",4807.03800000,N"},
    {"LatitudeSouth",     [](char* m) { return AddLatitude(m, -1.5); },                           0, ",0130.00000000,S"},
    {"LatitudeNegativeZero", [](char* m) { return AddLatitude(m, -0.0); },                        0, ",0000.00000000,N"},
    {"LatitudePole",      [](char* m) { return AddLatitude(m, -90.0); },                          0, ",9000.00000000,S"},
    {"LatitudeBeyond",    [](char* m) { return AddLatitude(m, 90.0000001); },                     8, ""},
    {"LatitudeNan",       [](char* m) { return AddLatitude(m, kNan); },                           8, ""},
    {"LatitudeNotAvailable", [](char* m) { return AddLatitude(m, NA_DOUBLE); },                   0, ",,"},
    {"MinutesNotCarried", [](char* m) { return AddLatitude(m, 0x1.7ffffffffffffp+0); },           0, ",0130.00000000,N"},
    {"MinutesOf60",       [](char* m) { return AddLatitude(m, 1.9999999999999998); },             0, ",0160.00000000,N"},
    {"LetterFirst",       [](char* m) { return t_Nmea::MsgAdd_LatDegMin(m, "%011.8lf", 0, 48.1173, false, true); }, 0, ",N4807.03800000"},
    {"LetterFirstNotAvailable", [](char* m) { return t_Nmea::MsgAdd_LatDegMin(m, "%011.8lf", 5, 5, false, false); }, 0, ","},
    {"OtherMinutes",      [](char* m) { return t_Nmea::MsgAdd_LatDegMin(m, "%04.1f", 0, 48.1173, true, false); }, 0, "4807.0,N"},
    {"Longitude",         [](char* m) { return AddLongitude(m, -11.5); },                         0, ",01130.00000000,W"},
    {"LongitudeBound",    [](char* m) { return AddLongitude(m, 180.0); },                         0, ",18000.00000000,E"},
    {"LongitudeBeyond",   [](char* m) { return AddLongitude(m, -180.0000001); },                  8, ""},
    {"AngleFormatRefused", [](char* m) { return t_Nmea::MsgAdd_LonDegMin(m, "%d", 0, 1, true, true); }, 1, ""},
};
// clang-format on

class Emitter : public testing::TestWithParam<S_EmitCase> {};

TEST_P(Emitter, AppendsOrLeavesTheMessageAlone) {
  const S_EmitCase& c = GetParam();
  char msg[1100] = "$";
  EXPECT_EQ(c.emit(msg), c.result);
  EXPECT_EQ(msg, "$" + c.appended);
  EXPECT_EQ(c.emit(nullptr), 1U);
}

// Up to 1018 characters in all, for each kind of emitter.
TEST_P(Emitter, KeepsTheLimit) {
  const S_EmitCase& c = GetParam();
  if (c.result != 0) return;
  for (const std::size_t total : {1018, 1019}) {
    const std::string before(total - c.appended.size(), 'x');
    char msg[1100];
    std::strcpy(msg, before.c_str());
    EXPECT_EQ(c.emit(msg), total == 1018 ? 0U : 9U);
    EXPECT_EQ(msg, total == 1018 ? before + c.appended : before);
  }
}

INSTANTIATE_TEST_SUITE_P(Fields, Emitter, testing::ValuesIn(kEmitCases), CaseName<S_EmitCase>);

TEST(NmeaEmitter, RefusesFormatsWithoutExactlyOneConversionOfItsKind) {
  char msg[1100] = "$";
  for (const char* format : {"x", "%d%d", "%f", "%*d", "%.*d", "%s", "%n", "%ld", "%", "%d%"})
    EXPECT_EQ(AddInteger(msg, format, 1), 1U) << format;
  for (const char* format : {"%d", "%.*f", "%Lf"}) EXPECT_EQ(AddDouble(msg, format, 1), 1U) << format;
  EXPECT_STREQ(msg, "$");
}

TEST(NmeaEmitter, PrintsAnyFormatAsTheCLibraryDoes) {
  std::mt19937_64 random(20240604);
  for (int i = 0; i < 20000; ++i) {
    std::string format = "%";
    for (const char flag : {'-', '+', ' ', '#', '0'})
      if (random() % 4 == 0) format += flag;
    if (random() % 2 == 0) format += std::to_string(random() % 30);
    if (random() % 2 == 0) format += '.' + std::to_string(random() % 25);
    const std::string ofInteger = format + C_PrintFormat::kIntegerConversions[1 + random() % 6];
    const std::string ofDouble = format + C_PrintFormat::kRealConversions[random() % 8];
    const double number = static_cast<double>(static_cast<long long>(random())) * 0x1p-40;
    const int integer = static_cast<int>(random()) >> random() % 32;
    char msg[1100] = "";
    ASSERT_EQ(AddDouble(msg, ofDouble.c_str(), number), 0U) << ofDouble;
    ASSERT_EQ(LibraryTwins::PrintDiffers(ofDouble, C_PrintFormat::kRealConversions, number), "") << ofDouble;
    ASSERT_EQ(AddInteger(msg, ofInteger.c_str(), integer), 0U) << ofInteger;
    ASSERT_EQ(LibraryTwins::PrintDiffers(ofInteger, C_PrintFormat::kIntegerConversions, integer), "") << ofInteger;
  }
}

TEST(NmeaEmitter, ChecksumAndLineEnd) {
  const t_Nmea nmea;
  unsigned short length = 77;
  char msg[1100] = "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A";
  EXPECT_EQ(nmea.MsgAdd_ChecksumCrLf(msg, length), 0U);
  EXPECT_STREQ(msg, "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41\r\n");
  EXPECT_EQ(length, std::strlen(msg));
  for (const std::size_t size : {7, 8, 1018, 1019}) {
    length = 77;
    std::strcpy(msg, std::string(size, '$').c_str());
    const bool isRight = size == 8 || size == 1018;
    EXPECT_EQ(nmea.MsgAdd_ChecksumCrLf(msg, length), isRight ? 0U : 9U) << size;
    EXPECT_EQ(length, isRight ? size + 5 : 77) << size;
  }
  EXPECT_EQ(nmea.MsgAdd_ChecksumCrLf(nullptr, length), 1U);
}

// --- Sentences ---

struct S_EncodeCase {
  const char* name;
  t_Type::eNMEA0183Messages type;
  const char* talker;
  void (*set)(U_EcdDcdData& data);
  unsigned int result;
  std::string text;  // without checksum; after a failure the contents of the work buffer
};

void Nothing(U_EcdDcdData&) {}

// clang-format off
const S_EncodeCase kEncodeCases[] = {
    {"GgaEmpty", t_Type::eNmeaGGA, "GP", Nothing, 0, "$GPGGA,,,,,,,,,,M,,M,,"},
    {"Gga", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) {
       d.gga = {{'G', 'P'}, 45296.78, 48.1173, -11.5, 4, 8, 0.94, 545.4, -46.9, 2.5, 31}; }, 0,
     "$GPGGA,123456.78,4807.03800000,N,01130.00000000,W,4,08,0.9,545.400,M,-46.900,M,2.5,0031"},
    {"GgaStation0HasNoAge", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.referenceStation = 0; d.gga.differentialAge = 2.5; }, 0,
     "$GPGGA,,,,,,,,,,M,,M,,0000"},
    {"GgaNoStationNoAge", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.differentialAge = 2.5; }, 0, "$GPGGA,,,,,,,,,,M,,M,,"},
    {"GgaLastStation", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.referenceStation = 65534; d.gga.differentialAge = 2.5; }, 0,
     "$GPGGA,,,,,,,,,,M,,M,2.5,65534"},
    {"GgaNotFinite", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.hdop = kNan; d.gga.altitude = -kInf; d.gga.geoidSeparation = -0.0; }, 0,
     "$GPGGA,,,,,,,,nan,-inf,M,-0.000,M,,"},
    {"GgaQualityAsSigned", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.quality = 0xFFFFFFFF; }, 0, "$GPGGA,,,,,,-1,,,,M,,M,,"},
    {"GgaTooLong", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) {
       d.gga.hdop = d.gga.altitude = d.gga.geoidSeparation = d.gga.differentialAge = -1e308; d.gga.referenceStation = 1; }, 9, ""},
    {"GgaBadTime", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.timeOfDay = 86400; }, 8, "$GPGGA"},
    {"GgaBadLongitude", t_Type::eNmeaGGA, "GP", [](U_EcdDcdData& d) { d.gga.longitude = 1e308; }, 8, "$GPGGA,,,"},
    {"NoTalker", t_Type::eNmeaGGA, "", Nothing, 8, ""},
    {"HalfATalker", t_Type::eNmeaGGA, "G", Nothing, 8, ""},

    {"GnsEmpty", t_Type::eNmeaGNS, "GP", Nothing, 0, "$GPGNS,,,,,,,,,,,,,"},
    {"Gns", t_Type::eNmeaGNS, "GN", [](U_EcdDcdData& d) {
       d.gns = {{'G', 'N'}, 0, -1.5, 172.5, {eNmeaModeRtk, eNmeaModeNotValid, eNmeaModeReserved9, static_cast<eNmeaModeIndicator>(11), eNmeaModeEmpty, eNmeaModeRtk},
                7, 0.9, 25.63, 11.24, 1.5, 7, eNmeaNavUnsafe}; }, 0,
     "$GNGNS,000000.00,0130.00000000,S,17230.00000000,E,RNNN,7,0.9,25.630,11.240,1.5,0007,U"},
    {"GnsAllModes", t_Type::eNmeaGNS, "GN", [](U_EcdDcdData& d) { std::fill_n(d.gns.mode, 6, eNmeaModeRtk); }, 0, "$GNGNS,,,,,,RRRRRR,,,,,,,"},
    {"GnsOtherTalker", t_Type::eNmeaGNS, "GP", [](U_EcdDcdData& d) { d.gns.mode[0] = eNmeaModeRtk; }, 16, "$GPGNS,,,,,"},
    {"GnsFirstModeEmpty", t_Type::eNmeaGNS, "GP", [](U_EcdDcdData& d) { d.gns.mode[1] = eNmeaModeRtk; }, 0, "$GPGNS,,,,,,,,,,,,,"},
    {"GnsNavStatusBeyond", t_Type::eNmeaGNS, "GP", [](U_EcdDcdData& d) { d.gns.navStatus = static_cast<eNmeaNavStatus>(6); }, 0, "$GPGNS,,,,,,,,,,,,,V"},

    {"ZdaEmpty", t_Type::eNmeaZDA, "GP", Nothing, 0, "$GPZDA,,,,,,"},
    {"Zda", t_Type::eNmeaZDA, "GP", [](U_EcdDcdData& d) { d.zda = {{'G', 'P'}, 24, 3, 1, 0.005, -5, 30}; }, 0, "$GPZDA,000000.01,01,03,0024,-5,30"},
    {"ZdaZones", t_Type::eNmeaZDA, "GP", [](U_EcdDcdData& d) { d.zda.zoneHours = 3; d.zda.zoneMinutes = 254; }, 0, "$GPZDA,,,,,03,254"},

    {"Gll", t_Type::eNmeaGLL, "GP", [](U_EcdDcdData& d) { d.gll = {{'G', 'P'}, 1, 0, 0, eNmeaGllNotValid3, static_cast<eNmeaModeIndicator>(77)}; }, 0,
     "$GPGLL,0000.00000000,N,00000.00000000,E,000001.00,V,N"},
    {"GllEmpty", t_Type::eNmeaGLL, "GP", Nothing, 0, "$GPGLL,,,,,,,"},

    {"GsvEmpty", t_Type::eNmeaGSV, "GP", Nothing, 0, "$GPGSV,,,,,,,,,,,,,,,,,,,,"},
    {"Gsv", t_Type::eNmeaGSV, "GP", [](U_EcdDcdData& d) {
       d.gsv = {{'G', 'P'}, 1, 1, 2, {5, 123, 255, 255}, {7, 90, 255, 255}, {9, 359, 65535, 65535}, {1, 255, 255, 255}, 8}; }, 0,
     "$GPGSV,1,1,02,05,07,009,01,123,90,359,,,,,,,,,,8"},

    {"GsaEmpty", t_Type::eNmeaGSA, "GP", Nothing, 0, "$GPGSA,,,,,,,,,,,,,,,,,,"},
    {"Gsa", t_Type::eNmeaGSA, "GN", [](U_EcdDcdData& d) {
       d.gsa = {{'G', 'N'}, 'A', '3', {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 212}, 1.84, 0.05, 9.95, 2}; }, 0,
     "$GNGSA,A,3,01,02,03,04,05,06,07,08,09,10,11,212,1.8,0.1,9.9,2"},

    {"RmcEmpty", t_Type::eNmeaRMC, "GP", Nothing, 0, "$GPRMC,,,,,,,,,,,,,"},
    {"Rmc", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) {
       d.rmc = {{'G', 'P'}, 2024, 12, 31, 1.25, 1.5, 1.5, 0.0005, 359.995, 20.3, 'W', eNmeaModePrecise, eNmeaRmcNotValid6, eNmeaNavNotValid4}; }, 0,
     "$GPRMC,000001.25,V,0130.00000000,N,00130.00000000,E,0.001,360.00,311224,20.30,W,P,V"},
    {"RmcDirectionNoLetter", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.variationDirection = 1; d.rmc.magneticVariation = 1; }, 0, "$GPRMC,,,,,,,,,,1.00,,,"},
    {"RmcDirectionSmall", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.variationDirection = 'w'; }, 0, "$GPRMC,,,,,,,,,,,w,,"},
    {"RmcDirectionBracket", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.variationDirection = '['; }, 0, "$GPRMC,,,,,,,,,,,,,"},
    {"RmcDirectionBrace", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.variationDirection = '{'; }, 0, "$GPRMC,,,,,,,,,,,,,"},
    {"RmcDateWithoutYear", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.month = 13; d.rmc.day = 1; }, 0, "$GPRMC,,,,,,,,,,,,,"},
    {"RmcImpossibleDate", t_Type::eNmeaRMC, "GP", [](U_EcdDcdData& d) { d.rmc.year = 2024; d.rmc.month = 13; d.rmc.day = 1; }, 8, "$GPRMC,,,,,,,,"},

    {"VtgEmpty", t_Type::eNmeaVTG, "GP", Nothing, 0, "$GPVTG,,T,,M,,N,,K,"},
    {"Vtg", t_Type::eNmeaVTG, "GP", [](U_EcdDcdData& d) { d.vtg = {{'G', 'P'}, 54.7, -0.001, 5.5, 10.125, eNmeaModeManual}; }, 0,
     "$GPVTG,54.70,T,-0.00,M,5.50,N,10.12,K,M"},
    {"VtgUnitsPassTheLimit", t_Type::eNmeaVTG, "GP", [](U_EcdDcdData& d) {
       d.vtg.courseTrue = d.vtg.courseMagnetic = d.vtg.speedKnots = 1e308; d.vtg.speedKmh = 1e62; }, 9, ""},
};
// clang-format on

TEST_ROWS(Encoding, GivesResultAndSentence, kEncodeCases, c) {
  U_EcdDcdData data;
  std::memset(&data, 0, sizeof data);
  KindOf(c.type).reset(data);
  std::memcpy(&data, c.talker, std::strlen(c.talker));
  c.set(data);
  t_Nmea nmea;
  unsigned char out[1024] = "untouched";
  unsigned short length = 77;
  EXPECT_EQ(nmea.Encode(&data, c.type, out, length), c.result);
  EXPECT_EQ(nmea.GetLastResult(), c.result);
  const std::string sentence = c.result == 0 ? NmeaSentence(c.text) + "\r\n" : "untouched";
  EXPECT_EQ(reinterpret_cast<const char*>(out), sentence);
  EXPECT_EQ(length, c.result == 0 ? sentence.size() : 77);
  const std::string work = reinterpret_cast<const char*>(nmea.GetWorkBuffer());
  EXPECT_LE(work.size(), 1023U);
  if (c.result == 9) return;  // a long one
  EXPECT_EQ(work, c.result == 0 ? sentence : c.text);
  t_Nmea direct;
  EXPECT_EQ(KindOf(c.type).encode(direct, data, length), c.result);
  EXPECT_EQ(reinterpret_cast<const char*>(direct.GetWorkBuffer()), work);
  EXPECT_EQ(length, c.result == 0 ? sentence.size() : 77);
}

TEST(NmeaEncode, RefusesNullAndOtherTypes) {
  t_Nmea nmea;
  U_EcdDcdData data = {};
  unsigned char out[1024];
  unsigned short length = 77;
  EXPECT_EQ(nmea.Encode(nullptr, t_Type::eNmeaGGA, out, length), 1U);
  EXPECT_EQ(nmea.Encode(&data, t_Type::eNmeaGGA, nullptr, length), 1U);
  EXPECT_EQ(nmea.Encode(&data, t_Type::eNmeaHDT, out, length), 5U);
  EXPECT_EQ(nmea.Encode(&data, t_Type::eNmeaUnknown, out, length), 5U);
  EXPECT_EQ(length, 77);
}

TEST(NmeaEncode, ResetEmptiesTheWholeWorkBuffer) {
  t_Nmea nmea;
  S_GGA_Data record;
  t_Nmea::Reset_GGA(record);
  std::memcpy(record.talker, "GP", sizeof record.talker);
  record.hdop = record.altitude = record.geoidSeparation = -1e308;  // as long as a sentence can be
  unsigned short length = 0;
  ASSERT_EQ(nmea.Encode_GGA(record, length), 0U);
  ASSERT_GT(length, 900);
  EXPECT_EQ(nmea.Reset(), 0U);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(nmea.GetWorkBuffer()), 1024), std::string(1024, '\0'));
}

}  // namespace
