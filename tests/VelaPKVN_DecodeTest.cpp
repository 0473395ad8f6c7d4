#include "textproto/VelaPKVN_Decode.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/RecordLine.h"
#include "tests/Streams.h"

namespace {

using namespace VelaPKVN_Messages;
using namespace std::string_view_literals;

// "$PKVN," and the body, closed by its checksum.
std::string Frame(std::string_view body) {
  const std::string sentence = Sentence("PKVN," + std::string(body));
  return sentence.substr(0, sentence.size() - 2);
}

// ---- the frame check

struct S_FrameCase {
  const char* name;
  std::string frame;
  unsigned int result;
  unsigned int type;           // 77: left alone
  unsigned int errorPosition;  // 77: left alone
};

const std::string kHpr = Frame("HPR,120000.00,1.5,2.5,3.5,N");
const std::string kLongest = Frame("RTKSTAT," + std::string(2047 - 17, 'x'));
// Eighteen bytes, the least that there is.
const std::string kLeast = Frame("GBS,12345");

const S_FrameCase kFrames[] = {
    {"Good", kHpr, 0, ePkvnHPR, 9},
    {"Raw", Frame("RAW,1234567890"), 0, ePkvnRAW, 9},
    {"LongestName", Frame("ARN_ROUTER,1,2"), 0, ePkvnARN_ROUTER, 16},
    {"WithCr", kHpr + "\r", 0, ePkvnHPR, 9},
    {"WithLf", kHpr + "\n", 0, ePkvnHPR, 9},
    {"WithCrLf", kHpr + "\r\n", 0, ePkvnHPR, 9},
    {"WithLfCr", kHpr + "\n\r", 0, ePkvnHPR, 9},
    {"WithThreeLineEnds", kHpr + "\r\n\n", 4, ePkvnHPR, 9},
    {"LineEndInsideDoesNotCount", kHpr + "\rx", 4, ePkvnHPR, 9},
    {"Least", kLeast, 0, ePkvnGBS, 9},
    {"LeastWithLineEnds", kLeast + "\r\n", 0, ePkvnGBS, 9},
    {"NineteenBytesKeepTheirLineEnd", kLeast + "\n", 4, ePkvnGBS, 9},
    {"SeventeenBytes", kLeast.substr(0, 17), 19, 77, 77},
    {"NoBytes", "", 19, 77, 77},
    {"Longest", kLongest, 0, ePkvnRTKSTAT, 13},
    {"LongestWithLineEnds", kLongest + "\r\n", 0, ePkvnRTKSTAT, 13},
    {"TooLong", kLongest + "x", 20, 77, 77},
    {"TooLongIsSeenBeforeThePrefix", std::string(2048, 'x'), 20, 77, 77},
    {"Prefix1", "#PKVN,HPR,12345678*00", 3, 77, 1},
    {"Prefix2", "$pKVN,HPR,12345678*00", 3, 77, 2},
    {"Prefix5", "$PKVM,HPR,12345678*00", 3, 77, 5},
    {"Prefix6", "$PKVN;HPR,12345678*00", 3, 77, 6},
    {"UnknownName", Frame("HPS,12345678"), 5, ePkvnUnknown, 9},
    {"LowerCaseName", Frame("hpr,12345678"), 5, ePkvnUnknown, 9},
    {"BeginningOfAName", Frame("ATT,12345678"), 5, ePkvnUnknown, 9},
    {"EmptyName", Frame(",12345678910"), 5, ePkvnUnknown, 6},
    {"NameEndsAtNul", Frame("HPR\0,1234567"sv), 0, ePkvnHPR, 9},
    {"NameIsCutAt31", Frame(std::string(40, 'A')), 5, ePkvnUnknown, 37},
    {"NameEndsWithTheFrame", "$PKVN,ABCDEFGHIJKL", 5, ePkvnUnknown, 18},
    {"LowerCaseDigits", "$PKVN,GBS,1234J*1b", 4, ePkvnGBS, 9},
    {"WrongChecksum", "$PKVN,GBS,1234J*1A", 4, ePkvnGBS, 9},
    {"TheSameInUpperCase", "$PKVN,GBS,1234J*1B", 0, ePkvnGBS, 9},
    {"AnyByteForTheAsterisk", "$PKVN,GBS,1234J,1B", 0, ePkvnGBS, 9},
};

TEST_ROWS(PkvnFrame, IsCheckedUpToItsLastByte, kFrames, row) {
  GuardedPage page(8192);  // room for both copies
  const auto length = static_cast<unsigned short>(row.frame.size());
  for (const unsigned char* frame : {page.AtStart(row.frame), page.AtEnd(row.frame)}) {
    auto type = static_cast<eMessageTypes>(77);
    unsigned short errorPosition = 77;
    EXPECT_EQ(C_VelaPKVN_Decode::ValidateFrame(frame, length, type, errorPosition), row.result);
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(errorPosition, row.errorPosition);
  }
}

// ---- the sentences

std::string Rest(unsigned short count, const char (&rest)[kMaxRestFields][kRestFieldSize]) {
  std::string line = ValueText(count);
  for (const auto& text : rest)
    if (text[0] != '\0') line += ' ' + std::string(text);
  return line;
}

std::string LineOf(const S_PKvnAttStat& r) {
  return RecordLine(r.field2, r.text3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.field10) + " | " +
         Rest(r.restCount, r.rest);
}

std::string LineOf(const S_PKvnGbs& r) {
  return RecordLine(r.timeOfDay, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.field10,
                    r.field11, r.field12);
}

std::string LineOf(const S_PKvnHpr& r) { return RecordLine(r.timeOfDay, r.heading, r.pitch, r.roll, r.field6); }
std::string LineOf(const S_PKvnBlv& r) {
  return RecordLine(r.timeOfDay, r.year, r.month, r.day, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9,
                    r.field10);
}

std::string LineOf(const S_PKvnFvi& r) {
  std::string run;
  for (const double value : r.field3to21) run += ' ' + ValueText(value);
  return RecordLine(r.timeOfDay) + run + ' ' +
         RecordLine(r.text22, r.field23, r.field24, r.field25, r.field26, r.field27, r.field28, r.field29, r.field30);
}

std::string LineOf(const S_PKvnRtkStat& r) { return Rest(r.restCount, r.rest); }
std::string LineOf(const S_PKvnVct& r) {
  return RecordLine(r.field2, r.timeOfDay, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.field10,
                    r.field11);
}

std::string LineOf(const S_PKvnINTLT& r) { return RecordLine(r.field2); }
std::string LineOf(const S_PKvnTEMPERATURE& r) { return RecordLine(r.field2); }
std::string LineOf(const S_PKvnARN& r) {
  return RecordLine(r.field2, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9, r.field10,
                    r.field11, r.field12, r.field13);
}

// The same for union and kept records, which name their members alike.
template <class Records>
std::string LineOf(eMessageTypes type, const Records& data) {
  if (type == ePkvnATTSTAT) return LineOf(data.attStat);
  if (type == ePkvnGBS) return LineOf(data.gbs);
  if (type == ePkvnHPR) return LineOf(data.hpr);
  if (type == ePkvnBLV) return LineOf(data.blv);
  if (type == ePkvnFVI) return LineOf(data.fvi);
  if (type == ePkvnRTKSTAT) return LineOf(data.rtkStat);
  if (type == ePkvnVCT) return LineOf(data.vct);
  if (type == ePkvnINTLT) return LineOf(data.intlt);
  if (type == ePkvnTEMPERATURE) return LineOf(data.temperature);
  if (type == ePkvnARN_ROUTER) return LineOf(data.arn);
  return "none";
}

struct S_Decoded {
  unsigned int result;
  eMessageTypes type;
  std::string line;
};

// Decodes at the end of a readable page into a union that holds something else.
S_Decoded Decode(C_VelaPKVN_Decode& decoder, std::string_view frame) {
  static GuardedPage page(4096);
  U_VelaPKVN_EcdDcdData data;
  std::memset(&data, 0xA5, sizeof data);
  eMessageTypes type = ePkvnUnknown;
  const unsigned int result = decoder.Decode(page.AtEnd(frame), static_cast<unsigned short>(frame.size()), type, data);
  EXPECT_EQ(decoder.GetLastResult(), result);
  return {result, type, LineOf(type, data)};
}

struct S_SentenceCase {
  const char* name;
  std::string body;
  unsigned int result;
  std::string line;
};

// Nineteen numbers 1 to 19.
const std::string kRun = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19";
const std::string kAttHead = "ATTSTAT,7,rover,1.5,-2.5,N,3.5,4.5,P,9,";
const std::string k63(63, 'x');
const std::string k511(511, '0');  // as long as a field may be

// What the letters in a mask of a sentence's fields mean.
//   t time of day, D date, d double, b w u unsigned of 8, 16, 32 bits, N "N" or "G", P "P" or "R", s text
struct S_MessageCase {
  const char* name;
  eMessageTypes type;
  std::string fields;   // from position 2 on
  std::string mask;     // their kinds
  std::size_t least;    // number of fields that the sentence must have, name and checksum included
  std::string line;     // the record
  std::string nothing;  // the record of a sentence whose fields are all empty
};

const S_MessageCase kMessages[] = {
    {"GBS", ePkvnGBS, "010203.50,1.5,2.5,3.5,4,5.5,6.5,7.5,8,9,10", "tdddbdddbbb", 14,
     "3723.5 1.5 2.5 3.5 4 5.5 6.5 7.5 8 9 10", "- - - - - - - - - - -"},
    {"HPR", ePkvnHPR, "235959.99,271.5,-1.25,+0.75,G", "tdddN", 8, "86399.99 271.5 -1.25 0.75 G", "- - - - ."},
    {"BLV", ePkvnBLV, "000000,290224,1,-2,3e2,65535,254,0,.5", "tDdddwbbd", 12, "0 2024 2 29 1 -2 300 - 254 0 0.5",
     "- - - - - - - - - - -"},
    {"FVI", ePkvnFVI, "120000," + kRun + ",on air,20,21,1,2,3,4,22,23", "tdddddddddddddddddddsddbbbbdd", 32,
     "43200 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 \"on air\" 20 21 1 2 3 4 22 23",
     "- - - - - - - - - - - - - - - - - - - - \"\" - - - - - - - -"},
    {"VCT", ePkvnVCT, "65534,120000,1,2,3,4,5,6,7,8", "wtdddddddd", 13, "65534 43200 1 2 3 4 5 6 7 8",
     "- - - - - - - - - -"},
    {"INTLT", ePkvnINTLT, "12.5,x,y", "dss", 4, "12.5", "-"},
    {"TEMPERATURE", ePkvnTEMPERATURE, "-40.25,x,y", "dss", 4, "-40.25", "-"},
    {"ARN_ROUTER", ePkvnARN_ROUTER, "255,4294967295,0,3,4,5,6,7,8,9,10,11", "buuuuuuuuuuu", 4,
     "- - 0 3 4 5 6 7 8 9 10 11", "- - - - - - - - - - - -"},
    {"ATTSTAT", ePkvnATTSTAT, "7,rover,1.5,-2.5,N,3.5,4.5,R,9,a,b,c,d,e,f,g", "wsddNddPbsssssss", 19,
     "7 \"rover\" 1.5 -2.5 N 3.5 4.5 R 9 | 8 a b c d e f g 5B", R"(- "" - - . - - . - | 8 7C)"},
    {"RTKSTAT", ePkvnRTKSTAT, "a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p,q", "sssssssssssssssss", 20,
     "18 a b c d e f g h i j k l m n o p q 3D", "18 5C"},
};

class PkvnMessage : public testing::TestWithParam<S_MessageCase> {
 protected:
  std::vector<std::string> Fields() const {
    std::vector<std::string> fields(1);
    for (const char c : GetParam().fields)
      if (c == ',')
        fields.emplace_back();
      else
        fields.back() += c;
    EXPECT_EQ(fields.size(), GetParam().mask.size());
    return fields;
  }

