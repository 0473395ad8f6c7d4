// The rules of the public schemas of GPX 1.1 and OGC KML 2.2, as far as tracks go, and the tracks of the program
// against them: names, order and number of elements, attributes, forms of values.
#include <gmock/gmock.h>

#include <map>
#include <regex>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "TrackReader.h"

namespace {

using testing::HasSubstr;

struct S_Element {
  const char* children;    // regular expression of their names, each followed by a space
  const char* attributes;  // of "name=value;", in the order of the document
  const char* text;
};
using t_Schema = std::map<std::string, S_Element>;

#define DECIMAL R"([-+]?(\d+(\.\d*)?|\.\d+))"
#define LATITUDE R"(-?(90(\.0*)?|[0-8]?\d(\.\d+)?))"
#define LONGITUDE R"((-180(\.0*)?|-?(1[0-7]\d|\d?\d)(\.\d+)?))"  // GPX 1.1, longitudeType: below 180
#define ANGLE R"(-?(180(\.0*)?|(1[0-7]\d|\d?\d)(\.\d+)?))"       // KML 2.2, angle180Type
#define DATE_TIME R"(\d{4}-(0[1-9]|1[0-2])-(0[1-9]|[12]\d|3[01])T([01]\d|2[0-3]):[0-5]\d:[0-5]\d(\.\d+)?Z)"
#define ALTITUDE_MODE "clampToGround|relativeToGround|absolute"

// clang-format off
const t_Schema kGpx = {
    {"gpx",      {"(metadata )?(wpt )*(rte )*(trk )*(extensions )?", "version=1\\.1;creator=.+;(xmlns(:\\w+)?=[^;]+;)+(xsi:schemaLocation=[^;]+;)?", ""}},
    {"trk",      {"(name )?(cmt )?(desc )?(src )?(link )*(number )?(type )?(extensions )?(trkseg )*", "", ""}},
    {"trkseg",   {"(trkpt )*(extensions )?", "", ""}},
    {"trkpt",    {"(ele )?(time )?(magvar )?(geoidheight )?(name )?(cmt )?(desc )?(src )?(link )*(sym )?(type )?(fix )?(sat )?(hdop )?(vdop )?"
                  "(pdop )?(ageofdgpsdata )?(dgpsid )?(extensions )?", "lat=" LATITUDE ";lon=" LONGITUDE ";", ""}},
    {"name",     {"", "", "[^]+"}},
    {"ele",      {"", "", DECIMAL}},
    {"time",     {"", "", DATE_TIME}},
    {"geoidheight", {"", "", DECIMAL}},
    {"fix",      {"", "", "none|2d|3d|dgps|pps"}},
    {"sat",      {"", "", R"(\d+)"}},
    {"hdop",     {"", "", DECIMAL}},
    {"extensions", {"(\\w+:\\w+ )*", "", ""}},  // of other namespaces only
    {"gpxtpx:TrackPointExtension", {"(gpxtpx:atemp )?(gpxtpx:wtemp )?(gpxtpx:depth )?(gpxtpx:hr )?(gpxtpx:cad )?(gpxtpx:speed )?"
                                    "(gpxtpx:course )?(gpxtpx:bearing )?(gpxtpx:Extensions )?", "", ""}},
    {"gpxtpx:speed",  {"", "", R"(\d+(\.\d+)?)"}},
    {"gpxtpx:course", {"", "", R"(360(\.0*)?|(3[0-5]\d|[12]\d\d|\d?\d)(\.\d+)?)"}},
};
#define FEATURE "(name )?(visibility )?(open )?(address )?(Snippet )?(description )?(TimeStamp |TimeSpan )?(styleUrl )?(Style |StyleMap )*(Region )?(ExtendedData )?"
const t_Schema kKml = {
    {"kml",        {"(NetworkLinkControl )?(Document |Folder |Placemark )?", "(xmlns(:\\w+)?=[^;]+;)+", ""}},
    {"Document",   {FEATURE "(Schema )*(Document |Folder |Placemark )*", "(id=\\w+;)?", ""}},
    {"Folder",     {FEATURE "(Document |Folder |Placemark )*", "(id=\\w+;)?", ""}},
    {"Placemark",  {FEATURE "(Point |LineString |gx:Track )?", "(id=\\w+;)?", ""}},
    {"name",       {"", "", "[^]+"}},
    {"Schema",     {"(SimpleField )*(gx:SimpleArrayField )*", "(name=\\w+;)?(id=\\w+;)?", ""}},
    {"gx:SimpleArrayField", {"", "name=\\w+;type=(string|int|uint|short|ushort|float|double|bool);", ""}},
    {"Point",      {"(extrude )?(altitudeMode )?(coordinates )?", "", ""}},
    {"LineString", {"(extrude )?(tessellate )?(altitudeMode )?(coordinates )?", "", ""}},
    {"altitudeMode", {"", "", ALTITUDE_MODE}},
    {"coordinates", {"", "", "\\s*(" ANGLE "," LATITUDE "(," DECIMAL ")?\\s*)+"}},
    {"gx:Track",   {"(altitudeMode )?(when )*(gx:coord )*(gx:angles )*(Model )?(ExtendedData )?", "", ""}},
    {"when",       {"", "", DATE_TIME}},
    {"gx:coord",   {"", "", ANGLE " " LATITUDE " " DECIMAL}},
    {"ExtendedData", {"(SchemaData )*", "", ""}},
    {"SchemaData", {"(SimpleData )*(gx:SimpleArrayData )*", "schemaUrl=#\\w+;", ""}},
    {"gx:SimpleArrayData", {"(gx:value )*", "name=\\w+;", ""}},
    {"gx:value",   {"", "", "[^]*"}},
};
// clang-format on

std::string Expect(const char* what, const std::string& actual, const char* pattern, const std::string& element) {
  if (std::regex_match(actual, std::regex(pattern))) return "";
  return fmt::format("{} of {}: '{}'", what, element, actual);
}

// The first fault below an element; empty when there is none.
std::string FaultOf(const tinyxml2::XMLElement& element, const t_Schema& schema) {
  const auto rule = schema.find(element.Name());
  if (rule == schema.end()) return fmt::format("no rule for {}", element.Name());
  std::string attributes;
  for (const auto* a = element.FirstAttribute(); a != nullptr; a = a->Next())
    attributes += std::string(a->Name()) + "=" + a->Value() + ";";
  std::string children;
  std::string fault;
  for (const auto* child = element.FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
    children += std::string(child->Name()) + " ";
    if (fault.empty()) fault = FaultOf(*child, schema);
  }
  const char* const text = element.GetText();
  for (const std::string& own : {Expect("children", children, rule->second.children, rule->first),
                                 Expect("attributes", attributes, rule->second.attributes, rule->first),
                                 Expect("text", text == nullptr ? "" : text, rule->second.text, rule->first)})
    if (!own.empty()) return own;
  return fault;
}

std::string FaultOfText(const std::string& text, const t_Schema& schema) {
  tinyxml2::XMLDocument document;
  if (document.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS) return document.ErrorStr();
  return FaultOf(*document.RootElement(), schema);
}

// Every kind of fix, positions without altitude and date, both sides of the date line, a pole, speeds that are none.
std::string Voyage() {
  std::string text = Sentence("GPGGA,110000,0700.00,N,18000.00,E,1,,,,M,,M,,");
  for (int i = 0; i < 36; ++i) {
    const std::string place = fmt::format("{},{},{}", i == 20 ? "9000.00,S" : fmt::format("{:02}30.00,S", i),
                                          i % 2 == 0 ? "18000.00" : "17959.9999999", i % 3 == 0 ? "E" : "W");
    text += Sentence(fmt::format("GPGGA,1200{:02},{},{},{:02},1.{},{},M,46.9,M,,", i, place, i % 9, i, i % 3,
                                 i % 4 == 0 ? "" : std::to_string(i * 100 - 700)));
    if (i >= 10)
      text += Sentence(fmt::format("GPRMC,1200{:02}.5,A,{},{},{}.5,190524,,,D", i, place, i - 12, i * 20 - 300));
    if (i >= 10)
      text += Sentence(fmt::format("GPRMC,1200{:02},A,{},{},{}.5,190524,,,D", i, place, i - 12, i * 20 - 300));
  }
  return text;
}

struct S_FormatCase {
  const char* name;
  const t_Schema& schema;
  const char* track;  // the element that an input becomes
};
const S_FormatCase kFormats[] = {{"gpx", kGpx, "trk"}, {"kml", kKml, "Folder"}};

TEST_ROWS_F(TrackSchema, IsKept, Program, kFormats, row) {
  Write("voyage", Voyage());
  Write("void", Sentence("GPGGA,120000,,,,,0,,,,M,,M,,"));
  for (const char* inputs : {"$S", "voyage", "void", "voyage $S void"})
    EXPECT_EQ(FaultOfText(Run(std::string("velagnss -q convert --to ") + row.name + " " + inputs).output, row.schema),
              "")
        << inputs;
}

// An input is a track with its name, whatever characters the name has; an input without positions is none.
TEST_ROWS_F(TrackNames, AreThoseOfInputs, Program, kFormats, row) {
  const std::string names[] = {"a&b<c>\"d.bin", "\xC3\xA9t\xC3\xA9", "\xED\xA0\x80\xEF\xBF\xBF\x1b\xE0\x80\x80"};
  for (const std::string& name : names) Write(name, Voyage());
  Write("void", Sentence("GPGGA,120000,,,,,0,,,,M,,M,,"));
  const std::string text =
      Run(std::string("velagnss -q convert --to ") + row.name + " ./a* void \xC3* \xED* < " + "void").output;
  ASSERT_EQ(FaultOfText(text, row.schema), "");
  tinyxml2::XMLDocument document;
  document.Parse(text.data(), text.size());
  std::vector<std::string> found;
  for (const auto* track : Elements(document.RootElement(), row.track))
    found.emplace_back(track->FirstChildElement("name")->GetText());
  EXPECT_THAT(found, testing::ElementsAre(names[0], names[1], "\\xed\\xa0\\x80\\xef\\xbf\\xbf\\x1b\\xe0\\x80\\x80"));
}

// A gx:Track has as many times and values as positions.
TEST_F(Program, KmlTracksAreComplete) {
  Write("voyage", Voyage());
  const std::string text = Run("velagnss -q convert --to kml voyage $S").output;
  tinyxml2::XMLDocument document;
  document.Parse(text.data(), text.size());
  const auto tracks = Elements(document.RootElement(), "gx:Track");
  EXPECT_GT(tracks.size(), 3);
  for (const auto* track : tracks) {
    const std::size_t points = Elements(track, "gx:coord").size();
    EXPECT_EQ(Elements(track, "when").size(), points);
    for (const auto* array : Elements(track, "gx:SimpleArrayData"))
      EXPECT_EQ(Elements(array, "gx:value").size(), points) << array->Attribute("name");
  }
}

TEST_F(Program, TracksHaveSpeedAndCourse) {
  Write("in", Sentence("GPRMC,120000,A,0300.00,N,00400.00,E,10,90.5,190524,,,D"));
  EXPECT_THAT(Run("velagnss convert --to gpx in").output,
              HasSubstr("<gpxtpx:speed>5.144</gpxtpx:speed><gpxtpx:course>90.5</gpxtpx:course>"));
  EXPECT_THAT(Run("velagnss convert --to kml in").output,
              HasSubstr("\"speed_knots\">\n<gx:value>10</gx:value>\n</gx:SimpleArrayData>\n"
                        "<gx:SimpleArrayData name=\"course_true_deg\">\n<gx:value>90.5</gx:value>"));
}

}  // namespace
