#include "apps/velagnss/json/LineEncoder.h"

#include <fmt/core.h>
#include <gmock/gmock.h>

#include "Cases.h"
#include "NmeaSentences.h"

namespace {

using t_Outcome = Host::C_LineEncoder::eOutcome;

std::string Line(std::string_view message, std::string_view fields) {
  return fmt::format(R"({{"protocol":"nmea","message":"{}","fields":{{{}}}}})", message, fields);
}

struct S_EncodedCase {
  const char* name;
  const char* message;
  const char* fields;  // members of the object
  const char* body;    // of the sentence
};
// clang-format off
const S_EncodedCase kEncoded[] = {
    {"Gga", "GGA",
     R"("talker":"GN","time_of_day_s":45319.5,"latitude_deg":-48.125,"longitude_deg":-11.5,"quality":4,"satellites":8,
        "hdop":0.9,"altitude_m":545.4,"geoid_separation_m":46.9,"differential_age_s":1.5,"reference_station":42)",
     "GNGGA,123519.50,4807.50000000,S,01130.00000000,W,4,08,0.9,545.400,M,46.900,M,1.5,0042"},
    {"NullAndMissingAreEmpty", "GGA", R"("talker":"GP","hdop":null)", "GPGGA,,,,,,,,,,M,,M,,"},
    {"AgeWithoutStation", "GGA", R"("talker":"GP","differential_age_s":1.5)", "GPGGA,,,,,,,,,,M,,M,,"},
    {"IntegerForNumber", "GGA", R"("talker":"GP","latitude_deg":90,"quality":0)", "GPGGA,,9000.00000000,N,,,0,,,,M,,M,,"},
    {"Gns", "GNS", R"("talker":"GN","modes":["rtk","rtk float","not valid"],"satellites":254,"nav_status":"caution")",
     "GNGNS,,,,,,RFN,254,,,,,,C"},
    {"GnsOfOneSystem", "GNS", R"("talker":"GA","modes":["rtk"],"nav_status":"not valid")", "GAGNS,,,,,,,,,,,,,V"},
    {"Rmc", "RMC", R"("talker":"GP","date":"2094-11-19","status":"rtk","mode":"rtk","magnetic_variation_deg":20.3,
        "variation_direction":"W","speed_knots":0.5,"course_true_deg":54.7,"nav_status":"safe")",
     "GPRMC,,R,,,,,0.500,54.70,191194,20.30,W,R,S"},
};
// clang-format on

TEST_ROWS(EncodedLine, IsTheSentence, kEncoded, row) {
  Host::C_LineEncoder encoder;
  ASSERT_EQ(encoder.Encode(Line(row.message, row.fields)), t_Outcome::Encoded) << encoder.Reason();
  EXPECT_EQ(encoder.Sentence(), NmeaSentence(std::string("$") + row.body) + "\r\n");
}

struct S_OtherCase {
  const char* name;
  std::string line;
  t_Outcome outcome;
  const char* reason;  // the beginning
};
// A line of GGA, or of another sentence, with these members beside the talker.
std::string With(std::string_view fields, std::string_view message = "GGA") {
  return Line(message, fmt::format(R"("talker":"GP",{})", fields));
}

