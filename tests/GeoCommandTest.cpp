// `velagnss geo` as users run it, against published values and such that GeographicLib 2.1 gives.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "ProgramRun.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

struct S_LineCase {
  const char* name;
  const char* command;  // and its options
  const char* line;     // of values
  const char* result;
};

// clang-format off
const S_LineCase kLines[] = {
    {"Baghdad",          "convert", "33.3 44.4 6000",            "3816209.6045 3737108.5503 3485109.5726"},
    {"SouthWest",        "convert", "-33.9 -151.2 -10",          "-4643938.7540 -2553026.9345 -3537239.7705"},
    {"Turned",           "convert", "0 360 0",                   "6378137.0000 0.0000 0.0000"},
    {"Radians",          "convert --radians", "0.6911503837897545, 0.7749261878854823, 1000",  // 39.6 and 44.4 degrees
                                                                 "3516567.9488 3443677.7617 4044501.8152"},
    {"FromEcef",         "convert --from ecef", "4175176.1 841847.7 4732244.5", "48.202850631 11.399795932 409.5818"},
    {"NoMinusZero",      "convert --from ecef", "-6378137 0 -0.5e-5",  "0.000000000 180.000000000 0.0000"},
    {"EcefRadians",      "convert --from ecef --radians", "0 6378137 0", "0.00000000000 1.57079632679 0.0000"},
    {"EarthsCenter",     "convert --from ecef", "0 0 0",
     "no result: within 500 km of the Earth's center, latitude and height have no meaning"},
    {"NewYorkLondon",    "inverse", "40.6 -73.8 51.6 -0.5",      "5551759.4003 51.198882846 287.821776736"},
    // Vincenty's example (Flinders Peak to Buninyong), where 0.1 mm lie between its ellipsoid and WGS-84.
    {"Buninyong",        "inverse", "-37.951033416667 144.424867888889 -37.652821138889 143.926495527778",
                                                                 "54972.2711 306.868159203 127.173630629"},
    {"Opposite",         "inverse", "0 0 0.2 179.9",
     "no result: the points are almost opposite each other on the Earth, where the method does not converge"},
    {"Satellite",        "look",    "48.2 11.4 560 50 20 20200000",
     "69.062598833 82.231013249 20244052.3754 977909.4009 2555884.0804 20058235.3748"},
    // IS-GPS-200: week 0, and the end of 2048 weeks. J2000 is MJD 51544.5.
    {"GpsEpoch",         "time",    "1980-01-06",        "1980-01-06T00:00:00 0 0.000000000 44244 0.00000000000000 6 0 1980-01-06T00:00:00Z 0"},
    {"SecondRollOver",   "time --from gps", "2048 0",    "2019-04-07T00:00:00 2048 0.000000000 58580 0.00000000000000 97 0 2019-04-06T23:59:42Z 18"},
    {"J2000",            "time --from mjd", "51544.5",   "2000-01-01T12:00:00 1042 561600.000000000 51544 0.50000000000000 1 6 2000-01-01T11:59:47Z 13"},
    {"MjdAndFraction",   "time --from mjd", "51544 0.5", "2000-01-01T12:00:00 1042 561600.000000000 51544 0.50000000000000 1 6 2000-01-01T11:59:47Z 13"},
    {"IsoWithFraction",  "time",    "2024-02-29T23:59:59.5", "2024-02-29T23:59:59.5 2303 431999.500000000 60369 0.99999421296296 60 4 2024-02-29T23:59:41.5Z 18"},
    {"IsoWithSpace",     "time",    "2024-02-29 06:00",  "2024-02-29T06:00:00 2303 367200.000000000 60369 0.25000000000000 60 4 2024-02-29T05:59:42Z 18"},
    // IERS Bulletin C 52: the leap second of 2016.
    {"BeforeTheLeapSecond", "time --from utc", "2016-12-31T23:59:59Z", "2017-01-01T00:00:16 1930 16.000000000 57754 0.00018518518519 1 0 2016-12-31T23:59:59Z 17"},
    {"LeapSecond",       "time --from utc", "2016-12-31 23:59:60.5", "2017-01-01T00:00:17.5 1930 17.500000000 57754 0.00020254629630 1 0 2016-12-31T23:59:60.5Z 17"},
    {"AfterTheLeapSecond", "time --from utc", "2017 1 1", "2017-01-01T00:00:18 1930 18.000000000 57754 0.00020833333333 1 0 2017-01-01T00:00:00Z 18"},
    {"LastDay",          "time",    "2100 12 31 23 59 59", "2100-12-31T23:59:59 6312 518399.000000000 88433 0.99998842592593 365 5 2100-12-31T23:59:41Z 18"},
};
// clang-format on

