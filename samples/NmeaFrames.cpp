#include <algorithm>

#include "samples/Frames.h"
#include "samples/Sky.h"

namespace {

// Formatters in the order of their type numbers, with the lengths within which a reader accepts them: from "$" to the
// first character of the line end.
struct S_Formatter {
  std::string_view name;
  std::size_t least;
  std::size_t most;
};

// clang-format off
constexpr S_Formatter kFormatters[] = {
    {"ALM", 27, 128}, {"APB", 21, 64},  {"BWC", 19, 88},  {"DTM", 15, 120}, {"HDG", 14, 120}, {"HDM", 14, 120},
    {"HDT", 14, 120}, {"HEV", 14, 120}, {"GGA", 22, 128}, {"GLL", 13, 60},  {"GNS", 20, 120}, {"GRS", 20, 250},
    {"GSA", 24, 250}, {"GST", 15, 70},  {"GSV", 10, 100}, {"RMA", 18, 90},  {"RMB", 20, 100}, {"RMC", 18, 90},
    {"ROT", 9, 25},   {"RRE", 11, 200}, {"VTG", 15, 50},  {"XTE", 12, 32},  {"ZDA", 13, 40},
};
// clang-format on

// Sentences that a receiver sends now and then, of all formatters without a builder of their own. {time}, {heading} and
// {magnetic} are filled in.
constexpr const char* kRareSentences[] = {
    "HEHDT,{heading},T",
    "HCHDG,{magnetic},,,1.3,E",
    "HCHDM,{magnetic},M",
    "TIROT,-0.4,A",
    "GPHEV,0.118",
    "GPDTM,W84,,0.0000,N,0.0000,E,0.0,W84",
    "GPGRS,{time},1,0.4,-0.7,1.1,0.0,-0.2,0.9,-1.3,0.5,,,,",
    "GPALM,1,1,15,266,00,4A31,48,0B2F,FD3C,A10D1B,5A28C7,7A4417,2E9B06,1F2,003",
    "GPXTE,A,A,0.03,R,N",
    "GPRMA,A,5128.6700,N,00000.1000,E,,,20.0,{heading},1.3,E",
    "GPRMB,A,0.03,R,BRIDGE,QUAY,5128.7000,N,00002.5000,E,001.6,089.2,020.0,V",
    "GPAPB,A,A,0.03,R,N,V,V,089.2,T,QUAY,089.5,T,{heading},T",
    "GPBWC,{time},5128.7000,N,00002.5000,E,089.2,T,090.5,M,001.6,N,QUAY",
    "GPRRE,04,05,-0.3,12,0.8,25,1.1,29,-0.6,1.4,2.2",
    "TIROT,12.5,V",
    "TIROT,,V",
};

constexpr int kVariation = 130;  // 1/100 degrees, east: magnetic variation at Greenwich

// What one talker reports.
struct S_SystemView {
  const char* talker;
  eSystem system;
  int systemId;
  int signalIds[2];  // 0: no second one
  int firstNumber;   // added to the satellite's own number
};

constexpr S_SystemView kViews[] = {
    {"GP", eGps, 1, {1, 8}, 0},
    {"GL", eGlonass, 2, {1, 3}, 64},
    {"GA", eGalileo, 3, {7, 0}, 0},
    {"GB", eBeidou, 4, {1, 0}, 0},
};

std::string SatelliteFields(const S_Satellite& satellite, int number, S_Context& context) {
  const S_Sight sight = SightOf(satellite, TimeOf(context.now));
  const auto fading = static_cast<int>(context.random.Below(4));
  const auto strength = static_cast<int>(StrengthOf(sight)) - fading;
  return ',' + Fixed(number, 0, 2) + ',' + Fixed(ElevationOf(sight), 0, 2) + ',' + Fixed(AzimuthOf(sight), 0, 3) + ',' +
         (satellite.use == eNotTracked ? "" : Fixed(strength, 0, 2));
}

// `signal`: the field of the signal id with its comma, or nothing.
void AppendGsv(std::vector<S_Frame>& frames, const S_SystemView& view, const std::string& signal, S_Context& context) {
  const std::vector<S_Satellite> satellites = SatellitesInView(view.system);
  const std::size_t inView = satellites.size();
  const std::size_t sentences = (inView + 3) / 4;
  for (std::size_t sentence = 0; sentence < sentences; ++sentence) {
    std::string body = std::string(view.talker) + "GSV," + std::to_string(sentences) + ',' +
                       std::to_string(sentence + 1) + ',' + Fixed(static_cast<std::int64_t>(inView), 0, 2);
    for (std::size_t index = 4 * sentence; index < inView && index < 4 * sentence + 4; ++index)
      body += SatelliteFields(satellites[index], view.firstNumber + satellites[index].number, context);
    frames.push_back(Sentence(body + signal));
  }
}

std::vector<S_Satellite> UsedSatellites(eSystem system) {
  std::vector<S_Satellite> satellites = TrackedSatellites(system);
  std::erase_if(satellites, [](const S_Satellite& satellite) { return satellite.use != eUsed; });
  return satellites;
}

std::string UsedCount(std::initializer_list<eSystem> systems) {
  std::size_t count = 0;
  for (const eSystem system : systems) count += UsedSatellites(system).size();
  return Fixed(static_cast<std::int64_t>(count), 0, 2);
}

// Age of the station's last observations, which come after the sentences of their second; number of the station.
std::string CorrectionFields(const S_Moment& now) {
  const int age = (now.second - kMsmPhase - 1 + kMsmPeriod) % kMsmPeriod + 1;
  return Fixed(age) + ".0," + Fixed(kStationId, 0, 4);
}

std::string UsedCount() { return UsedCount({eGps, eGlonass, eGalileo, eBeidou}); }

std::string GsaBody(const char* talker, const S_SystemView& view) {
  std::string body = std::string(talker) + "GSA,A,3";
  const std::vector<S_Satellite> used = UsedSatellites(view.system);
  for (const S_Satellite& satellite : used) body += ',' + Fixed(view.firstNumber + satellite.number, 0, 2);
  return body + std::string(12 - used.size(), ',') + ",1.0,0.6,0.8";
}

}  // namespace

