// Screens of the monitor, without a terminal.
#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "Cases.h"
#include "MonitorStreams.h"
#include "ObservationFrames.h"
#include "apps/velagnss/monitor/Pages.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace {

using namespace Host;
using eState = S_LinkChange::eState;

// Twelve seconds of a receiver, with some damage at the end.
void Receive(C_Watched& watched) {
  watched.Change(eState::Connected);
  for (int second = 0; second < 12; ++second, watched.Wait(1)) watched.Feed(Epoch(second));
  watched.Feed("$GPHDT,8.0,T*00\r\n" + Rmc(12));
}

void ReceiveAndLose(C_Watched& watched) {
  Receive(watched);
  watched.Wait(90);
  watched.Change(eState::Lost, 1);
  watched.Wait(30);
}

void ReceiveStation(C_Watched& watched) {
  for (std::uint32_t second = 0; second < 12; ++second, watched.Wait(1))
    watched.Feed(Date() + Position() + Msm(1077, kNoon + 1000 * second, {{}, {12, 600, 0, 0, 5, 30 * 16}}));
}

std::string Screen(const C_Grid& grid) {
  std::string text = "\n";
  for (int row = 0; row < grid.Rows(); ++row) text += grid.Text(row) + "\n";
  return text;
}

struct S_ScreenCase {
  const char* name;
  void (*receive)(C_Watched& watched);
  ePage page;
  int rows;
  int columns;
  bool isPlain;
  const char* screen;
};
const S_ScreenCase kScreens[] = {
    {"Smallest", &Receive, ePage::Overview, 10, 40, true, R"(
[...t:5017: receiving] day.bin: ended
[1 Overview] 2  3  4  5  ?
Time        2024-05-16 12:00:12 UTC
Position    51.5000000 N 0.1250000 W
Fix         RTK, 3D
Satellites  7 used, 4 in view
Altitude    45.500 m above sea level
Stream      304 B/s  6.0 frames/s
Frames      73 good  1 bad  17 B skipped
q quit  ? help  p pause  / filter
)"},
    {"Usual", &Receive, ePage::Overview, 24, 80, false, R"(
[tcp://host:5017: receiving] day.bin: ended
[1 Overview] 2 Satellites  3 Messages  4 Raw  5 Log  ? Help
Time        2024-05-16 12:00:12 UTC     Frames      73 good  1 bad  17 B skipped
Position    51.5000000 N 0.1250000 W    Accuracy    N 0.012  E 0.015  U 0.021 m
Fix         RTK, 3D                     DOP         P 1.5  H 0.9  V 1.2
Satellites  7 used, 4 in view           Motion      18.5 km/h  course 84.4 deg
Altitude    45.500 m above sea level    Link        connected for 12 s  far end
Stream      304 B/s  6.0 frames/s
── C/N0 from 10 to 55 dB-Hz, * used ────────────────────────────────────────────
▂▂▂
███ ▄▄▄     ▇▇▇
███ ███ ▃▃▃ ███
███ ███ ███ ███
███ ███ ███ ███
48  42  31  45
G05 G12 G29 R04
*   *
── Protocols ────────────────────────── ── Faults: 1 ───────────────────────────
Protocol  Per s     Count      Age      When       Bytes Why
nmea       6.00        73    0.0 s      12:00:12      17 checksum error



q quit  ? help  p pause  / filter  Tab next source
)"},
    {"Lost", &ReceiveAndLose, ePage::Overview, 12, 60, true, R"(
[tcp://host:5017: lost] day.bin: ended
[1 Overview] 2 Satellites  3 Messages  4 Raw  5 Log  ? Help
Link        lost for 30 s  lost 1 time  1 failure in a row
Time        2024-05-16 12:00:12 UTC  2.0 min ago
Position    51.5000000 N 0.1250000 W  2.0 min ago
Fix         RTK, 3D  2.0 min ago
Satellites  7 used, 4 in view  2.0 min ago
2.0 min ago 45.500 m above sea level  geoid +47.0 m
Stream      nothing for 2.0 min
Frames      73 good  1 bad  17 B skipped
Accuracy    N 0.012  E 0.015  U 0.021 m  2.0 min ago
q quit  ? help  p pause  / filter  Tab next source
)"},
    {"Station", &ReceiveStation, ePage::Overview, 18, 80, false, R"(
[tcp://host:5017: receiving] day.bin: ended
[1 Overview] 2 Satellites  3 Messages  4 Raw  5 Log  ? Help
Time        2024-05-16 11:59:53 UTC     Frames      36 good  0 bad
Stream      99 B/s  3.0 frames/s        Station     7  0.0000000 N 0.0000000 E
── C/N0 from 10 to 55 dB-Hz ────────────────────────────────────────────────────
▁▁▁
███
███ ▆▆▆
███ ███
45  30
G05 G12

── Protocols ────────────────────────── ── Faults: 0 ───────────────────────────
Protocol  Per s     Count      Age      None.
rtcm3      3.00        36    1.0 s


q quit  ? help  p pause  / filter  Tab next source
)"},
    {"Sky", &Receive, ePage::Satellites, 18, 100, false, R"(
[tcp://host:5017: receiving] day.bin: ended
 1 Overview [2 Satellites] 3 Messages  4 Raw  5 Log  ? Help
SV   El  Az Signal    C/N0 10 to 55
GPS: 3, 2 used                                                                .......N......
G05* 66 212 L1 C/A    48.0 ██████████████████████████▏                     ...g29           ...
G12* 45 260 L1 C/A    42.0 ██████████████████████                         ..   ............   ..
G29   9 330 L1 C/A    31.0 ██████████████▌                               .   ...          ...   .
GLONASS: 1, 0 used                                                      .   ..   ........   ..   .
R04  80 301 G1 C/A    45.0 ████████████████████████▏                    .   .   ..      ..   .   .
                                                                        W   .   . r04    .   .   .E
                                                                        .   .G12..G05   ..   .   .
                                                                        .   ..   ........   ..   .
                                                                         .   ...          ...   .
                                                                          ..   ............   ..
                                                                           ...              ...
                                                                              ..............
                                                                                     S
q quit  ? help  p pause  / filter  Tab next source
)"},
    {"Messages", &Receive, ePage::Messages, 14, 60, true, R"(
[tcp://host:5017: receiving] day.bin: ended
 1 Overview  2 Satellites [3 Messages] 4 Raw  5 Log  ? Help
-- Messages ------------------------------------------------
Protocol Message     Per s     Count    Size Faults      Age
nmea     GGA          1.00        12   732 B      -    1.0 s
nmea     GSA          1.00        12   528 B      -    1.0 s
nmea     GST          1.00        12   504 B      -    1.0 s
nmea     GSV          2.00        24  1.1 kB      -    1.0 s
nmea     RMC          1.00        13   793 B      -    0.0 s
-- Faults: 1 -----------------------------------------------
When          Offset   Bytes What      Why
12:00:12        3648      17 skipped   checksum error

q quit  ? help  p pause  / filter  Tab next source
)"},
    {"Raw", &Receive, ePage::Raw, 14, 60, true, R"(
[tcp://host:5017: receiving] day.bin: ended
 1 Overview  2 Satellites  3 Messages [4 Raw] 5 Log  ? Help
-- Objects, the newest first; all objects; 76 kept ---------
>RMC      {"talker":"GN","date":"2024-05-16","time_of_day_s>
 "event":"skipped","offset":3648,"length":17,"why":"damaged>
 "event":"rejected","offset":3648,"length":1,"count":1,"res>
 GSV      {"talker":"GL","total_sentences":1,"sentence_numb>
-- Object 76 -----------------------------------------------
{"schema":1,"arrival":"2024-05-16T12:00:12.000000Z","offset"
:3665,"length":61,"protocol":"nmea","message":"RMC","number"
:17,"result":0,"decoded":"full","fields":{"talker":"GN","dat
e":"2024-05-16","time_of_day_s":43212,"latitude_deg":51.5,"l
ongitude_deg":-0.125,"speed_knots":10,"course_true_deg":84 >
q quit  ? help  p pause  / filter  Tab next source
)"},
};
TEST_ROWS(MonitorScreen, IsAsExpected, kScreens, row) {
  C_Watched watched;
  row.receive(watched);
  C_Grid grid(row.rows, row.columns, row.isPlain);
  S_ScreenState state;
  state.page = row.page;
  state.tabs = {{"tcp://host:5017", watched.View().state}, {"day.bin", eSourceState::Ended}};
  DrawScreen(grid, watched.View(), state);
  EXPECT_EQ(Screen(grid), row.screen);
}

// --- Hostile contents ---

// Control sequences, wide, combining and invisible characters, no UTF-8 at all, and much of everything.
const std::string kBad =
    "\x1b[2J\x9b"
    "31m\r\n\t\x7f"
    "\xe6\xbc\xa2\xcc\x81\xe2\x80\xae\xf0\x9f\x98\x80\xff\xc3\u00ad";

// Numbers of all sizes.
double AnyNumber(std::mt19937& random) {
  constexpr double kLimit = std::numeric_limits<double>::max();
  constexpr double kNumbers[] = {0,      -1,   55,     1e9,       -1e300,
                                 kLimit, -0.5, kNoAge, NA_DOUBLE, std::numeric_limits<double>::infinity()};
  return kNumbers[random() % std::size(kNumbers)];
}

std::string AnyText(std::mt19937& random) {
  std::string text;
  for (std::size_t i = random() % 4; i > 0; --i) text += kBad;
  return text + std::string(random() % 300, 'x');
}

template <class Value>
S_Aged<Value> Aged(std::mt19937& random, const Value& value) {
  return {value, AnyNumber(random), random() % 2 == 0};
}

t_Sky AnySky(std::mt19937& random) {
  auto sky = std::make_shared<std::vector<S_EpochSatellite>>(random() % 300);
  for (S_EpochSatellite& satellite : *sky) {
    satellite.system = static_cast<ALGO::eGNSSSystem>(random() % 9);
    satellite.number = static_cast<unsigned int>(random());
    satellite.elevation = static_cast<unsigned char>(random());
    satellite.azimuth = static_cast<unsigned short>(random());
    if (random() % 2 == 0) satellite.isUsed = random() % 2 == 0;
    if (random() % 2 == 0) satellite.signals.push_back({AnyText(random), NA_U8, AnyNumber(random), ""});
  }
  return sky;
}

S_SourceView AnyView(std::mt19937& random) {
  S_SourceView view;
  view.state = static_cast<eSourceState>(random() % kNumSourceStates);
  view.silence = AnyNumber(random);
  view.link = {AnyText(random), AnyText(random), AnyNumber(random), static_cast<unsigned int>(random()), random(), 9};
  view.time = Aged(random, C_TimeText::TimeOfDay(5));
  view.position = Aged(random, S_Position{AnyNumber(random), AnyNumber(random), AnyNumber(random), AnyNumber(random)});
  view.motion = Aged(random, S_Motion{AnyNumber(random), AnyNumber(random)});
  view.fix = Aged(random, S_Fix{random() % 2 == 0, eNmeaModeRtk, '\x1b'});
  view.dops = Aged(random, S_Dops{AnyNumber(random), AnyNumber(random), AnyNumber(random)});
  view.counts = Aged(random, S_SatelliteCounts{static_cast<unsigned int>(random()), {}});
  if (random() % 2 == 0) view.sky = Aged(random, AnySky(random));
  for (std::size_t i = random() % 70; i > 0; --i) {
    S_StationView& station = view.stations.emplace_back();
    station.latitude = station.longitude = station.height = AnyNumber(random);
    if (i % 4 == 0) station.sky = Aged(random, AnySky(random));
  }
  for (std::size_t i = random() % 300; i > 0; --i) {
    view.messages.push_back({AnyText(random), AnyText(random), random(), random(), i, AnyNumber(random)});
    view.faults.push_back({random(), random(), AnyText(random), AnyText(random), {}});
    view.raw.push_back(std::make_shared<S_RawObject>(S_RawObject{i, AnyText(random), AnyText(random), {}}));
  }
  return view;
}

S_ScreenState AnyState(std::mt19937& random) {
  S_ScreenState state;
  state.page = static_cast<ePage>(random() % 6);
  state.filter = AnyText(random);
  state.message = random() % 2 == 0 ? AnyText(random) : "";
  state.isPaused = random() % 2 == 0;
  state.scroll = static_cast<int>(random());
  for (std::size_t i = random() % 9; i > 0; --i) state.tabs.push_back({AnyText(random), eSourceState::Lost});
  for (std::size_t i = random() % 9; i > 0; --i) state.log.push_back({{}, eStyle::Bad, AnyText(random)});
  state.tab = random() % 10;
  return state;
}

bool IsHarmless(char32_t character, bool isPlain) {
  const bool isAscii = character >= 0x20 && character < 0x7F;
  return isAscii || (!isPlain && ((character >= 0xA1 && character < 0x250 && character != 0xAD) ||
                                  (character >= 0x2500 && character < 0x25A0)));
}

TEST(MonitorScreen, IsHarmlessWhateverItShows) {
  std::mt19937 random(1);
  for (int i = 0; i < 1000; ++i) {
    const bool isPlain = i % 2 == 0;
    C_Grid grid(static_cast<int>(1 + random() % 100), static_cast<int>(1 + random() % 300), isPlain);
    const int most = DrawScreen(grid, AnyView(random), AnyState(random));
    EXPECT_GE(most, 0);
    for (int row = 0; row < grid.Rows(); ++row)
      for (int column = 0; column < grid.Columns(); ++column)
        ASSERT_TRUE(IsHarmless(grid.At(row, column).character, isPlain)) << i << ' ' << row << ' ' << column;
  }
}

// --- Panes ---

TEST(MonitorPane, KeepsWhatIsDrawnInside) {
  C_Grid grid(5, 9, true);
  const C_Pane all(grid);
  for (int row = 0; row < 5; ++row) all.Put(row, 0, ".........");
  const C_Pane pane = all.Part(1, 2, 3, 4).Part(0, 1, 9, 9);
  for (int row = -2; row < 9; ++row) {
    pane.Put(row, -3, "abcdefghijklmn");
    pane.BarRight(row, -1, 20, 2, eStyle::Good);
    pane.PutRight(row, 3, "much too long");
  }
  pane.BarUp(7, -4, 20, 20, 1, eStyle::Good);
  EXPECT_EQ(Screen(grid), "\n.........\n...###...\n...###...\n...###...\n.........\n");
}

struct S_BarCase {
  const char* name;
  double share;
  const char* utf8;
  const char* plain;
};
const S_BarCase kBars[] = {
    {"None", 0, "", ""},        {"Negative", -5, "", ""},      {"Eighth", 0.03125, "▏", ""},
    {"Half", 0.5, "██", "##"},  {"More", 0.53, "██▏", "##"},   {"Most", 0.9, "███▋", "####"},
    {"All", 1, "████", "####"}, {"Beyond", 7, "████", "####"}, {"Unknown", kNoAge, "", ""},
};
TEST_ROWS(MonitorBar, HasEighths, kBars, row) {
  for (const bool isPlain : {false, true}) {
    C_Grid grid(1, 9, isPlain);
    C_Pane(grid).BarRight(0, 0, 4, row.share, eStyle::Normal);
    EXPECT_EQ(grid.Text(0), isPlain ? row.plain : row.utf8);
  }
}

TEST(MonitorText, HasTheUnitOfWhatItRoundsTo) {
  EXPECT_EQ(AgeText(59.4), "59 s");
  EXPECT_EQ(AgeText(59.6), "1.0 min");
  EXPECT_EQ(SizeText(999'499), "999 kB");
  EXPECT_EQ(SizeText(999'999), "1.0 MB");
}

}  // namespace
