#include "apps/velagnss/json/RecordJson.h"

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "HostData.h"
#include "Streams.h"
#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/text/MessageNames.h"

namespace {

using nlohmann::json;

// As it is delivered: with the CR that ends it.
std::string Delivered(std::string_view body) {
  const std::string sentence = Sentence(body);
  return sentence.substr(0, sentence.size() - 1);
}

// The line of JSON for a frame.
json Line(velagnss::RecordDecoder& decoder, std::string_view message, std::string_view bytes) {
  const Host::S_MessageKey key = Host::FindMessages(message).at(0);
  const velagnss::Frame frame = {reinterpret_cast<const unsigned char*>(bytes.data()),
                                 static_cast<unsigned short>(bytes.size()), key.protocol, key.type, 0};
  Host::C_JsonWriter writer;
  Host::C_FrameJson(writer).WriteFrame(frame, &decoder.Decode(frame), decoder.Clock());
  return json::parse(writer.Text());
}

struct S_SentenceCase {
  const char* name;
  const char* message;
  const char* body;
  const char* decoded;
  const char* fields;  // JSON, those that are compared
};
// clang-format off
const S_SentenceCase kSentences[] = {
    {"GgaAllEmpty", "GGA", "GPGGA,,,,,,,,,,,,,,", "full",
     R"({"talker":"GP","time_of_day_s":null,"latitude_deg":null,"longitude_deg":null,"quality":null,"satellites":null,
         "hdop":null,"altitude_m":null,"geoid_separation_m":null,"differential_age_s":null,"reference_station":null})"},
    {"GgaSouthWest", "GGA", "GNGGA,123519.5,4807.5,S,01131.25,W,4,08,0.9,545.4,M,46.9,M,1.5,0042", "full",
     R"({"time_of_day_s":45319.5,"latitude_deg":-48.125,"longitude_deg":-11.520833333333334,"quality":4,"hdop":0.9,
         "altitude_m":545.4,"geoid_separation_m":46.9,"differential_age_s":1.5,"reference_station":42})"},
    {"RmcOfNmea20", "RMC", "GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191124,020.3,E", "full",
     R"({"date":"2024-11-19","magnetic_variation_deg":20.3,"variation_direction":"E","mode":null,"nav_status":null,
         "status":"valid","speed_knots":0.5,"course_true_deg":54.7})"},
    {"RmcVariationWest", "RMC", "GPRMC,225446,V,4916.45,N,12311.12,W,,,191124,020.3,W,N,V", "full",
     R"({"variation_direction":"W","status":"not valid","mode":"not valid","nav_status":"not valid","speed_knots":null})"},
    {"RmcWithoutVariation", "RMC", "GPRMC,225446,A,4900.00,N,12300.00,W,,,191124,,,A", "full",
     R"({"magnetic_variation_deg":null,"variation_direction":null,"longitude_deg":-123.0,"mode":"autonomous"})"},
    {"GsvOfOneSatellite", "GSV", "GPGSV,1,1,01,21,00,000,", "full",
     R"({"satellites":[{"id":21,"elevation_deg":0,"azimuth_deg":0,"snr_dbhz":null}],"signal_id":null})"},
    {"GsaLeavesEmptySlotsOut", "GSA", "GNGSA,A,3,04,,09,,,,,,,,,,2.5,1.3,2.1,1", "full",
     R"({"operation_mode":"A","fix_type":"3d","satellite_ids":[4,9],"pdop":2.5,"system_id":1})"},
    {"GnsModes", "GNS", "GNGNS,014035.00,4332.69,N,17235.48,W,RRN,13,0.9,25.63,11.24,,", "full",
     R"({"modes":["rtk","rtk","not valid"],"satellites":13,"reference_station":null})"},
    {"ZdaZone", "ZDA", "GPZDA,201530.00,04,07,2002,-05,30", "full",
     R"({"date":"2002-07-04","time_of_day_s":72930.0,"zone_hours":-5,"zone_minutes":30})"},
    {"BadField", "GGA", "GNGGA,123519,48x7.5,S,01131.25,W,4,08,0.9,545.4,M,46.9,M,1.5,0042", "raw",
     R"({"text":"$GNGGA,123519,48x7.5,S,01131.25,W,4,08,0.9,545.4,M,46.9,M,1.5,0042*00"})"},
    {"Hdt", "HDT", "GPHDT,274.07,T", "full", R"({"talker":"GP","heading_true_deg":274.07})"},
    {"Apb", "APB", "GPAPB,A,A,0.10,R,N,V,V,011,M,DEST,,,013,M", "full",
     R"({"status":"A","cross_track_error_nmi":0.1,"steer":"R","arrival":"V","bearing_origin_reference":"M",
         "destination":"DEST","bearing_deg":null,"bearing_reference":null,"heading_to_steer_deg":13.0,"mode":null})"},
    {"Grs", "GRS", "GNGRS,104148.00,1,2.6,,-1.6,,,,,,,,,0.5,1,A", "full",
     R"({"mode":1,"residuals_m":[2.6,null,-1.6,null,null,null,null,null,null,null,null,0.5],"signal_id":10})"},
    {"OtherSentence", "HDM", "HCHDM,91.2,M", "partial", R"({"start":"$","talker":"HC","formatter":"HDM","fields":["91.2","M"]})"},
    {"SameLetters", "GNS", "PMGNST,02.40,3", "partial", R"({"start":"$","maker":"MGN","sentence":"PMGNST","fields":["02.40","3"]})"},
    {"OtherUnit", "HDT", "GPHDT,274.07,M", "raw", R"({"text":"$GPHDT,274.07,M*1A"})"},
    {"Hpr", "HPR", "PKVN,HPR,120000.25,271.5,-1.25,,G", "full",
     R"({"time_of_day_s":43200.25,"heading_deg":271.5,"pitch_deg":-1.25,"roll_deg":null,"field6":"G"})"},
    {"Rd1", "RD1", "RD1,1234.5,7,1500.5,x,12-34,100,1,2,FF,10,3,DEADBEEF", "full",
     R"({"time_of_week_s":1234.5,"field5a":12,"field5b":34,"field9":255,"field12":3735928559})"},
};
// clang-format on

