#include <algorithm>

#include "samples/Frames.h"

namespace {

// The receiver's own sentences in the order of their type numbers, with the lengths within which a reader accepts them,
// from "$" to the first character of the line end, and a body each. {time}, {date}, {heading} and {n} (a number of two
// digits) are filled in.
struct S_OwnSentence {
  std::string_view name;
  std::size_t least;
  std::size_t most;
  std::vector<std::string> bodies;
};

const std::vector<S_OwnSentence>& OwnSentences() {
  static const std::vector<S_OwnSentence> sentences = {
      {"RAW", 18, 2048, {}},
      {"ATTSTAT",
       38,
       179,
       {"2,ROVER,1.253,1.25{n},N,0.4,-0.{n},P,9,L1,(5,9,9),L2,(4,8),G1,(5,5),E1B,(3,3)",
        "1,,,,,,,,0,L1,(0,0),G1,(0,0),B1,(0,0),E5a+b,(0,0)"}},
      {"GBS", 25, 100, {"{time},0.{n},0.{n},1.{n},13,0.001,-0.14{n},2.31,1,1,8", "{time},,,,,,,,,,"}},
      {"HPR", 25, 70, {"{time},{heading},-1.27,0.{n},N", "{time},{heading},0.88,,G", "{time},,,,"}},
      {"BLV", 20, 100, {"{time},{date},1.2{n},-0.118,0.04{n},42,14,4,0.012"}},
      {"FVI",
       40,
       255,
       {"{time},51.4779,0.0012,45.6,10.{n},0.1,-0.2,0.01,0.01,0.02,0.1,0.1,0.2,{n},-1.2,0.3,0.1,0.1,0.2,1,ROVER,0.7,1."
        "2,"
        "24,21,4,1,1.0,2.{n}"}},
      {"RTKSTAT",
       60,
       190,
       {"1,4,1.0,1A2B,0,24,21,0.{n},3F,L1,(9,9),L2,(8,7),G1,(6,6),E1B,(4,4),B1,(5,5)",
        "0,1,,0,0,24,0,{n},00,L1,(0,0),L2,(0,0),G1,(0,0),E5a,(0,0),B3,(0,0)"}},
      {"VCT", 20, 90, {"1,{time},{n},1.21,-0.33,0.1{n},0.2,0.3,0.4,0.5"}},
      {"INTLT", 19, 33, {"12.{n}", "3.1"}},
      {"TEMPERATURE", 19, 35, {"41.{n}", "-5"}},
      {"ARN_ROUTER", 30, 255, {"3,100,2001,17,42,4294967295,0,{n0},8,9,10,11"}},
  };
  return sentences;
}

// Kinds of a reply with the lengths that a reader accepts, to the first character of the line end.
struct S_ReplyKind {
  std::string_view start;
  eProtocol protocol;
  std::uint32_t type;
  const char* name;
  std::size_t least;
  std::size_t most;
};

constexpr S_ReplyKind kReplyKinds[] = {
    {"$RD1,", eDiagnostic, 1, "RD1", 37, 80},
    {"$>JI,", eInfo, 0, "JI", 37, 120},
    {"$>JQUERY,", eQuery, 0, "JQUERY", 21, 120},
    {"$>JGEO,", eGeo, 0, "JGEO", 37, 120},
    {"$>JSITERECORD", eSite, kNoType, "JSITERECORD", 13, 511},
};

// `start` filled up to the longest line that a reader takes for a reply.
std::string Longest(const std::string& start) { return start + std::string(120 - 1 - start.size(), '0'); }

const std::string kReplies[] = {
    "$>JI,20417733,4,2,12/03/2021,01/01/2020,3.14,61",
    "$>JQUERY,TEMPERATURE,41.5",
    "$>JGEO,SAT=123,FREQ=1545.53,LON=31.5,EL=22,AZ=147",
    "$>JQUERY,BAUD,115200,PORTA",
};
const std::string kLongestReplies[] = {
    Longest("$>JI,20417733,4,2,"),
    Longest("$>JQUERY,LIST,"),
    Longest("$>JGEO,SAT=136,FREQ=1545.53,"),
};

S_Frame Reply(const std::string& line) {
  const auto* const kind = std::find_if(std::begin(kReplyKinds), std::end(kReplyKinds),
                                        [&line](const S_ReplyKind& row) { return line.rfind(row.start, 0) == 0; });
  Require(kind != std::end(kReplyKinds), "no kind of reply: " + line);
  Require(line.size() + 1 >= kind->least && line.size() + 1 <= kind->most, "length of " + line);
  return {kind->protocol, kind->type, kind->name, line + '\r', "\n", ""};
}

std::string Digits(S_Context& context) { return Fixed(context.random.Between(10, 99)); }

}  // namespace

