#include "textproto/NmeaSentenceCodec.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "Cases.h"
#include "NmeaMoreRecords.h"
#include "RecordLine.h"
#include "Streams.h"
#include "records/ResultCodes.h"

namespace {

using namespace velagnss;
using MoreRecords::Line;

struct S_Decoded {
  unsigned int result = 99;
  std::string line;
};

// From memory that ends with the sentence.
S_Decoded Decode(std::string_view sentence) {
  ExactCopy copy(sentence);
  NmeaRecord record = S_GGA_Data();
  const unsigned int result = DecodeSentence({reinterpret_cast<const char*>(copy.Data()), copy.Size()}, record);
  return {result, Line(record)};
}

std::string Encode(const NmeaRecord& record, unsigned int& result) {
  char out[kMaxSentenceLength];
  std::size_t length = 7777;
  result = EncodeSentence(record, out, sizeof out, length);
  EXPECT_EQ(length == 7777, result != 0);
  return result == 0 ? std::string(out, length) : "";
}

struct S_Case {
  const char* name;
  std::string sentence;
  unsigned int result;
  const char* line;
};

const std::string kLong(990, 'x');
// clang-format off
const S_Case kCases[] = {
    {"Gst",           "$GPGST,172814.0,0.006,0.023,0.020,273.6,0.023,0.020,0.031*6A", 0, "GP 62894 0.006 0.023 0.02 273.6 0.023 0.02 0.031"},
    {"GstWithGaps",   "$GNGST,003956.00,235111,,,,2.3,3.5,4.0*46",                    0, "GN 2396 235111 - - - 2.3 3.5 4"},
    {"Gbs",           "$GPGBS,015509.00,-0.031,-0.186,0.219,19,0.000,-0.354,6.972*4D", 0, "GP 6909 -0.031 -0.186 0.219 19 0 -0.354 6.972 - -"},
    {"GbsOf411",      Sentence("GNGBS,235458.00,1.4,1.3,3.1,03,,-21.4,3.8,1,B"),      0, "GN 86098 1.4 1.3 3.1 3 - -21.4 3.8 1 11"},
    {"Grs",           Sentence("GPGRS,024603.00,1,-1.8,-2.7,0.3,,,,,,,,,"),           0, "GP 9963 1 -1.8/-2.7/0.3/-/-/-/-/-/-/-/-/- - -"},
    {"GrsOf411",      Sentence("GNGRS,104148.00,1,2.6,2.2,-1.6,,,,,,,,,0.5,1,8"),     0, "GN 38508 1 2.6/2.2/-1.6/-/-/-/-/-/-/-/-/0.5 1 8"},
    {"Hdt",           "$GPHDT,274.07,T*03",                                           0, "GP 274.07"},
    {"HdtEmpty",      "$IIHDT,,T*0C",                                                 0, "II -"},
    {"Ths",           Sentence("GPTHS,77.52,E"),                                      0, "GP 77.52 E"},
    {"Hdg",           "$SDHDG,181.7,,,0.6,E*3C",                                      0, "SD 181.7 - . 0.6 E"},
    {"HdgOfTwo",      Sentence("HCHDG,98.3,0.1,W,12.6,W"),                            0, "HC 98.3 0.1 W 12.6 W"},
    {"Rot",           Sentence("HEROT,-11.23,A"),                                     0, "HE -11.23 A"},
    {"Dtm",           "$GPDTM,W84,,0.0,N,0.0,E,0.0,W84*6F",                           0, "GP \"W84\" \"\" 0 N 0 E 0 \"W84\""},
    {"DtmSubdivided", Sentence("GPDTM,999,x,0.08,S,0.07,W,-47.7,P90"),                0, "GP \"999\" \"x\" 0.08 S 0.07 W -47.7 \"P90\""},
    {"Txt",           "$GPTXT,01,01,01,ANTENNA OK*35",                                0, "GP 1 1 1 \"ANTENNA OK\""},
    {"TxtWithComma",  Sentence("GNTXT,01,02,07,a, b,,^2C,"),                          0, "GN 1 2 7 \"a, b,,^2C,\""},
    {"TxtLong",       Sentence("GNTXT,01,01,02," + kLong),                            0, nullptr},
    {"TxtOfItsOwn",   "$GPTXT,DEFAULT PVT CONFIGURATION*2A",                          11, "$"},
    {"Vhw",           "$SDVHW,182.4,T,181.7,M,0.0,N,0.0,K*42",                        0, "SD 182.4 181.7 0 0"},
    {"Dbt",           "$SDDBT,1.8,f,0.5,M,0.3,F*09",                                  0, "SD 1.8 0.5 0.3"},
    {"Dpt",           "$SDDPT,0.5,0.5,*7B",                                           0, "SD 0.5 0.5 -"},
    {"DptBefore30",   Sentence("INDPT,2.3,-1.5"),                                     0, "IN 2.3 -1.5 -"},
    {"Mtw",           "$SDMTW,12.6,C*01",                                             0, "SD 12.6"},
    {"Mwv",           "$WIMWV,297.6,R,5.6,N,A*2A",                                    0, "WI 297.6 R 5.6 N A"},
    {"Vlw",           Sentence("IIVLW,2.8,N,0.5,N,7803.2,N,1.25,N"),                  0, "II 2.8 0.5 7803.2 1.25"},
    {"VlwBefore30",   Sentence("IIVLW,7803.2,N,0.00,N"),                              0, "II 7803.2 0 - -"},
    {"Rmb",           "$GPRMB,A,0.66,L,003,004,4917.25,N,12309.5,W,001.3,052.5,000.5,V*17", 4, "$"},
    {"RmbBefore23",   Sentence("GPRMB,A,0.66,L,003,004,4915.00,N,12330.0,W,001.3,052.5,000.5,V"), 0, "GP A 0.66 L \"003\" \"004\" 49.25 -123.5 1.3 52.5 0.5 V 10"},
    {"RmbEmpty",      "$GPRMB,,,,,,,,,,,,,,N*04",                                     0, "GP . - . \"\" \"\" - - - - - . 0"},
    {"Xte",           Sentence("GPXTE,A,A,0.67,L,N"),                                 0, "GP A A 0.67 L 10"},
    {"XteEmpty",      "$GPXTE,,,,,N,N*5E",                                            0, "GP . . - . 0"},
    {"Apb",           Sentence("GPAPB,A,A,0.10,R,N,V,V,011,M,DEST,012,T,013,M,A"),    0, "GP A A 0.1 R V V 11 M \"DEST\" 12 T 13 M 1"},
    {"ApbEmpty",      "$GPAPB,,,,,,,,,,,,,,,N*26",                                    0, "GP . . - . . . - . \"\" - . - . 0"},
    {"Bwc",           Sentence("GPBWC,195811,5307.5,N,00521.0,E,213.9,T,213.2,M,4.25,N,HOME,A"), 0, "GP 71891 53.125 5.35 213.9 213.2 4.25 \"HOME\" 1"},
    {"BwcOfNoName",   "$GPBWC,195811,5307.2833,N,00521.7536,E,213.9,T,213.2,M,4.25,N,,A*59", 0, nullptr},
    {"Wpl",           Sentence("GPWPL,4807.5,S,01130.0,E,WPTNME"),                    0, "GP -48.125 11.5 \"WPTNME\""},
    {"Gga",           "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47", 0, "GP 45319 48.1173 11.516666666666667 1 8 0.9 545.4 46.9 - -"},
    {"Rmc",           Sentence("GPRMC,225446,A,4915.0,N,12330.0,W,000.5,054.7,191124,020.3,W"), 0, "GP 2024 11 19 82486 49.25 -123.5 0.5 54.7 20.3 87 10 0 5"},
    {"Other",         Sentence("IIXDR,C,19.5,C,TempAir"),                             0, "$IIXDR|C|19.5|C|TempAir"},
    {"OtherEmpty",    "$GPAAM,,,,N,*38",                                              0, "$GPAAM||||N|"},
    {"Encapsulated",  "!AIVDM,1,1,1,,13aI8e?P00PGpU:NR6s00?vT2000,0,0*1C",            0, "!AIVDM|1|1|1||13aI8e?P00PGpU:NR6s00?vT2000|0|0"},
    {"NotInBang",     "!" + Sentence("GPHDT,274.07,T").substr(1),                     0, "!GPHDT|274.07|T"},
    {"Proprietary",   "$PABCV,RX-12 4.5,2024-05-18*65",                               0, "$PABCV|RX-12 4.5|2024-05-18"},
    {"NotGns",        Sentence("PMGNST,02.40,3,T,816,11.1,-00496,00"),                0, "$PMGNST|02.40|3|T|816|11.1|-00496|00"},
    {"NoFields",      Sentence("CCA"),                                                0, "$CCA"},
    {"ShortAddress",  Sentence("P,"),                                                 0, "$P|"},
    {"SumInLowerCase", "$GPHDT,271.07,T*06",                                          0, "GP 271.07"},
    {"TooLarge",      Sentence("GNGBS,,,,,65536,,,"),                                 11, "$"},
    {"LongLetter",    Sentence("HEROT,1.0,AA"),                                       11, "$"},
    {"NoNumber",      Sentence("GPHDT,27x,T"),                                        11, "$"},
    {"LongSignal",    Sentence("GNGBS,,,,,,,,,1,11"),                                 11, "$"},
    {"NoSum",         "$GPHDT,274.07,T",                                              4, "$"},
    {"WrongSum",      "$GPHDT,274.07,T*04",                                           4, "$"},
    {"SumOfOneDigit", "$GPHDT,274.07,T*3",                                            4, "$"},
    {"TextAfterSum",  "$GPHDT,274.07,T*03 ",                                          4, "$"},
    {"NoStart",       "GPHDT,274.07,T*03",                                            2, "$"},
    {"SmallLetters",  Sentence("gphdt,274.07,T"),                                     2, "$"},
    {"NoAddress",     Sentence(",1"),                                                 2, "$"},
    {"Empty",         "",                                                             2, "$"},
    {"TooLong",       Sentence("GNTXT,01,01,02," + kLong + kLong),                    20, "$"},
};
// clang-format on

TEST_ROWS(SentenceCodec, DecodesToTheRecord, kCases, row) {
  const S_Decoded decoded = Decode(row.sentence);
  EXPECT_EQ(decoded.result, row.result);
  if (row.line != nullptr) {
    EXPECT_EQ(decoded.line, row.line);
  }
}

// Each letter of a unit: right, left out, and another one.
struct S_UnitsCase {
  const char* name;
  std::vector<const char*> numbers;  // and what else comes before a unit
  const char* units;
  const char* rest = "";
};
const S_UnitsCase kUnits[] = {
    {"Hdt", {"GPHDT,274.07"}, "T"},
    {"Vhw", {"SDVHW,182.4", "181.7", "0.5", "0.9"}, "TMNK"},
    {"Dbt", {"SDDBT,1.8", "0.5", "0.3"}, "fMF"},
    {"Mtw", {"SDMTW,12.6"}, "C"},
    {"Vlw", {"IIVLW,2.8", "0.5", "7803.2", "1.25"}, "NNNN"},
    {"Xte", {"GPXTE,A,A,0.67,L"}, "N"},
    {"Bwc", {"GPBWC,195811,5307.5,N,00521.0,E,213.9", "213.2", "4.25"}, "TMN", ",HOME,A"},
    {"Apb", {"GPAPB,A,A,0.10,R"}, "N", ",V,V,011,M,DEST,012,T,013,M,A"},
};
TEST_ROWS(SentenceUnits, AreTheOnesOfTheMembers, kUnits, row) {
  for (std::size_t changed = 0; changed < row.numbers.size(); ++changed) {
    for (const auto& [unit, result] : {std::pair(row.units[changed], 0U), {'\0', 0U}, {'?', 11U}, {'n', 11U}}) {
      std::string body;
      for (std::size_t i = 0; i < row.numbers.size(); ++i) {
        body.append(i > 0 ? "," : "").append(row.numbers[i]).append(",");
        if (i != changed || unit != '\0') body += i == changed ? unit : row.units[i];
      }
      body += row.rest;
      EXPECT_EQ(Decode(Sentence(body)).result, result) << body;
    }
  }
}

struct S_DigitsCase {
  const char* name;
  const char* sent;        // time of a GST
  const char* hundredths;  // as decoded with hundredths, in s
  const char* whole;       // with all digits
  const char* written;
};
// clang-format off
const S_DigitsCase kDigits[] = {
    {"Thousandths",       "074150.799",          "27710.79", "27710.799",       "074150.799"},
    {"EighthsOfASecond",  "074150.125",          "27710.12", "27710.125",       "074150.125"},
    {"TrailingZeros",     "074150.7000",         "27710.7",  "27710.7",         "074150.70"},
    {"WholeSeconds",      "123519",              "45319",    "45319",           "123519.00"},
    {"PointAlone",        "123519.",             "45319",    "45319",           "123519.00"},
    {"Nanoseconds",       "235959.123456789",    "86399.12", "86399.123456789", "235959.123456789"},
    {"LeapSecond",        "235960.5",           "86400.5",  "86400.5",         "235960.50"},
    {"BeyondNanoseconds", "000000.0000000019",   "0",        "1e-09",           "000000.000000001"},
    {"OtherCharacters",   "123519.25x",          "45319.25", "45319.25",        "123519.25"},
    {"BlankAfter",        "123519.25 ",          "45319.25", "45319.25",        "123519.25"},
    {"SignedSecond",      "1235+9.256",          "45309.25", "45309.25",        "123509.25"},
    {"NoTime",            "",                    "-",        "-",               ""},
};
// clang-format on

TEST_ROWS(TimeDigitsOf, AreKeptWhenAskedFor, kDigits, row) {
  const std::string sentence = Sentence(std::string("GPGST,") + row.sent + ",,,,,,,");
  NmeaRecord record;
  ASSERT_EQ(DecodeSentence(sentence, record), 0U);
  EXPECT_EQ(RecordLine(std::get<GstRecord>(record).timeOfDay), row.hundredths);
  ASSERT_EQ(DecodeSentence(sentence, record, TimeDigits::All), 0U);
  EXPECT_EQ(RecordLine(std::get<GstRecord>(record).timeOfDay), row.whole);
  char out[kMaxSentenceLength];
  std::size_t length = 0;
  ASSERT_EQ(EncodeSentence(record, out, sizeof out, length, TimeDigits::All), 0U);
  EXPECT_EQ(std::string(out, length), Sentence(std::string("GPGST,") + row.written + ",,,,,,,"));
}

// A ZDA of two digits and an RMC of the same day have the same date.
TEST(SentenceCodec, CompletesAYearOfTwoDigits) {
  for (const auto& [sent, year] : {std::pair{"14", 2014}, {"99", 2099}, {"2014", 2014}, {"", NA_U16}}) {
    NmeaRecord record;
    const std::string sentence = Sentence(std::string("GPZDA,160012.71,11,03,") + sent + ",00,00");
    ASSERT_EQ(DecodeSentence(sentence, record, TimeDigits::All), 0U);
    EXPECT_EQ(std::get<S_ZDA_Data>(record).year, year);
    ASSERT_EQ(DecodeSentence(sentence, record), 0U);
    EXPECT_EQ(std::get<S_ZDA_Data>(record).year, *sent == 0 ? NA_U16 : std::atoi(sent));
  }
}

// What decodes is encoded to a sentence that decodes to the same; a sentence of texts to itself. Some numbers of the
// eight lose digits, as `C_NMEA_EncodeDecode` says.
TEST_ROWS(SentenceCodecBack, EncodesTheRecord, kCases, row) {
  NmeaRecord record;
  if (DecodeSentence(row.sentence, record) != 0) return;
  unsigned int result = 99;
  const std::string sentence = Encode(record, result);
  ASSERT_EQ(result, 0U);
  if (!std::holds_alternative<S_GGA_Data>(record)) {
    EXPECT_EQ(Decode(sentence).line, Decode(row.sentence).line);
  }
  if (std::holds_alternative<OtherSentence>(record)) {
    EXPECT_EQ(sentence, row.sentence.substr(0, row.sentence.find('\r')) + "\r\n");
  }
}

// A sentence cut off anywhere, its checksum made right, has a stated result and reads nothing beyond its end.
TEST_ROWS(SentenceCodecCut, HasAStatedResult, kCases, row) {
  const std::string_view text = std::string_view(row.sentence).substr(0, row.sentence.rfind('*'));
  for (std::size_t length = 1; length < std::min<std::size_t>(text.size(), 100); ++length)
    ASSERT_THAT(Decode(Sentence(text.substr(1, length - 1))).result, testing::AnyOf(0, 2, 8, 11)) << length;
}

// --- Random records ---

struct S_Fill {
  std::mt19937& random;