TEST_ROWS(SentenceJson, ShowsTheFields, kSentences, row) {
  velagnss::RecordDecoder decoder;
  const json line = Line(decoder, row.message, Delivered(row.body));
  EXPECT_EQ(line["decoded"], row.decoded) << line;
  const json expected = json::parse(row.fields);
  for (const auto& [name, value] : expected.items())
    if (name == "text")
      EXPECT_EQ(line["fields"][name].get<std::string>().substr(0, 15), value.get<std::string>().substr(0, 15));
    else
      EXPECT_EQ(line["fields"][name], value) << name;
}

// The first frame of a binary message in the sample session, and what its generator says it holds.
struct Broadcast {
  explicit Broadcast(const char* message) {
    const json manifest = json::parse(ReadHostFile("samples/session.json"));
    for (const json& row : manifest["numbers"])
      if (row["message"] == message && numbers.is_null()) numbers = row;
    frame = ReadHostFile("samples/session.bin").substr(numbers["offset"], numbers["length"]);
  }
  json numbers;
  std::string frame;
};

const std::string kZda = Delivered("GPZDA,120000.00,18,05,2024,00,00");

// Without a date the weeks are not resolved: what depends on them is null.
TEST(EphemerisJson, ShowsWeeksOnceThereIsADate) {
  velagnss::RecordDecoder decoder;
  const Broadcast gps("95");
  const Broadcast sbas("93");
  for (const json& week : {json(), json("stream")}) {
    const json fields = Line(decoder, "BIN95", gps.frame)["fields"];
    EXPECT_EQ(fields["week"], week);
    EXPECT_EQ(fields["tx_week"], week.is_null() ? json() : json(2314));
    EXPECT_EQ(fields["tx_time"].is_null(), week.is_null());
    EXPECT_EQ(fields["tx_s"], gps.numbers["sixSecondCount"].get<double>() * 6);
    EXPECT_EQ(fields["toe_s"], gps.numbers["toe"].get<double>() * 16);
    EXPECT_EQ(fields["ura_m"], 2.8284271247461903);  // index 1: 2^1.5
    const json ofSbas = Line(decoder, "BIN93", sbas.frame)["fields"];
    EXPECT_EQ(ofSbas["week"], week);
    EXPECT_EQ(ofSbas["ref_week"].is_null(), week.is_null());
    EXPECT_EQ(ofSbas["frame_s"].is_null(), week.is_null());
    Line(decoder, "ZDA", kZda);
  }
}

TEST(EphemerisJson, GlonassCarriesItsDate) {
  velagnss::RecordDecoder decoder;
  const json fields = Line(decoder, "BIN65", Broadcast("65").frame)["fields"];
  EXPECT_EQ(fields["week"], "stream");
  EXPECT_EQ(fields["ref_time"].get<std::string>().substr(0, 8), "2024-05-");
  EXPECT_EQ(fields["ref_time"].get<std::string>().substr(19), "+03:00");
}

// 7-of-8 packing: the low 7 bits of each byte, low bits first. Words 0x6261, 0x0063 and their sum 0x62C4.
TEST(RecordJson, UnpacksPayloads) {
  velagnss::RecordDecoder decoder;
  const json line = Line(decoder, "JROX", "$JROX," + Packed("abc") + "\r\n");
  EXPECT_EQ(line["fields"], json({{"text", "$JROX,"}, {"payload_length", 4}, {"payload", "61626300"}}));
}

}  // namespace
