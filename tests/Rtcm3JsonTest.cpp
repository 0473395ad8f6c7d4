// RTCM 3 records as JSON, and that the schema allows them. Values are set in the records: decoding has tests of its
// own.
#include "apps/velagnss/json/Rtcm3Json.h"

#include <cstring>
#include <nlohmann/json.hpp>

#include "Cases.h"
#include "HostData.h"
#include "JsonSchema.h"
#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/text/MessageNames.h"

namespace {

using namespace velagnss;
using nlohmann::json;

template <class Record>
Record Numbered(unsigned int message) {
  Record record;
  record.message = static_cast<unsigned short>(message);
  return record;
}

void SetText(std::string_view text, Rtcm3Text& out) {
  out.size = static_cast<unsigned char>(text.size());
  text.copy(out.bytes, text.size());
}

Record Antenna() {
  auto record = Numbered<Rtcm3Antenna>(1033);
  record.station = 7;
  SetText("TRM55971.00     NONE", record.antenna);
  SetText("N\xC4VI \"2\"", record.receiver);
  return record;
}

Record Parameters() {
  auto record = Numbered<Rtcm3SystemParameters>(1013);
  record.mjd = 60448;
  record.secondOfDay = 86399;
  record.numAnnouncements = 1;
  record.announcements[0] = {1077, true, 0.5};
  return record;
}

Record Text() {
  auto record = Numbered<Rtcm3Message>(1029);
  record.numCharacters = 1;
  SetText("\xC3\xA4", record.text);
  return record;
}

Record Residuals() {
  auto record = Numbered<Rtcm3Residuals>(1031);
  record.system = ALGO::GNSS_GLONASS;
  record.numSatellites = 1;
  record.satellites[0].svId = 3;
  record.satellites[0].height = 0.25;
  return record;
}

// A satellite without signals, then one with two, of which one has a reserved number and no values.
Record Observations() {
  auto record = Numbered<Rtcm3Observations>(1084);
  record.system = ALGO::GNSS_GLONASS;
  record.time = {54000000, 6, 2314, 561618};
  record.isMoreToCome = true;
  record.numSatellites = record.numSignals = 2;
  for (Rtcm3Satellite& satellite : record.satellites) satellite.system = ALGO::GNSS_GLONASS;
  record.satellites[0].number = record.satellites[0].svId = 1;
  record.satellites[1].number = 2;
  record.satellites[1].channel = -4;
  for (Rtcm3Signal& signal : record.signals) SetEmpty_IFGnssObsData(signal.data, 1), signal.satellite = 1;
  Rtcm3Signal& signal = record.signals[0];
  std::memcpy(signal.code, "1C", 3);
  signal.number = 2;
  signal.data.Pseudorange = 21000000.125;
  signal.data.Measurement3 = -1500.5;
  signal.lock = Rtcm3Lock::MaybeLost;
  signal.halfCycle = 0;
  return record;
}

Record NavicEphemeris() {
  auto record = Numbered<Rtcm3KeplerEphemeris>(1041);
  SetEmpty_IFEphRec(record.ephemeris);
  record.ephemeris.System = record.ephemeris.TimeSystem = kNavic;
  record.ephemeris.SvId = 3;
  record.ephemeris.TxTime = NA_DOUBLE;
  record.ephemeris.CodeOnL2 = record.ephemeris.L2PDataFlag = NA_U16;
  record.ephemeris.Iodc = NA_U32;
  record.weekSent = 1290;
  return record;
}

Record GlonassEphemeris() {
  auto record = Numbered<Rtcm3PvaEphemeris>(1020);
  SetEmpty_IFEphRec(record.ephemeris);
  record.ephemeris.System = record.ephemeris.TimeSystem = ALGO::GNSS_GLONASS;
  record.ephemeris.RefTime = 900;  // of the day: it is not known
  record.frameTimeSent = 1;
  return record;
}

template <unsigned int Message>
Record Corrections() {
  auto record = Numbered<Rtcm3Ssr>(Message);
  record.system = ALGO::GNSS_BEIDOU;
  record.numSatellites = 2;
  record.numBiases = 2;
  record.satellites[0].svId = 5;
  record.satellites[0].radial = -0.1;
  record.satellites[0].clock = 0.5;
  record.satellites[1].firstBias = 1;
  record.satellites[1].numBiases = 1;
  record.biases[1].number = 9;
  record.biases[1].bias = 1.25;
  return record;
}

struct S_RecordCase {
  const char* name;
  const char* message;
  Record (*make)();    // a record itself would be 14 KB
  const char* fields;  // JSON, those that are compared
};
// clang-format off
const S_RecordCase kRecords[] = {
    {"Antenna", "1033", &Antenna, R"({"station":7,"antenna":"TRM55971.00     NONE","receiver":"N\u00c4VI \"2\"","firmware":null})"},
    {"Parameters", "1013", &Parameters, R"({"mjd":60448,"second_of_day_s":86399,"leap_seconds_s":null,"announcements":[{"number":1077,"regular":1,"interval_s":0.5}]})"},
    {"Text", "1029", &Text, R"({"characters":1,"text":"\u00c3\u00a4"})"},
    {"Residuals", "1031", &Residuals,
     R"({"system":"glonass","satellites":[{"sv":3,"constant_mm":null,"distance_ppm":null,"height_ppm":0.25,"iono_constant_mm":null,"iono_distance_ppm":null}]})"},
    {"Observations", "1084", &Observations,
     R"({"epoch_ms":54000000,"day_of_week":6,"gps_week":2314,"gps_s":561618.0,"more_to_come":1,"range_modulus_m":null,"satellites":[
       {"system":"glonass","sv":1,"number":1,"freq_channel":null,"extended_info":null,"rough_range_ms":null,"rough_rate_m_per_s":null,"signals":[]},
       {"system":"glonass","sv":null,"number":2,"freq_channel":-4,"extended_info":null,"rough_range_ms":null,"rough_rate_m_per_s":null,"signals":[
         {"signal":"1C","number":2,"pseudorange_m":21000000.125,"carrier_phase_cycles":null,"phase_range_m":null,"doppler_hz":-1500.5,
          "range_rate_m_per_s":null,"cn0_dbhz":null,"half_cycle":0,"lock":"maybe lost","lock_time_s":null,"lock_indicator":null},
         {"signal":null,"number":null,"pseudorange_m":null,"carrier_phase_cycles":null,"phase_range_m":null,"doppler_hz":null,
          "range_rate_m_per_s":null,"cn0_dbhz":null,"half_cycle":null,"lock":null,"lock_time_s":null,"lock_indicator":null}]}]})"},
    {"Navic", "1041", &NavicEphemeris, R"({"system":"navic","sv":3,"tx_s":null,"code_on_l2":null,"iodc":null,"week_sent":1290,"tgd2_s":null,"week":null})"},
    {"GlonassWithoutDay", "1020", &GlonassEphemeris, R"({"ref_s":null,"frame_s":null,"tk_sent":1,"more_data":null})"},
    {"Orbits", "1258", &Corrections<1258>, R"({"satellites":[
       {"sv":5,"ephemeris_issue":null,"ephemeris_toe_s":null,"radial_m":-0.1,"along_track_m":null,"cross_track_m":null,"radial_m_per_s":null,"along_track_m_per_s":null,"cross_track_m_per_s":null},
       {"sv":0,"ephemeris_issue":null,"ephemeris_toe_s":null,"radial_m":null,"along_track_m":null,"cross_track_m":null,"radial_m_per_s":null,"along_track_m_per_s":null,"cross_track_m_per_s":null}]})"},
    {"Biases", "1260", &Corrections<1260>, R"({"satellites":[{"sv":5,"biases":[]},{"sv":0,"biases":[{"signal":null,"number":9,"bias_m":1.25}]}]})"},
    {"Accuracy", "1262", &Corrections<1262>, R"({"satellites":[{"sv":5,"accuracy_index":null,"accuracy_m":null},{"sv":0,"accuracy_index":null,"accuracy_m":null}]})"},
    {"HighRate", "1263", &Corrections<1263>, R"({"satellites":[{"sv":5,"high_rate_clock_m":null},{"sv":0,"high_rate_clock_m":null}]})"},
    {"Clocks", "1259", &Corrections<1259>, R"({"satellites":[{"sv":5,"clock_m":0.5,"clock_m_per_s":null,"clock_m_per_s2":null},{"sv":0,"clock_m":null,"clock_m_per_s":null,"clock_m_per_s2":null}]})"},
};
// clang-format on

TEST_ROWS(Rtcm3Json, ShowsTheFields, kRecords, row) {
  static const JsonSchema schema(json::parse(ReadHostFile("docs/velagnss.schema.json")));
  const Host::S_MessageKey key = Host::FindMessages(row.message).at(0);
  const unsigned char bytes[6] = {};
  DecodedFrame decoded;
  decoded.record = row.make();
  decoded.result = 0;
  decoded.depth = Depth::Full;
  Host::C_JsonWriter writer;
  Host::C_FrameJson(writer).WriteFrame({bytes, sizeof bytes, key.protocol, key.type, 0}, &decoded);
  const json line = json::parse(writer.Text());
  EXPECT_EQ(schema.Check(line), "") << line;
  const json expected = json::parse(row.fields);
  for (const auto& [name, value] : expected.items()) EXPECT_EQ(line["fields"][name], value) << name;
}

}  // namespace
