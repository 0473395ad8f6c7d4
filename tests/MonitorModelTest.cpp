// What the monitor knows of a source.
#include <gmock/gmock.h>

#include <cmath>
#include <map>

#include "Cases.h"
#include "HostData.h"
#include "MonitorStreams.h"
#include "ObservationFrames.h"
#include "apps/velagnss/account/StreamAccount.h"
#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/monitor/Rate.h"

namespace {

using namespace Host;
using eState = S_LinkChange::eState;

double RateOf(const S_SourceView& view, std::string_view name) {
  for (const S_MessageView& message : view.messages)
    if (message.name == name) return message.rate;
  return std::nan("");
}

// One GGA and two GST a second. A file's seconds are those of its sentences.
TEST(MonitorRates, AreOverTenSecondsOfTheRightClock) {
  for (const bool isLive : {true, false}) {
    C_Watched watched(isLive);
    for (int second = 0; second < 15; ++second) {
      watched.Feed(Gga(second) + Gst(second));
      if (isLive) watched.Wait(0.5);
      watched.Feed(Gst(second));
      if (isLive) watched.Wait(0.5);
    }
    EXPECT_EQ(RateOf(watched.View(), "GGA"), 1) << isLive;
    EXPECT_EQ(RateOf(watched.View(), "GST"), 2) << isLive;
    EXPECT_NEAR(watched.View().bytesPerSecond, static_cast<double>((Gga(1) + Gst(1) + Gst(1)).size()), 7) << isLive;
    const S_SourceView ended = (watched.End(), watched.Wait(60), watched.View());
    EXPECT_EQ(RateOf(ended, "GGA"), isLive ? 0 : 1);
  }
}

// A rate does not survive the reset of a receiver.
TEST(MonitorRates, BeginAnewWhenTimeIsSetBack) {
  C_Rate rate;
  for (int second = 0; second < 20; ++second) rate.Add(second, 3);
  rate.Add(-1000);
  EXPECT_TRUE(std::isnan(rate.PerSecond(-1000)));
  EXPECT_EQ(rate.PerSecond(-998), 0.5);
}

// The position goes stale at once with the fix, everything else only when nothing comes any more.
TEST(MonitorValues, GoStale) {
  C_Watched watched;
  for (int second = 0; second < 10; ++second, watched.Wait(1)) watched.Feed(Epoch(second));
  EXPECT_FALSE(watched.View().position->isStale);
  for (int second = 10; second < 20; ++second, watched.Wait(1)) watched.Feed(Gga(second, 0) + kGpsInView);
  const S_SourceView lost = watched.View();
  EXPECT_TRUE(lost.position->isStale);
  EXPECT_NEAR(lost.position->age, 11, 0.1);
  EXPECT_FALSE(lost.fix->value.hasPosition);
  EXPECT_FALSE(lost.fix->isStale);
  EXPECT_FALSE(lost.sky->isStale);
  watched.Wait(6);
  EXPECT_TRUE(watched.View().sky->isStale);
  EXPECT_EQ(watched.View().state, eSourceState::Silent);
}

// A file that has ended is as it was at its end; a pipe that is silent grows old.
TEST(MonitorValues, OfFilesAreThoseOfTheirEnd) {
  C_Watched watched(false);
  for (int second = 0; second < 10; ++second) watched.Feed(Epoch(second));
  watched.Wait(60);
  EXPECT_TRUE(watched.View().position->isStale);
  watched.End();
  EXPECT_FALSE(watched.View().position->isStale);
  EXPECT_EQ(watched.View().position->age, 0);
}

TEST(MonitorValues, OfSlowStationsAreNotStale) {
  C_Watched watched;
  for (std::uint32_t second = 0; second < 180; second += 30, watched.Wait(30))
    watched.Feed(Date() + Position() + Msm(1077, kNoon + 1000 * second, {{}}));
  ASSERT_EQ(watched.View().stations.size(), 1);
  EXPECT_FALSE(watched.View().stations[0].sky->isStale);
  EXPECT_EQ(watched.View().state, eSourceState::Receiving);
}

std::string SkyText(const C_Watched& watched) {
  std::string text;
  for (const S_EpochSatellite& satellite : *watched.View().sky->value)
    text += fmt::format("{}{}{} ", static_cast<unsigned int>(satellite.system), satellite.number,
                        satellite.isUsed ? *satellite.isUsed ? "+" : "-" : "");
  return text;
}

// Systems in turn: each stays until it has missed its turn, and so does its use.
TEST(MonitorValues, SatellitesThatComeInTurnAreTogether) {
  C_Watched watched;
  int second = 0;
  const auto feed = [&](const std::string& sky, int seconds) {
    watched.Feed(Gga(second) + sky);
    for (watched.Wait(1); seconds > 1; --seconds, watched.Wait(1)) watched.Feed(Gga(++second));
    ++second;
  };
  feed(kUsed + kGpsInView, 5);
  EXPECT_EQ(SkyText(watched), "05+ 012+ 029- ");
  feed(kGlonassInView, 5);
  EXPECT_EQ(SkyText(watched), "05+ 012+ 029- 14 ");
  EXPECT_EQ(watched.View().counts->value.used, 7);  // GGA
  feed(kGlonassInView, 5);
  feed(kGlonassInView, 5);
  EXPECT_EQ(SkyText(watched), "14 ");
}

struct S_StateCase {
  const char* name;
  void (*play)(C_Watched& watched);
  eSourceState state;
};
const S_StateCase kStates[] = {
    {"Nothing", [](C_Watched&) {}, eSourceState::Waiting},
    {"Refused", [](C_Watched& w) { w.Change(eState::Refused, 1); }, eSourceState::Lost},
    {"Connected", [](C_Watched& w) { w.Change(eState::Connected); }, eSourceState::Waiting},
    {"Receiving", [](C_Watched& w) { w.Feed(Gga(0)); }, eSourceState::Receiving},
    {"Silent", [](C_Watched& w) { (w.Feed(Gga(0)), w.Wait(6)); }, eSourceState::Silent},
    {"Noise", [](C_Watched& w) { w.Feed(std::string(5000, 'x')); }, eSourceState::NoFrames},
    {"Lost", [](C_Watched& w) { (w.Change(eState::Connected), w.Feed(Gga(0)), w.Change(eState::Lost)); },
     eSourceState::Lost},
    {"Failed", [](C_Watched& w) { w.Change(eState::Failed, 3); }, eSourceState::Failed},
    {"Ended", [](C_Watched& w) { (w.Feed(Gga(0)), w.End()); }, eSourceState::Ended},
};
TEST_ROWS(MonitorState, Follows, kStates, row) {
  C_Watched watched;
  row.play(watched);
  EXPECT_EQ(watched.View().state, row.state);
}

std::string FaultText(const S_SourceView& view) {
  std::string text;
  for (const S_FaultView& fault : view.faults)
    text += fmt::format("{} +{} {}: {}\n", fault.offset, fault.length, fault.what, fault.why);
  return text;
}

// The run of noise is one fault, from its first false start on; it goes on until a frame ends it.
TEST(MonitorFaults, AreRunsAndContents) {
  C_Watched watched;
  const std::string damaged = "$GPHDT,8.0,T*00\r\n";
  const std::string wrong = Sentence("GPGGA,not a time,,,,,,,,,,,,,");
  watched.Feed(Gga(0) + wrong + damaged + damaged);
  const std::size_t at = Gga(0).size();
  const std::string content =
      fmt::format("{} +{} GGA: too few fields, or a field that cannot be parsed\n", at, wrong.size() - 1);
  const std::size_t run = at + wrong.size();
  EXPECT_EQ(FaultText(watched.View()), fmt::format("{} +0 skipping: 2 checksum errors\n", run) + content);
  watched.Feed(Gga(1));
  EXPECT_EQ(FaultText(watched.View()), fmt::format("{} +34 skipped: 2 checksum errors\n", run) + content);
  EXPECT_EQ(watched.View().faultCount, 2);
  EXPECT_EQ(watched.View().framesBad, 2);
  EXPECT_EQ(watched.View().bytesSkipped, 34);
}

using t_Counts = std::map<std::string, std::vector<std::uint64_t>>;

t_Counts CountsOf(const S_SourceView& view) {
  t_Counts counts{{"all", {view.bytes, view.framesGood, view.framesBad, view.bytesSkipped}}};
  for (const S_MessageView& message : view.messages)
    counts[message.protocol + " " + message.name] = {message.count, message.faults};
  return counts;
}

t_Counts CountsOf(const C_StreamAccount& account) {
  t_Counts counts{{"all", {account.Bytes(), account.FramesGood(), account.FramesBad(), account.BytesDamaged()}}};
  for (const S_MessageCount& message : account.Messages())
    counts[fmt::format("{} {}", velagnss::ProtocolName(message.key.protocol), message.name)] = {message.count,
                                                                                                message.faults};
  return counts;
}

// However the stream is cut, also when it is quiet in the midst of a frame.
TEST(MonitorFaults, AreCountedAsInTheAccount) {
  const std::string session = ReadHostFile("samples/session.bin");
  for (const std::size_t piece : {100, 10007, 1000000}) {
    C_SourceModel model("port");
    C_StreamAccount account;
    C_RecordRun run({ParseSearchList({}, false).value(), std::nullopt}, {&model, &account});
    run.BeginInput("port");
    for (std::size_t at = 0; at < session.size(); at += piece) {
      const std::string_view bytes = std::string_view(session).substr(at, piece);
      run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, {}});
      if (at == 10 * piece) run.OnQuiet();
    }
    const S_SourceView before = model.Snapshot();
    run.EndInput();
    EXPECT_EQ(before.framesBad, account.AtEnd().framesBad) << piece;
    EXPECT_EQ(CountsOf(model.Snapshot()), CountsOf(account)) << piece;
  }
}

