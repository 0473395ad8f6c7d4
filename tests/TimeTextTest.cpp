#include "apps/velagnss/text/TimeText.h"

#include "Cases.h"

namespace {

using Host::C_TimeText;

struct S_TextCase {
  const char* name;
  C_TimeText text;
  const char* expected;
};
const S_TextCase kTexts[] = {
    {"Epoch", C_TimeText::WeekTime(0, 0.0, ALGO::GNSS_GPS), "1980-01-06T00:00:00"},
    {"LeapDay", C_TimeText::WeekTime(2303, 388800.0, ALGO::GNSS_QZSS), "2024-02-29T12:00:00"},
    {"EndOfWeek", C_TimeText::WeekTime(2047, 604799.9996, ALGO::GNSS_GPS), "2019-04-06T23:59:59.999"},
    {"Decimals", C_TimeText::WeekTime(2048, 59.25, ALGO::GNSS_SBAS), "2019-04-07T00:00:59.25"},
    {"GlonassOffset", C_TimeText::WeekTime(2048, 900.0, ALGO::GNSS_GLONASS), "2019-04-07T00:15:00+03:00"},
    {"NoSuchSecond", C_TimeText::WeekTime(2048, 604800.0, ALGO::GNSS_GPS), ""},
    {"LeapSecond", C_TimeText::TimeOfDay(86400.5), "23:59:60.5"},
    {"RoundingMakesNone", C_TimeText::TimeOfDay(86399.9999), "23:59:59.999"},
    {"BeyondTheLeapSecond", C_TimeText::TimeOfDay(86401.0), ""},
    {"NoSecondAfterTheLeapSecond", C_TimeText::TimeOfDay(86400.9999), "23:59:60.999"},
    {"AllDigits", C_TimeText::Utc(58849, 27710.000000001, C_TimeText::kAllDigits), "2020-01-01T07:41:50.000000001Z"},
    {"DigitsSent", C_TimeText::Utc(58849, 27710.799, C_TimeText::kAllDigits), "2020-01-01T07:41:50.799Z"},
    {"Hundredths", C_TimeText::TimeOfDay(45296.78), "12:34:56.78"},
    {"Utc", C_TimeText::Utc(58849, 0.0), "2020-01-01T00:00:00Z"},
    {"BeforeTheEpoch", C_TimeText::Utc(44243, 0.0), ""},
    {"CalendarEnds", C_TimeText::WeekTime(6312, 518400.0, ALGO::GNSS_GPS), ""},  // 1 January 2101
    {"UtcCalendarEnds", C_TimeText::Utc(88434, 0.0), ""},
    {"NoSuchDate", C_TimeText::Date(2024, 13, 1), ""},
};

TEST_ROWS(TimeText, IsIso8601, kTexts, row) { EXPECT_EQ(row.text.Text(), row.expected); }

}  // namespace