TEST_ROWS_F(GeoLines, GiveTheResult, Program, kLines, row) {
  Write("in", std::string("# values\n\n") + row.line + "\r");
  const Outcome outcome = Run(std::string("velagnss geo ") + row.command + " < in");
  EXPECT_EQ(outcome.output, row.result + std::string("\n"));
  EXPECT_EQ(outcome.code, 0) << outcome.messages;
}

struct S_RefusalCase {
  const char* name;
  const char* command;
  const char* values;
  const char* message;
};

// clang-format off
const S_RefusalCase kRefusals[] = {
    {"LatitudeBeyondThePole", "convert",             "90.000001 0 0",     "latitude '90.000001' is outside -90 to 90"},
    {"LongitudeTwiceAround",  "convert",             "0 -360.1 0",        "longitude '-360.1' is outside -360 to 360"},
    {"DegreesAsRadians",      "convert --radians",   "48 11 0",           "latitude '48' is outside -1.57"},
    {"TooHigh",               "convert",             "0 0 1.1e9",         "height '1.1e9' is outside"},
    {"NotANumber",            "convert",             "0 nan 0",           "longitude 'nan' is not a number"},
    {"Infinite",              "convert --from ecef", "0 0 inf",           "z 'inf' is not a number"},
    {"Overflow",              "convert",             "1e999 0 0",         "latitude '1e999' is not a number"},
    {"LettersBehind",         "inverse",             "48.2N 11 48 12",    "latitude1 '48.2N' is not a number"},
    {"TooFew",                "inverse",             "48 11 48",          "3 values given, 4 needed: latitude1 longitude1"},
    {"TooMany",               "look",                "1 2 3 4 5 6 7",     "7 values given, 6 needed"},
    {"NoLeapDay",             "time",                "2023-02-29",        "not a day from"},
    {"BeforeTheEpoch",        "time",                "1980-01-05",        "not a day from"},
    {"AfterTheLastDay",       "time --from gps",     "6312 518400",       "not a day from"},
    {"LeapSecond",            "time",                "2016-12-31T23:59:60", "seconds '60' is outside 0 to below 60"},
    {"NoLeapSecond",          "time --from utc",     "2015-12-31T23:59:60Z", "not a day from 6 January 1980 to 31 December 2100, or a second 60 that is not a leap second"},
    {"Utc",                   "time",                "2024-05-06T12:34:56Z", "seconds '56Z' is not a number"},
    {"NegativeMonth",         "time",                "2024 -5 6",         "month '-5' is outside 1 to 12"},
    {"HalfAWeek",             "time --from gps",     "2300.5 0",          "week '2300.5' is not a whole number"},
    {"WholeWeekOfSeconds",    "time --from gps",     "2300 604800",       "seconds '604800' is outside 0 to below 604800"},
    {"FractionTwice",         "time --from mjd",     "60436.5 0.5",       "the fraction is given twice"},
    {"MjdTooLate",            "time --from mjd",     "88434",             "mjd '88434' is outside 44244 to below 88434"},
};
// clang-format on

// On the command line a usage error; in a line a report that names it, and the next line is read.
TEST_ROWS_F(GeoRefuses, InWords, Program, kRefusals, row) {
  const std::string command = std::string("velagnss geo ") + row.command;
  const Outcome given = Run(command + " " + row.values);
  EXPECT_EQ(given.code, 2);
  EXPECT_EQ(given.output, "");
  EXPECT_THAT(given.messages, HasSubstr(row.message));
  Write("in", std::string("#\n") + row.values + "\n");
  const Outcome read = Run(command + " < in");
  EXPECT_EQ(read.code, 1);
  EXPECT_EQ(read.output, "");
  EXPECT_THAT(read.messages, HasSubstr(std::string("line 2: ") + row.message));
}

TEST_F(Program, GeoReadsOnAfterABadLine) {
  Write("in", "91 0 0\n0 0 0\n" + std::string(10000, '1') + "\n\n0 90 0");
  const Outcome outcome = Run("velagnss geo convert < in");
  EXPECT_EQ(outcome.output, "6378137.0000 0.0000 0.0000\n0.0000 6378137.0000 0.0000\n");
  EXPECT_THAT(outcome.messages, HasSubstr("line 3: longer than 4096 characters"));
  EXPECT_EQ(outcome.code, 1);
}

TEST_F(Program, GeoWritesNullWithoutAResult) {
  const Outcome outcome = Run("echo 0 0 0.2 179.9 | velagnss geo inverse --json");
  EXPECT_EQ(json::parse(outcome.output), json::parse(R"({"schema": 1, "report": "inverse", "line": 1,
                                           "distance_m": null, "azimuth_deg": null, "back_azimuth_deg": null})"));
  EXPECT_EQ(outcome.code, 0);
}

}  // namespace