S_Frame Sentence(const std::string& body) {
  const std::string bytes = '$' + body + '*' + Hex(Xor(body), 2) + '\r';
  const std::string name = body.substr(2, 3);
  for (std::uint32_t row = 0; row < std::size(kFormatters); ++row) {
    if (kFormatters[row].name != name) continue;
    Require(bytes.size() >= kFormatters[row].least && bytes.size() <= kFormatters[row].most, "length of " + bytes);
    return {eNmea, row, name, bytes, "\n", ""};
  }
  Require(false, "no formatter " + name);
  return {};
}

S_Frame MakeGga(S_Context& context) {
  const S_Moment& now = context.now;
  S_Frame frame = Sentence("GNGGA," + TimeField(now) + ',' + PositionFields(now) + ",4," + UsedCount() + ",0.6," +
                           Fixed(now.altitude, 3) + ",M,45.412,M," + CorrectionFields(now));
  frame.facts = "\"secondOfDay\": " + std::to_string(now.secondOfDay) +
                ", \"latitude\": " + std::to_string(now.latitude) +
                ", \"longitude\": " + std::to_string(now.longitude) + ", \"altitude\": " + std::to_string(now.altitude);
  return frame;
}

S_Frame MakeRmc(S_Context& context) {
  const S_Moment& now = context.now;
  return Sentence("GNRMC," + TimeField(now) + ",A," + PositionFields(now) + ',' + Fixed(now.speed, 3) + ',' +
                  Fixed(now.course, 2, 6) + ',' + DateField(now) + ",1.3,E,R,S");
}