const t_Outcome kRefused = t_Outcome::Refused;
const t_Outcome kSkipped = t_Outcome::Skipped;
// clang-format off
const S_OtherCase kOthers[] = {
    {"Binary",            R"({"protocol":"bin","message":"BIN95","result":0,"fields":{}})",     kSkipped, "protocol: \"bin\""},
    {"Event",             R"({"schema":1,"event":"skipped","offset":0})",                       kSkipped, "event: "},
    {"NotDecoded",        R"({"protocol":"nmea","message":"HDT","result":null,"fields":{}})",   kSkipped, "result: null"},
    {"NoJson",            "$GPGGA,,,,,,,,,,,,,,*56",                     kRefused, "not valid JSON (column 1)"},
    {"CutOff",            R"({"protocol":"nmea")",                       kRefused, "not valid JSON (column 19)"},
    {"NoUtf8",            "{\"protocol\":\"\xff\"}",                     kRefused, "not valid JSON"},
    {"DeeplyNested",      std::string(100000, '['),                      kRefused, "nested more than 32 deep"},
    {"DeepInAMember",     R"({"protocol":)" + std::string(40, '[') + std::string(40, ']') + "}", kRefused, "nested more than 32 deep"},
    {"TextAfterNul",      Line("GGA", R"("talker":"GP")") + std::string("\0 garbage", 9), kRefused, "not valid JSON (column 61)"},
    {"Array",             "[1]",                                         kRefused, "not a JSON object"},
    {"LaterSchema",       R"({"schema":2,"protocol":"nmea"})",           kRefused, "schema: 2 is not 1"},
    {"NoProtocol",        R"({"message":"GGA"})",                        kRefused, "protocol: missing"},
    {"NoMessage",         R"({"protocol":"nmea"})",                      kRefused, "message: null is not one of GSV"},
    {"UnknownMessage",    R"({"protocol":"nmea","message":"HDM","result":0})", kRefused, "message: \"HDM\" is not one of GSV"},
    {"EnvelopeOnly",      R"({"protocol":"nmea","message":"GGA"})",      kRefused, "fields: missing"},
    {"NoTalker",          Line("GGA", ""),                               kRefused, "fields: talker: missing"},
    {"TalkerInjected",    Line("GGA", R"("talker":"\r\n")"),             kRefused, "fields: talker: \"\\r\\n\" is not two"},
    {"UnknownMember",     With(R"("hdopp":1)"),                          kRefused, "fields: \"hdopp\" is not a member"},
    {"NumberAsText",      With(R"("hdop":"1.0")"),                       kRefused, "fields: hdop: \"1.0\" is not a number"},
    {"NumberBeyondAll",   With(R"("hdop":1e999)"),                       kRefused, "a number is beyond"},
    {"TooManyDigits",     With(R"("hdop":1e300)"),                       kRefused, "fields: the sentence would have"},
    {"LatitudeBeyond",    With(R"("latitude_deg":90.0000001)"),          kRefused, "fields: latitude_deg: 90.0000001 is outside the range -90 to 90"},
    {"LongitudeBeyond",   With(R"("longitude_deg":-180.5)"),             kRefused, "fields: longitude_deg: -180.5 is outside the range -180 to 180"},
    {"LeapSecond",        With(R"("time_of_day_s":86400)"),              kRefused, "fields: time_of_day_s: 86400 is outside the range 0 to below 86400"},
    {"SatellitesMarker",  With(R"("satellites":255)"),                   kRefused, "fields: satellites: 255 is outside the range 0 to 254"},
    {"SatellitesHuge",    With(R"("satellites":18446744073709551615)"),  kRefused, "fields: satellites: 18446744073709551615 is outside"},
    {"SatellitesDecimal", With(R"("satellites":8.0)"),                   kRefused, "fields: satellites: 8.0 is not an integer"},
    {"QualityMarker",     With(R"("quality":10)"),                       kRefused, "fields: quality: 10 means no value"},
    {"QualityBeyond",     With(R"("quality":65536)"),                    kRefused, "fields: quality: 65536 is outside the range 0 to 65535"},
    {"UnknownMode",       With(R"("mode":"fixed")", "VTG"),              kRefused, "fields: mode: \"fixed\" is not one of \"not valid\", \"autonomous\""},
    {"SevenModes",        With(R"("modes":["rtk","rtk","rtk","rtk","rtk","rtk","rtk"])", "GNS"), kRefused, "fields: modes: 7 items, at most 6"},
    {"ModesAsText",       With(R"("modes":"RR")", "GNS"),                kRefused, "fields: modes: \"RR\" is not an array"},
    {"BadSatellite",      With(R"("satellites":[{"id":3},{"id":256}])", "GSV"), kRefused, "fields: satellites: item 2: id: 256 is outside"},
    {"DateOfNoMonth",     With(R"("date":"2024-13-01")", "ZDA"),         kRefused, "fields: date: \"2024-13-01\" is not a date"},
    {"DateBefore2000",    With(R"("date":"1999-12-31")", "RMC"),         kRefused, "fields: date: \"1999-12-31\" is outside the years 2000 to 2099"},
    {"FixTypeAsNumber",   With(R"("fix_type":3)", "GSA"),                kRefused, "fields: fix_type: 3 is not one of \"none\", \"2d\", \"3d\""},
};
// clang-format on

// A line of `decode`, with these members.
std::string TextLine(std::string_view body, std::string_view members) {
  return fmt::format(R"({{"protocol":"nmea",{},"text":"{}"}})", members, NmeaSentence(body));
}