  std::string With(const std::vector<std::string>& fields) const {
    std::string body = GetParam().name;
    for (const std::string& field : fields) body += ',' + field;
    return Frame(body);
  }

  C_VelaPKVN_Decode m_decoder;
};

TEST_P(PkvnMessage, DecodesCountsAndKeepsTheRecord) {
  for (const char* lineEnd : {"", "\r\n"}) {
    const bool isRest = GetParam().line.find('|') != std::string::npos || GetParam().type == ePkvnRTKSTAT;
    if (isRest && *lineEnd != '\0') break;  // it would be part of the last text
    const S_Decoded decoded = Decode(m_decoder, With(Fields()) + lineEnd);
    EXPECT_EQ(decoded.result, 0U);
    EXPECT_EQ(decoded.type, GetParam().type);
    EXPECT_EQ(decoded.line, GetParam().line);
    EXPECT_EQ(LineOf(GetParam().type, m_decoder.GetLastRecords()), GetParam().line);
  }
  for (unsigned int type = 0; type < 13; ++type)
    EXPECT_EQ(m_decoder.GetReceivedMsgCount(static_cast<eMessageTypes>(type)) > 0, type == GetParam().type) << type;
}

TEST_P(PkvnMessage, EmptyFieldsAreNotAvailable) {
  const std::string keptFirst = LineOf(GetParam().type, m_decoder.GetLastRecords());
  EXPECT_EQ(keptFirst.substr(0, keptFirst.find_first_of('0')),
            GetParam().nothing.substr(0, keptFirst.find_first_of('0')));
  std::vector<std::string> fields(Fields().size());
  fields.resize(std::max<std::size_t>(fields.size(), 8));  // eighteen bytes are the least
  EXPECT_EQ(Decode(m_decoder, With(fields)).line, GetParam().nothing);
}

// Accepted and refused texts by kind of field; each is put at each position of its kind.
struct S_Samples {
  char kind;
  std::vector<std::string> good, bad;
};

const S_Samples kSamples[] = {
    {'d', {"-1.5E3", k511}, {"1e400", "12A", "1e", "nan", "0x1"}},
    {'b', {"255", k511}, {"256", "-1", "1.0"}},
    {'w', {"65535"}, {"65536", "-0"}},
    {'u', {"4294967295"}, {"4294967296", "1F"}},
    {'t', {"123456", "120000.5555"}, {"12345", "12345x"}},
    {'D', {"010324", "010324xyz"}, {"01032", "0103x4"}},
    {'N', {"N", "G"}, {"P", "n", "NN"}},
    {'P', {"P", "R"}, {"N"}},
    {'s', {"\x01\x80\xFF", k511}, {}},
};

TEST_P(PkvnMessage, TakesAndRefusesTextsByTheKindOfField) {
  unsigned int taken = 0;
  for (std::size_t i = 0; i < GetParam().mask.size(); ++i) {
    const auto* const samples = std::find_if(std::begin(kSamples), std::end(kSamples),
                                             [&](const S_Samples& row) { return row.kind == GetParam().mask[i]; });
    std::vector<std::string> fields = Fields();
    for (const std::string& text : samples->good) {
      fields[i] = text;
      EXPECT_EQ(Decode(m_decoder, With(fields)).result, 0U) << i + 2 << ": " << text;
      ++taken;
    }
    for (const std::string& text : samples->bad) {
      fields[i] = text;
      EXPECT_EQ(Decode(m_decoder, With(fields)).result, 11U) << i + 2 << ": " << text;
    }
  }
  EXPECT_EQ(m_decoder.GetReceivedMsgCount(GetParam().type), taken);
}

TEST_P(PkvnMessage, EndsBeforeAFieldThatIsTooLongAndAtANul) {
  for (std::size_t i = 0; i < GetParam().mask.size(); ++i) {
    std::vector<std::string> fields = Fields();
    fields[i] = std::string(512, '0');
    EXPECT_EQ(Decode(m_decoder, With(fields)).result, 2 + i >= GetParam().least ? 0U : 11U) << i + 2;
    fields[i] = std::string("1\0001", 3);
    EXPECT_EQ(Decode(m_decoder, With(fields)).result, 3 + i >= GetParam().least ? 0U : 11U) << i + 2;
  }
}

// The last record of a type is that of its last sentence, however that decoded; of one type it is the last good one.
TEST_P(PkvnMessage, KeepsTheLastRecordUntilAReset) {
  const std::string good = With(Fields());
  std::vector<std::string> fields = Fields();
  const std::size_t number = GetParam().mask.find_first_not_of('s');
  if (number == std::string::npos) fields.pop_back();
  if (number != std::string::npos) fields[number] = "x";
  EXPECT_EQ(Decode(m_decoder, good).result, 0U);
  EXPECT_EQ(Decode(m_decoder, With(fields)).result, 11U);
  EXPECT_EQ(LineOf(GetParam().type, m_decoder.GetLastRecords()) == GetParam().line,
            GetParam().type == ePkvnTEMPERATURE);
  m_decoder.Reset();
  EXPECT_EQ(m_decoder.GetReceivedMsgCount(GetParam().type), 0U);
  EXPECT_NE(LineOf(GetParam().type, m_decoder.GetLastRecords()), GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(Sentences, PkvnMessage, testing::ValuesIn(kMessages), CaseName<S_MessageCase>);

const S_SentenceCase kOddSentences[] = {
    {"Raw", "RAW,1234567890", 6, "none"},
    {"Unknown", "XYZ,1234567890", 5, "none"},
    {"MoreFieldsThanNeeded", "HPR,120000,1,2,3,N,x,y,z", 0, "43200 1 2 3 N"},
    {"FewerFieldsThanNeeded", "HPR,120000,11,22,3", 11, "- - - - ."},
    {"ValuesBeforeTheBadOneStay", "HPR,120000,1,2x,3,N", 11, "43200 1 - - ."},
    {"BadTimeIsZero", "HPR,12345,1,2,3,N", 11, "0 - - - ."},
    {"TimesAreNotRangeChecked", "HPR,996199.999,1,2,3,N", 0, "360159.99 1 2 3 N"},
    {"BlanksAndSigns", "HPR,120000, 1,+2,3 3,N", 0, "43200 1 2 3 N"},
    {"DateBeforeABadPart", "BLV,000000,29x224,1,2,3,4,5,6,7", 11, "0 - - 29 - - - - - - -"},
    {"ArnReadsItsDecimalChecksum", "ARN_ROUTER,1,2", 0, "1 2 25 - - - - - - - - -"},
    {"ArnRefusesItsHexadecimalChecksum", "ARN_ROUTER,1,2A", 11, "1 - - - - - - - - - - -"},
    {"ArnOfFourFields", "ARN_ROUTER,1", 11, "1 - - - - - - - - - - -"},
    {"TextKeeps63", kAttHead.substr(0, 10) + k63 + "yz,1,2,,3,4,,9,1,2,3,4,5,6,7", 0,
     "7 \"" + k63 + "\" 1 2 . 3 4 . 9 | 8 1 2 3 4 5 6 7 3D"},
    {"RestKeeps63AndEmptyFields", kAttHead + k63 + "yz,,,,,,L1(1", 0,
     "7 \"rover\" 1.5 -2.5 N 3.5 4.5 P 9 | 8 " + k63 + " L1(1 26"},
};

TEST_ROWS(PkvnOddSentence, GivesItsResultAndWhatWasRead, kOddSentences, row) {
  C_VelaPKVN_Decode decoder;
  const S_Decoded decoded = Decode(decoder, Frame(row.body));
  EXPECT_EQ(decoded.result, row.result);
  EXPECT_EQ(decoded.line, row.line);
}

// Sixty-four fields are kept, the checksum being the last of a list of 63 signals. ATTSTAT must fit, RTKSTAT is cut.
TEST(PkvnRest, HoldsSixtyFourFields) {
  for (const unsigned int signals : {62U, 63U, 64U}) {
    std::string list;
    for (unsigned int i = 1; i < signals; ++i) list += "L1,";
    list += "E6";
    C_VelaPKVN_Decode decoder;
    EXPECT_EQ(Decode(decoder, Frame(kAttHead + list)).result, signals > 63 ? 11U : 0U) << signals;
    EXPECT_EQ(Decode(decoder, Frame("RTKSTAT," + list)).result, 0U);
    const S_PKvnRtkStat& kept = decoder.GetLastRecords().rtkStat;
    EXPECT_EQ(kept.restCount, std::min(signals + 1, 64U));
    EXPECT_STREQ(kept.rest[signals - 1], "E6");
  }
}

// ---- operations for one message

TEST(PkvnDirect, TestsForNullAndLengthAndThenForTheName) {
  C_VelaPKVN_Decode decoder;
  std::string hpr = kHpr;
  auto* const frame = reinterpret_cast<unsigned char*>(hpr.data());
  const auto length = static_cast<unsigned short>(hpr.size());
  S_PKvnHpr record{};
  EXPECT_EQ(decoder.Decode_HPR(nullptr, 5, record), 1U);
  EXPECT_EQ(decoder.Decode_HPR(frame, 17, record), 3U);
  EXPECT_EQ(record.heading, 0) << "untouched";
  hpr.back() = 'x';
  EXPECT_EQ(decoder.Decode_HPR(frame, length, record), 0U) << "the checksum is not tested";
  EXPECT_EQ(LineOf(record), "43200 1.5 2.5 3.5 N");
  EXPECT_EQ(decoder.GetReceivedMsgCount(ePkvnHPR), 0U);
  S_PKvnINTLT other{};
  EXPECT_EQ(decoder.Decode_INTLT(frame, length, other), 2U);
  EXPECT_EQ(decoder.GetLastResult(), 2U);
  hpr[0] = '#';
  EXPECT_EQ(decoder.Decode_HPR(frame, length, record), 2U);
  EXPECT_EQ(LineOf(record), "- - - - .");
}

TEST(PkvnDirect, SentencesOf2048CharactersHaveNoFields) {
  C_VelaPKVN_Decode decoder;
  for (const std::size_t length : {2047U, 2048U, 65535U}) {
    std::string text = Frame("INTLT,1");
    while (text.size() + 100 < length) text += ',' + std::string(90, 'x');
    text.resize(length, 'y');
    S_PKvnINTLT record{};
    EXPECT_EQ(decoder.Decode_INTLT(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned short>(length),
                                   record),
              length < 2048 ? 0U : 11U);
    text[200] = '\0';
    EXPECT_EQ(decoder.Decode_INTLT(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned short>(length),
                                   record),
              0U)
        << "a NUL ends the text";
  }
}

// ---- names and digits

TEST(PkvnChannels, MapToTheirNumbers) {
  const struct {
    const char* name;
    unsigned int channel;
  } kRows[] = {{"L1", 0},   {"L2", 1},  {"L5", 2},  {"G1", 3},     {"G2", 4},     {"B1", 5},  {"B2", 6},   {"B3", 7},
               {"E5a", 8},  {"E5A", 8}, {"E5b", 9}, {"E5B", 9},    {"E5a+b", 10}, {"E6", 11}, {"B2B", 12}, {"E1B", 13},
               {"QL1", 14}, {"", 16},   {"l1", 16}, {"E5a+B", 16}, {"L1 ", 16},   {"L", 16}};
  for (const auto& row : kRows) {
    auto channel = static_cast<ePKvnAttStatSysChans>(77);
    EXPECT_EQ(C_VelaPKVN_Decode::MapPKvnAttSysStr2Type(row.name, channel), row.channel != 16) << row.name;
    EXPECT_EQ(channel, row.channel) << row.name;
  }
  auto channel = ePkvnL5;
  EXPECT_FALSE(C_VelaPKVN_Decode::MapPKvnAttSysStr2Type(nullptr, channel));
  EXPECT_EQ(channel, ePkvnChanUnknown);
}

TEST(PkvnHex, ReadsUpperCaseDigits) {
  const struct {
    const char* text;
    unsigned char digits;
    bool isGood;
    unsigned int value;
  } kRows[] = {{"5C", 2, true, 0x5C}, {"5C", 1, true, 5},  {"FFFFFFFF", 8, true, 0xFFFFFFFF},
               {"0", 0, false, 0},    {"5c", 2, false, 5}, {"123456789", 9, false, 0},
               {"1G", 2, false, 1},   {"@1", 2, false, 0}, {"1/", 2, false, 1},
               {"1:", 2, false, 1}};
  for (const auto& row : kRows) {
    unsigned int value = 77;
    EXPECT_EQ(C_VelaPKVN_Decode::ExtractHexValue(reinterpret_cast<const unsigned char*>(row.text), row.digits, value),
              row.isGood)
        << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
  unsigned int value = 77;
  EXPECT_FALSE(C_VelaPKVN_Decode::ExtractHexValue(nullptr, 2, value));
  EXPECT_EQ(value, 0U);
}

}  // namespace
