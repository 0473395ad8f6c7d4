#include "samples/Moment.h"

#include "samples/Packing.h"

namespace {

constexpr int kDaySeconds = 86400;
constexpr int kWeekSeconds = 7 * kDaySeconds;
constexpr int kStartDay = 18;                           // May 2024, a Saturday: the last day of a GPS week
constexpr int kStartSecondOfDay = 23 * 3600 + 57 * 60;  // UTC
constexpr int kStartGpsSecond = 6 * kDaySeconds + kStartSecondOfDay + kLeapSeconds;

// One leg of the track: steps per second in 1e-7 minutes of arc. A knot is 1' of latitude per hour; longitude steps are
// wider by 1 / cos(51.48 degrees).
struct S_Leg {
  int seconds;
  int course;  // 1/100 degrees
  int speed;   // 1/1000 knots
  int north;
  int east;
};

// The track begins west of the meridian of Greenwich and crosses it in its second leg.
constexpr std::int64_t kStartLatitude = (51 * 60 + 28) * 10000000LL + 6720000;
constexpr std::int64_t kStartLongitude = -7654321;

// clang-format off
constexpr S_Leg kLegs[] = {
    //  s  course  speed   north    east
    {  20,   9000,     0,      0,      0},  // waits
    {  80,   9000, 20000,      0,  89205},
    {  70,   6000, 18000,  25000,  69528},
    {  60,  10500, 22000, -15817,  94782},
    {  50,   9125, 25000,  -1515, 111479},
    {kSessionSeconds, 14000, 15000, -31919, 43005},  // to the end
};
// clang-format on

void Travel(S_Moment& now) {
  int left = now.second;
  for (const S_Leg& leg : kLegs) {
    const int spent = left < leg.seconds ? left : leg.seconds;
    now.latitude += std::int64_t{leg.north} * spent;
    now.longitude += std::int64_t{leg.east} * spent;
    now.course = leg.course;
    now.speed = leg.speed;
    left -= spent;
    if (left == 0 && spent < leg.seconds) return;
  }
}

std::string Angle(std::int64_t value, int degreeDigits, const char* letters) {
  constexpr std::int64_t kDegree = 60 * 10000000LL;
  const std::int64_t size = value < 0 ? -value : value;
  return Fixed(size / kDegree, 0, degreeDigits) + Fixed(size % kDegree, 7, 10) + ',' + letters[value < 0];
}

}  // namespace

S_Moment MomentAt(int second) {
  const int utc = kStartSecondOfDay + second;
  const int gps = kStartGpsSecond + second;
  S_Moment now{second,
               kStartDay + utc / kDaySeconds,
               utc % kDaySeconds,
               kStartWeek + gps / kWeekSeconds,
               gps % kWeekSeconds,
               kStartLatitude,
               kStartLongitude,
               45678 + 13 * (second % 40),
               0,
               0};
  Travel(now);
  return now;
}

std::string TimeField(const S_Moment& now) {
  const int second = now.secondOfDay;
  return Fixed(second / 3600, 0, 2) + Fixed(second / 60 % 60, 0, 2) + Fixed(second % 60, 0, 2) + ".00";
}

std::string DateField(const S_Moment& now) { return Fixed(now.day, 0, 2) + "0524"; }

std::string PositionFields(const S_Moment& now) {
  return Angle(now.latitude, 2, "NS") + ',' + Angle(now.longitude, 3, "EW");
}