S_Frame MakeRmcOfNmea2(S_Context& context) {
  const S_Moment& now = context.now;
  return Sentence("GPRMC," + TimeField(now) + ",A," + PositionFields(now) + ',' + Fixed(now.speed, 3) + ',' +
                  Fixed(now.course, 2, 6) + ',' + DateField(now) + ",,");
}

S_Frame MakeVtg(S_Context& context) {
  const S_Moment& now = context.now;
  const std::int64_t kmh = std::int64_t{now.speed} * 1852 / 1000;
  return Sentence("GNVTG," + Fixed(now.course, 2, 6) + ",T," + Fixed(now.course - kVariation, 2, 6) + ",M," +
                  Fixed(now.speed, 3, 7) + ",N," + Fixed(kmh, 3, 7) + ",K,R");
}

S_Frame MakeVtgOfNmea2(S_Context& context) {
  return Sentence("GPVTG," + Fixed(context.now.course / 10, 1, 5) + ",T,,M," + Fixed(context.now.speed / 10, 2) +
                  ",N,,K");
}

S_Frame MakeGns(S_Context& context) {
  const S_Moment& now = context.now;
  const bool fourSystems = context.round % 2 == 0;
  return Sentence((fourSystems ? "GNGNS," : "GAGNS,") + TimeField(now) + ',' + PositionFields(now) +
                  (fourSystems ? ",RRAAN," + UsedCount() + ",0.6," : ",NNF," + UsedCount({eGalileo}) + ",1.1,") +
                  Fixed(now.altitude, 3) + ",45.412," + CorrectionFields(now) + (fourSystems ? ",S" : ""));
}

S_Frame MakeGll(S_Context& context) {
  const char* const talkers[] = {"GN", "GP", "GL"};
  return Sentence(std::string(talkers[context.round % 3]) + "GLL," + PositionFields(context.now) + ',' +
                  TimeField(context.now) + ",A,D");
}

S_Frame MakeZda(S_Context& context) {
  return Sentence("GNZDA," + TimeField(context.now) + ',' + Fixed(context.now.day, 0, 2) + ",05,2024,00,00");
}

S_Frame MakeGst(S_Context& context) {
  std::string body = "GNGST," + TimeField(context.now);
  const auto appendErrors = [&](std::initializer_list<int> leasts) {  // m
    for (const int least : leasts) body += ',' + Fixed(context.random.Between(least, least + 9), 3);
  };
  appendErrors({11, 14, 9});
  body += ",071.3";
  appendErrors({10, 12, 21});
  return Sentence(body);
}

S_Frame MakeRareSentence(S_Context& context) {
  std::string body = kRareSentences[context.round % std::size(kRareSentences)];
  Replace(body, "{time}", TimeField(context.now));
  Replace(body, "{heading}", Fixed(context.now.course, 2, 6));
  Replace(body, "{magnetic}", Fixed(context.now.course - kVariation, 2, 6));
  return Sentence(body);
}

std::vector<S_Frame> MakeGsvSet(S_Context& context) {
  std::vector<S_Frame> frames;
  for (const S_SystemView& view : kViews) {
    for (const int signal : view.signalIds)
      if (signal != 0) AppendGsv(frames, view, ',' + std::to_string(signal), context);
  }
  return frames;
}

std::vector<S_Frame> MakeGsvSetOfNmea2(S_Context& context) {
  std::vector<S_Frame> frames;
  AppendGsv(frames, kViews[context.round % 2], "", context);
  return frames;
}

std::vector<S_Frame> MakeGsaSet(S_Context&) {
  std::vector<S_Frame> frames;
  for (const S_SystemView& view : kViews)
    frames.push_back(Sentence(GsaBody("GN", view) + ',' + std::to_string(view.systemId)));
  return frames;
}

std::vector<S_Frame> MakeGsaSetOfNmea2(S_Context& context) {
  const S_SystemView& view = kViews[context.round % 2];
  return {Sentence(GsaBody(view.talker, view))};
}