  template <class... Members>
  int operator()(Members&... members) const {
    (Fill(members), ...);
    return 0;
  }
  bool IsMissing() const { return random() % 4 == 0; }
  // Times and angles keep two and eight decimals: such numbers lose nothing by that.
  void Fill(double& value) const {
    if (!IsMissing()) value = static_cast<int>(random() % 721) / 8.0 - 45 * (random() % 2 == 0 ? 0 : 1);
  }
  template <std::size_t N>
  void Fill(double (&values)[N]) const {
    for (double& value : values)
      if (!IsMissing()) value = static_cast<double>(random()) / 1e3 - 1e6;
  }
  void Fill(unsigned char& value) const {
    if (!IsMissing()) value = static_cast<unsigned char>(random() % 16);
  }
  void Fill(unsigned short& value) const {
    if (!IsMissing()) value = static_cast<unsigned short>(random() % NA_U16);
  }
  void Fill(char& letter) const {
    if (!IsMissing()) letter = "AVNSEWLRTMK"[random() % 11];
  }
  void Fill(std::string_view& text) const {
    if (!IsMissing()) text = "WAYPOINT 07-\xE4";
    text = text.substr(0, random() % 14);
  }
  void Fill(eNmeaModeIndicator& mode) const {
    if (!IsMissing()) mode = eNmeaModeIndicator{static_cast<unsigned int>(random() % 9)};
  }
};

template <class Record>
void RequireRoundTrips(std::mt19937& random) {
  Record record;
  record.talker[0] = record.talker[1] = 'N';
  MoreRecords::Members(record, S_Fill{random});
  if constexpr (requires { record.timeOfDay; })
    if (!IsNotAvailable(record.timeOfDay)) record.timeOfDay = static_cast<double>(random() % 345600) / 4;
  unsigned int result = 99;
  const std::string sentence = Encode(record, result);
  ASSERT_EQ(result, 0U) << Line(record);
  const S_Decoded decoded = Decode(sentence);
  ASSERT_EQ(decoded.result, 0U) << sentence;
  ASSERT_EQ(decoded.line, Line(record)) << sentence;
}

template <std::size_t... I>
void RequireAllRoundTrips(std::mt19937& random, std::index_sequence<I...>) {
  constexpr std::size_t kFirst = 9;  // after the generic one and the eight
  (RequireRoundTrips<std::variant_alternative_t<kFirst + I, NmeaRecord>>(random), ...);
}

TEST(AnySentence, RandomRecordsRoundTrip) {
  std::mt19937 random(11);
  for (int round = 0; round < 500; ++round)
    RequireAllRoundTrips(random, std::make_index_sequence<std::variant_size_v<NmeaRecord> - 9>());
}

// Any address and any fields come back as they were.
TEST(AnySentence, TextsRoundTrip) {
  std::mt19937 random(12);
  const auto anyOf = [&random](std::string_view characters, std::size_t most) {
    std::string text;
    for (std::size_t length = random() % (most + 1); length > 0; --length)
      text += characters[random() % characters.size()];
    return text;
  };
  for (int round = 0; round < 5000; ++round) {
    const std::string body =
        anyOf("ABCPXYZ019", 5) + "Q" + (round % 8 == 0 ? "" : "," + anyOf("a,,1.\x7F\xE4!$\\^", 60));
    std::string sentence = Sentence(body);
    if (round % 3 == 0) sentence[0] = '!';
    NmeaRecord record;
    ASSERT_EQ(DecodeSentence(sentence, record), 0U) << sentence;
    unsigned int result = 99;
    ASSERT_EQ(Encode(record, result), sentence);
  }
}

// --- What cannot be encoded ---

template <class Record, class Change>
NmeaRecord Changed(Record record, const Change& change) {
  if constexpr (requires { record.talker; }) record.talker[0] = record.talker[1] = 'N';
  change(record);
  return record;
}

struct S_RefusedCase {
  const char* name;
  NmeaRecord record;
  unsigned int result;
};
// clang-format off
const S_RefusedCase kRefused[] = {
    {"CommaInText",    Changed(WplRecord(), [](auto& r) { r.waypoint = "a,b"; }),      8},
    {"StarInTxt",      Changed(TxtRecord(), [](auto& r) { r.text = "a*b"; }),          8},
    {"LineEndInTxt",   Changed(TxtRecord(), [](auto& r) { r.text = "a\r\n$GPHDT"; }),  8},
    {"CommaAsLetter",  Changed(RotRecord(), [](auto& r) { r.status = ','; }),          8},
    {"LetterInTalker", Changed(RotRecord(), [](auto& r) { r.talker[1] = 'p'; }),       8},
    {"NoTalker",       GstRecord(),                                                    8},
    {"NoTalkerOfGga",  S_GGA_Data(),                                                   8},
    {"TalkerP",        Changed(RotRecord(), [](auto& r) { r.talker[0] = 'P'; }),       8},
    {"Infinity",       Changed(HdtRecord(), [](auto& r) { r.headingTrue = HUGE_VAL; }), 8},
    {"SignalOf16",     Changed(GbsRecord(), [](auto& r) { r.signalId = 16; }),         8},
    {"Latitude",       Changed(WplRecord(), [](auto& r) { r.latitude = 90.5; }),       8},
    {"Time",           Changed(GstRecord(), [](auto& r) { r.timeOfDay = 86400; }),     8},
    {"LongTxt",        Changed(TxtRecord(), [](auto& r) { r.text = kLong; }),          0},
    {"LongerTxt",      Changed(TxtRecord(), [](auto& r) { static const std::string text = kLong + kLong; r.text = text; }), 9},
    {"LongNumbers",    Changed(GrsRecord(), [](auto& r) { for (double& value : r.residual) value = 1e300; }), 9},
    {"NoAddress",      OtherSentence(),                                                2},
    {"SmallAddress",   OtherSentence{'$', "GPabc", {}},                                2},
    {"OtherStart",     OtherSentence{'%', "GPABC", {}},                                2},
    {"StarInFields",   OtherSentence{'$', "GPABC", FieldList(",*")},                   8},
    {"FieldsUnled",    OtherSentence{'$', "GPABC", FieldList("1,2")},                  8},
};
// clang-format on

TEST_ROWS(SentenceEncoder, RefusesWhatWouldNotReadBack, kRefused, row) {
  unsigned int result = 99;
  Encode(row.record, result);
  EXPECT_EQ(result, row.result);
}

TEST(AnySentence, WritesNoMoreThanFits) {
  const NmeaRecord record = Changed(HdtRecord(), [](auto& r) { r.headingTrue = 274.07; });
  char out[20] = {};
  std::size_t length = 0;
  EXPECT_EQ(EncodeSentence(record, out, 19, length), 9U);
  EXPECT_EQ(EncodeSentence(record, out, 20, length), 0U);
  EXPECT_EQ(std::string(out, length), Sentence("NNHDT,274.07,T"));
  EXPECT_EQ(EncodeSentence(record, nullptr, 20, length), 1U);
  NmeaRecord decoded;
  EXPECT_EQ(DecodeSentence({}, decoded), 1U);
}

TEST(OtherSentence, NamesItsSender) {
  const OtherSentence plain = {'$', "IIXDR", {}};
  EXPECT_FALSE(plain.IsProprietary());
  EXPECT_EQ(plain.Talker(), "II");
  EXPECT_EQ(plain.Formatter(), "XDR");
  const OtherSentence proprietary = {'$', "PGRME", {}};
  EXPECT_TRUE(proprietary.IsProprietary());
  EXPECT_EQ(proprietary.Maker(), "GRM");
  EXPECT_EQ(SentenceName("$PGRME,1"), "PGRME");
  EXPECT_EQ(SentenceName("!AIVDM,1"), "VDM");
  EXPECT_EQ(SentenceName("$GPHDT*00"), "HDT");
  EXPECT_EQ(SentenceName("noise"), "");
}

}  // namespace