struct S_FilterCase {
  const char* name;
  const char* filter;
  const char* kept;  // names, the newest first; or the error
};
const S_FilterCase kFilters[] = {
    {"None", "", "HPR GGA RTCM1013 event GST RMC GGA "},
    {"Blank", " ", "HPR GGA RTCM1013 event GST RMC GGA "},
    {"Message", "gga", "GGA GGA "},
    {"Several", "GST, rmc", "GST RMC "},
    {"Protocol", "rtcm3", "RTCM1013 "},
    {"Number", "1013,HPR", "HPR RTCM1013 "},
    {"Period", "GGA:5", "GGA "},
    {"Unknown", "gga,nonsense",
     "unknown message 'nonsense'; give a name like GGA, BIN95 or HPR, or a number like 1077"},
};
// Set before or after the objects came: both leave the same.
TEST_ROWS(MonitorFilter, KeepsWhatPasses, kFilters, row) {
  const std::string stream = Gga(0) + Rmc(0) + Gst(0) + "noise" + Date() + Gga(1) + Sentence("GPHPR,1");
  for (const bool isBefore : {true, false}) {
    C_Watched watched;
    std::optional<std::string> error;
    if (isBefore) error = watched.Model().SetFilter(row.filter);
    watched.Feed(stream);
    watched.Feed("\n");
    if (!isBefore) error = watched.Model().SetFilter(row.filter);
    std::string names;
    for (const auto& object : watched.View().raw) names += (object->name.empty() ? "event" : object->name) + " ";
    EXPECT_EQ(error.value_or(names), row.kept) << isBefore;
  }
}

// As many of everything as the wire can name.
TEST(MonitorModel, IsBounded) {
  C_Watched watched;
  for (unsigned int i = 0; i < 4000; ++i) {
    watched.Feed(Sentence(fmt::format("PX{:05},{}", i, std::string(60, '9'))) + Position(63781370000, i) +
                 "$GP$GP\xD3");
    watched.Feed(Msm(1077, kNoon + 100 * i, {{}}, 2, i));
  }
  watched.End();
  const S_SourceView view = watched.View();
  EXPECT_EQ(view.messages.size(), 256);
  EXPECT_EQ(view.messagesLeftOut, 4000 + 2 - 256);
  EXPECT_EQ(view.stations.size(), 64);
  EXPECT_EQ(view.stations.back().number, 3999);
  EXPECT_EQ(view.faults.size(), 100);
  EXPECT_GE(view.faultCount, 4000);
  EXPECT_EQ(view.raw.size(), 500);
  EXPECT_EQ(view.framesGood, 12000);
}

}  // namespace
