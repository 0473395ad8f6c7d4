#include "stream/StreamClock.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Cases.h"
#include "geo/NotAvailable.h"

namespace {

using velagnss::StreamClock;

S_GGA_Data At(double timeOfDay) {
  S_GGA_Data gga{};
  gga.timeOfDay = timeOfDay;
  return gga;
}

// At two seconds of a day, such as 20240518.
S_RMC_Data OfDate(unsigned int date, eNmeaRmcStatus status = eNmeaRmcValid) {
  S_RMC_Data rmc{};
  rmc.year = static_cast<unsigned short>(date / 10000);
  rmc.month = static_cast<unsigned char>(date / 100 % 100);
  rmc.day = static_cast<unsigned char>(date % 100);
  rmc.timeOfDay = 2;
  rmc.status = status;
  return rmc;
}

// Midnight, late sentences, leap seconds, and times that are none.
TEST(StreamClock, CountsDaysByTheStepsAcrossMidnight) {
  constexpr struct {
    double timeOfDay, seconds;
  } kSteps[] = {{86399, 86399},     {1, 86401},     {86398, 86398}, {NA_DOUBLE, 86398},
                {86400.5, 86400.5}, {0.5, 86400.5}, {-1, 86400.5},  {86401, 86400.5}};
  StreamClock clock;
  EXPECT_TRUE(std::isnan(clock.Seconds()));
  for (const auto& [timeOfDay, seconds] : kSteps) {
    clock.Note(At(timeOfDay));
    EXPECT_EQ(clock.Seconds(), seconds) << timeOfDay;
  }
  EXPECT_EQ(clock.UtcOf(86401).mjd, std::nullopt);
}

struct S_DateCase {
  const char* name;
  unsigned int date;
  bool isReal;
  eNmeaRmcStatus status = eNmeaRmcValid;
};
const S_DateCase kDates[] = {
    {"OfGpsEpoch", 19800106, false},
    {"BeforeNmea", 19821231, false},
    {"OfNmea", 19830101, true},
    {"LeapDay", 20240229, true},
    {"NoLeapDay", 20230229, false},
    {"Of2100", 21000228, true},
    {"NoLeapDayOf2100", 21000229, false},
    {"BeyondTheCalendar", 21010101, false},
    {"Month0", 20240018, false},
    {"Month13", 20241318, false},
    {"Day0", 20240500, false},
    {"Day31OfApril", 20240431, false},
    {"OfAClockWithoutAFix", 20240518, false, eNmeaRmcNotValid},
};
TEST_ROWS(StreamDate, IsTakenIfItCanBeTrue, kDates, row) {
  StreamClock clock;
  clock.Note(OfDate(row.date, row.status));
  EXPECT_EQ(clock.Seconds(), 2);
  EXPECT_EQ(clock.KnowsDate(), row.isReal);
  EXPECT_EQ(clock.FirstDate().has_value(), row.isReal);
}

// Day 0 is 17 May 2024, the date came after a midnight. Counted back, no day is before 1983; counted on, none is after
// 2100.
struct S_DayCase {
  const char* name;
  double seconds;
  std::optional<unsigned int> mjd;
  double secondsOfDay;
};
const S_DayCase kDays[] = {
    {"OfTheDate", 86402, 60448, 2},
    {"BeforeDay0", -1, 60446, 86399},
    {"First", (45335 - 60447) * 86400.0, 45335, 0},
    {"BeforeTheFirst", (45334 - 60447) * 86400.0, std::nullopt, 0},
    {"Last", (88433 - 60447) * 86400.0, 88433, 0},
    {"AfterTheLast", (88434 - 60447) * 86400.0, std::nullopt, 0},
    {"BeyondAnyStream", 1e300, std::nullopt, NA_DOUBLE},
    {"NotANumber", std::nan(""), std::nullopt, NA_DOUBLE},
};
TEST_ROWS(StreamDay, IsCountedFromTheDate, kDays, row) {
  StreamClock clock;
  clock.Note(At(86399));
  clock.Note(OfDate(20240518));
  EXPECT_EQ(clock.FirstDate()->m_week, 2314);
  const StreamClock::Utc utc = clock.UtcOf(row.seconds);
  EXPECT_EQ(utc.mjd, row.mjd);
  EXPECT_EQ(std::isnan(utc.secondsOfDay) ? NA_DOUBLE : utc.secondsOfDay, row.secondsOfDay);
}

TEST(StreamClock, TakesATimeOfDayForTheNearest) {
  StreamClock clock;
  clock.AssumeFirstDay(60448);
  EXPECT_EQ(clock.UtcOfTimeOfDay(86399).mjd, 60448) << "no time is known";
  clock.Note(At(1));
  EXPECT_EQ(clock.UtcOfTimeOfDay(3).mjd, 60448);
  EXPECT_EQ(clock.UtcOfTimeOfDay(86399).mjd, 60447);
  clock.Note(At(43000));
  clock.Note(At(86000));
  EXPECT_EQ(clock.UtcOfTimeOfDay(3).mjd, 60449);
  EXPECT_TRUE(std::isnan(clock.UtcOfTimeOfDay(86401).secondsOfDay));
}

// GLONASS time is 3 h ahead of UTC; its day is not known.
TEST(StreamClock, TakesTheTimeOfDayFromGlonass) {
  velagnss::Rtcm3Observations observations;
  observations.time.sent = 3600000;
  StreamClock clock;
  observations.system = ALGO::GNSS_GPS;
  clock.Note(observations);
  EXPECT_TRUE(std::isnan(clock.Seconds()));
  observations.system = ALGO::GNSS_GLONASS;
  clock.Note(observations);
  EXPECT_EQ(clock.Seconds(), 79200);
}

TEST(StreamClock, AssumesADayUntilTheStreamHasOne) {
  StreamClock clock;
  clock.AssumeFirstDay(45334);
  EXPECT_EQ(clock.UtcOfTimeOfDay(1).mjd, std::nullopt) << "before 1983";
  clock.AssumeFirstDay(88433);
  clock.Note(At(86399));
  EXPECT_EQ(clock.UtcOfTimeOfDay(86399).mjd, 88433);
  clock.Note(At(1));
  EXPECT_EQ(clock.UtcOfTimeOfDay(1).mjd, std::nullopt) << "after 2100";
  clock.Note(OfDate(20240518));
  clock.AssumeFirstDay(60000);
  EXPECT_EQ(clock.UtcOfTimeOfDay(2).mjd, 60448);
}

}  // namespace