S_Frame OwnSentence(const std::string& body) {
  const std::string text = "PKVN," + body;
  const std::string bytes = '$' + text + '*' + Hex(Xor(text), 2);
  const std::string name = body.substr(0, body.find(','));
  for (std::uint32_t row = 0; row < OwnSentences().size(); ++row) {
    const S_OwnSentence& sentence = OwnSentences()[row];
    if (sentence.name != name) continue;
    Require(bytes.size() + 1 >= sentence.least && bytes.size() + 1 <= sentence.most, "length of " + bytes);
    return {ePkvn, row, name, bytes, "\r\n", ""};
  }
  Require(false, "no own sentence " + name);
  return {};
}

S_Frame PackedSentence(unsigned int count, std::string_view payload) {
  return {ePkvn, 0, "RAW", "$PKVN,RAW,5," + Fixed(count) + ',' + Pack7Of8(payload) + "\r\n", "", ""};
}

S_Frame PackedReply(std::string_view payload) {
  return {eRox, kNoType, "JROX", "$JROX," + Pack7Of8(payload) + "\r\n", "", ""};
}

S_Frame CheckedReply(const std::string& body) { return Reply('$' + body + '*' + Hex(Xor(body), 2)); }

S_Frame BareReply(const std::string& body) { return Reply('$' + body); }

S_Frame MakeOwnSentence(S_Context& context) {
  const std::size_t kinds = OwnSentences().size() - 1;
  const S_OwnSentence& sentence = OwnSentences()[1 + context.round % kinds];
  std::string body = sentence.bodies[context.round / kinds % sentence.bodies.size()];
  Replace(body, "{time}", TimeField(context.now));
  Replace(body, "{date}", DateField(context.now));
  Replace(body, "{heading}", Fixed(context.now.course, 2));
  Replace(body, "{n0}", Digits(context));
  Replace(body, "{n}", Digits(context));
  return OwnSentence(std::string(sentence.name) + ',' + body);
}

// Even and odd payloads: an odd one announces its own count, and a zero byte fills up its last word.
S_Frame MakePackedSentence(S_Context& context) {
  const unsigned int count = 20 + 17 * (context.round % 12);
  return PackedSentence(count, context.random.Bytes(count));
}

S_Frame MakePackedReply(S_Context& context) { return PackedReply(context.random.Bytes(2 + 24 * (context.round % 14))); }

S_Frame MakeDiagnostic(S_Context& context) {
  std::string body = "RD1," + Fixed(context.now.gpsSecond) + ',' + Fixed(context.now.gpsWeek) + ",1545.5300,0,12";
  for (const char* const between : {"-", ",", ".5,-0."}) body += between + Digits(context);
  body += ",1.25,1F,A0,3,7E";
  return context.round % 3 == 0 ? CheckedReply(body) : BareReply(body);
}

S_Frame MakeReply(S_Context& context) {
  const std::string body = kReplies[context.round % std::size(kReplies)].substr(1);
  return context.round / std::size(kReplies) % 2 == 0 ? CheckedReply(body) : BareReply(body);
}

S_Frame MakeLongestReply(S_Context& context) {
  return BareReply(kLongestReplies[context.round % std::size(kLongestReplies)].substr(1));
}

S_Frame MakeSiteRecord(S_Context& context) {
  std::string body = ">JSITERECORD," + Fixed(context.round + 1) + ",BRIDGE," + PositionFields(context.now) + ',' +
                     DateField(context.now) + ',' + TimeField(context.now);
  if (context.round % 2 != 0) body += ',' + std::string(511 - 3 - body.size(), 's');
  return BareReply(body);
}