struct S_TextCase {
  const char* name;
  std::string line;
  const char* body;  // of the sentence; empty: as it is in the text
};
// clang-format off
const S_TextCase kTexts[] = {
    {"Unchanged",       TextLine("$GPHDT,07.50,T", R"("message":"HDT","result":0,"fields":{"talker":"GP","heading_true_deg":7.5})"), "GPHDT,07.50,T"},
    {"OfTheEight",      TextLine("$GPZDA,120000.0,18,05,2024", R"("message":"ZDA","fields":{"talker":"GP","date":"2024-05-18","time_of_day_s":43200})"), "GPZDA,120000.0,18,05,2024"},
    {"Changed",         TextLine("$GPHDT,07.50,T", R"("message":"HDT","result":0,"fields":{"talker":"GP","heading_true_deg":8})"), "GPHDT,8,T"},
    {"Emptied",         TextLine("$GPHDT,07.50,T", R"("message":"HDT","result":0,"fields":{"talker":"GP"})"), "GPHDT,,T"},
    {"OtherMessage",    TextLine("$GPHDT,07.50,T", R"("message":"THS","result":0,"fields":{"talker":"GP","heading_true_deg":7.5})"), "GPTHS,7.5,"},
    {"NotDecoded",      TextLine("$GPHDT,x,T", R"("message":"HDT","result":11,"fields":{"text":"$GPHDT,x,T*63"})"), "GPHDT,x,T"},
    {"EnvelopeOnly",    TextLine("$GPHDT,07.50,T", R"("message":"HDT")"), "GPHDT,07.50,T"},
    {"NotASentence",    R"({"protocol":"nmea","text":"$GPHDT,1,T*00","message":"HDT","fields":{"talker":"GP","heading_true_deg":8}})", "GPHDT,8,T"},
    {"Injected",        R"({"protocol":"nmea","text":"$GPAAA,\r\n1*53","message":"HDT","fields":{"talker":"GP","heading_true_deg":8}})", "GPHDT,8,T"},
    {"OtherSentence",   Line("", R"("start":"!","talker":"AI","formatter":"VDM","fields":["1","","a"])"), "!AIVDM,1,,a"},
    {"Proprietary",     Line("PGRME", R"("maker":"GRM","sentence":"PGRME","fields":[])"), "PGRME"},
    {"BytesOfText",     Line("TXT", R"("talker":"GN","total_sentences":1,"sentence_number":1,"identifier":2,"text":"\u00e4, b")"), "GNTXT,01,01,02,\xE4, b"},
    {"Residuals",       Line("GRS", R"("talker":"GN","residuals_m":[1.5,null,-2],"signal_id":11)"), "GNGRS,,,1.5,,-2,,,,,,,,,,,B"},
};
// clang-format on

TEST_ROWS(LineWithText, IsTheSentence, kTexts, row) {
  Host::C_LineEncoder encoder;
  ASSERT_EQ(encoder.Encode(row.line), t_Outcome::Encoded) << encoder.Reason();
  const std::string body = row.body[0] == '!' ? row.body : std::string("$") + row.body;
  std::string expected = NmeaSentence(body) + "\r\n";
  expected[0] = body[0];
  EXPECT_EQ(encoder.Sentence(), expected);
}

const S_OtherCase kMoreOthers[] = {
    {"TextBeyondBytes", Line("TXT", R"("talker":"GN","text":"\u0141")"), kRefused, "fields: a character beyond"},
    {"CommaInField", Line("", R"("talker":"II","formatter":"XDR","fields":["a,b"])"), kRefused,
     "fields: fields: item 1"},
    {"LineEndInField", Line("", R"("talker":"II","formatter":"XDR","fields":["\r\n"])"), kRefused, "fields: cannot be"},
    {"OtherMaker", Line("", R"("maker":"ABC","sentence":"PGRME","fields":[])"), kRefused, "fields: maker"},
    {"TwoLetters", Line("ROT", R"("talker":"GN","status":"AA")"), kRefused, "fields: status: \"AA\" is not one"},
};
TEST_ROWS(OtherSentenceLine, HasAReason, kMoreOthers, row) {
  Host::C_LineEncoder encoder;
  EXPECT_EQ(encoder.Encode(row.line), row.outcome);
  EXPECT_THAT(encoder.Reason(), testing::StartsWith(row.reason));
}

TEST(LineEncoder, KnowsALineThatIsCutOff) {
  Host::C_LineEncoder encoder;
  const std::string line = Line("GGA", R"("talker":"GP")");
  for (std::size_t length = 1; length < line.size(); ++length) {
    EXPECT_EQ(encoder.Encode(line.substr(0, length), true), kRefused);
    EXPECT_THAT(encoder.Reason(), testing::StartsWith("incomplete")) << line.substr(0, length);
  }
  encoder.Encode("{]", true);
  EXPECT_EQ(encoder.Reason(), "not valid JSON (column 2)");
}

TEST_ROWS(OtherLine, HasAReason, kOthers, row) {
  Host::C_LineEncoder encoder;
  EXPECT_EQ(encoder.Encode(row.line), row.outcome);
  EXPECT_THAT(encoder.Reason(), testing::StartsWith(row.reason));
}

TEST(LineEncoder, CountsModesLeftOut) {
  Host::C_LineEncoder encoder;
  for (const char* talker : {"GA", "GN", "GP"})
    encoder.Encode(Line("GNS", fmt::format(R"("talker":"{}","modes":["rtk"])", talker)));
  encoder.Encode(Line("GNS", R"("talker":"GP","modes":[])"));
  EXPECT_EQ(encoder.ModesLeftOut(), 2U);
}

}  // namespace
