#include "samples/Faults.h"

#include "samples/Frames.h"

namespace {

// The whole line that a frame is sent in.
std::string Line(const S_Frame& frame) { return frame.bytes + frame.tail; }

std::string Flipped(const std::string& bytes, std::size_t at, int bit = 0) {
  Require(at < bytes.size(), "no byte to flip");
  const auto flipped = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ 1U << bit);
  return bytes.substr(0, at) + flipped + bytes.substr(at + 1);
}

// The line with a bit flipped `fromEnd` bytes before the end of the frame.
std::string FlippedFromEnd(const S_Frame& frame, std::size_t fromEnd) {
  return Flipped(Line(frame), frame.bytes.size() - fromEnd);
}

std::string Cut(const S_Frame& frame, std::size_t length) { return frame.bytes.substr(0, length); }

// The line with the byte after `text` replaced.
std::string WithByteBehind(const S_Frame& frame, std::string_view text, char byte) {
  std::string line = Line(frame);
  const std::size_t at = line.find(text);
  Require(at != std::string::npos, "nothing to replace");
  line[at + text.size()] = byte;
  return line;
}

// The same line without its three characters of checksum.
std::string Unchecked(const S_Frame& frame) {
  std::string line = Line(frame);
  return line.erase(line.rfind('*'), 3);
}

// "*4C" becomes "*4c"; digits without a letter become "aa".
std::string WithLowerCaseSum(const S_Frame& frame) {
  std::string line = Line(frame);
  const std::size_t first = line.rfind('*') + 1;
  const bool hasLetter = line[first] > '9' || line[first + 1] > '9';
  for (std::size_t at = first; at < first + 2; ++at)
    line[at] = hasLetter ? static_cast<char>(line[at] | ' ') : 'a';  // digits already have this bit set
  return line;
}

std::string OwnText(const std::string& body) {
  const std::string text = "PKVN," + body;
  return '$' + text + '*' + Hex(Xor(text), 2) + "\r\n";
}

std::string FilledSentence(const std::string& start, std::size_t length) {
  const std::string text = start + std::string(length, '1');
  return '$' + text + '*' + Hex(Xor(text), 2) + "\r\n";
}

std::string BlockOf(unsigned int id, std::size_t dataLength, S_Context& context) {
  const std::string data = context.random.Bytes(dataLength);
  return "$BIN" + LittleEndian(id, 2) + LittleEndian(dataLength, 2) + data + LittleEndian(ByteSum(data), 2) + "\r\n";
}

struct S_FaultRow {
  int second;
  eGroup before;     // the group of frames that follows
  const char* what;  // for the manifest
  int result;        // when the first byte is given up: 1 no start, 4 wrong checksum, 5 refused
  std::string (*make)(S_Context& context);
};

using C = S_Context;

// What follows counts: a frame that lost its end takes the next bytes for its own until its length, its limit or the
// next line end. Those without a checksum must not lose theirs, else the next sentence would go with them.
const S_FaultRow kFaults[] = {
    // NMEA 0183
    {7, eTextGroup, "GGA, a bit of a field flipped", 4, [](C& c) { return Flipped(Line(MakeGga(c)), 30); }},
    {11, eTextGroup, "RMC, checksum in lower case", 5, [](C& c) { return WithLowerCaseSum(MakeRmc(c)); }},
    {14, eTextGroup, "GLL without checksum", 5, [](C& c) { return Unchecked(MakeGll(c)); }},
    {19, eTextGroup, "VTG cut short", 5, [](C& c) { return Cut(MakeVtg(c), 20); }},
    {23, eTextGroup, "GSA cut short", 4, [](C& c) { return Cut(MakeGsaSet(c).front(), 31); }},
    {26, eTextGroup, "ZDA with a NUL", 5, [](C& c) { return WithByteBehind(MakeZda(c), "20", '\0'); }},
    {29, eTextGroup, "unknown formatter", 1, [](C&) { return FilledSentence("GPXYZ,A,B,", 3); }},
    {33, eTextGroup, "XTE, too long", 5, [](C&) { return FilledSentence("GPXTE,A,A,", 30); }},
    {36, eTextGroup, "XTE, one byte too long", 5, [](C&) { return FilledSentence("GPXTE,A,A,", 18); }},
    {41, eTextGroup, "start doubled: $", 1, [](C&) { return std::string("$"); }},
    {44, eTextGroup, "start doubled: the first field of GGA", 4, [](C&) { return std::string("$GNGGA,"); }},
    {47, eTextGroup, "start doubled: half of the first field", 1, [](C&) { return std::string("$GN"); }},
    {52, eBlockGroup, "GNS cut short ahead of a block", 5, [](C& c) { return Cut(MakeGns(c), 33); }},
    {58, eRtcmGroup, "ZDA cut short ahead of RTCM 3", 5, [](C& c) { return Cut(MakeZda(c), 15); }},
    {61, eTextGroup, "GST, a wrong digit of the checksum", 4, [](C& c) { return FlippedFromEnd(MakeGst(c), 2); }},

    // RTCM 3
    {64, eRtcmGroup, "1005, a bit of the position flipped", 4,
     [](C& c) { return Flipped(MakeStation(c).bytes, 12, 5); }},
    {67, eRtcmGroup, "1019, a bit of the checksum flipped", 4,
     [](C& c) { return FlippedFromEnd(MakeGpsEphemeris(c), 1); }},
    {72, eTextGroup, "1020, a bit of the length flipped", 4,
     [](C& c) { return Flipped(MakeGlonassEphemeris(c).bytes, 2, 6); }},
    {76, eTextGroup, "1077 cut short", 4, [](C& c) { return Cut(MakeMsmSet(c).front(), 100); }},
    {79, eRtcmGroup, "message number that is not used", 5,
     [](C& c) { return RtcmFrame("\x3F\xD0" + c.random.Bytes(20)).bytes; }},
    {83, eRtcmGroup, "empty frame", 5, [](C&) { return std::string("\xD3\0\0\x47\xEA\x4B", 6); }},
    {86, eRtcmGroup, "reserved bits set", 1, [](C& c) { return Flipped(MakeCodePhaseBias(c).bytes, 1, 4); }},
    {91, eRtcmGroup, "start doubled: D3", 1, [](C&) { return std::string("\xD3"); }},
    {94, eTextGroup, "false start with the greatest length", 4,
     [](C&) { return std::string("\xD3\x03\xFF\x43\x50", 5); }},
    {97, eBlockGroup, "false start with the greatest length", 4,
     [](C&) { return std::string("\xD3\x03\xFF\xFE\x80", 5); }},

    // Binary blocks
    {102, eBlockGroup, "block 95, a data bit flipped", 4, [](C& c) { return Flipped(Line(MakeGpsBlock(c)), 60, 3); }},
    {106, eBlockGroup, "block 65, a bit of the sum flipped", 4,
     [](C& c) { return FlippedFromEnd(MakeGlonassBlock(c), 1); }},
    {109, eTextGroup, "block 93 cut short", 4, [](C& c) { return Cut(MakeSbasBlock(c), 40); }},
    {113, eBlockGroup, "block 25 cut short ahead of a block", 4, [](C& c) { return Cut(MakeQzssBlock(c), 77); }},
    {116, eBlockGroup, "block 4, which does not exist", 5, [](C& c) { return BlockOf(4, 52, c); }},
    {121, eBlockGroup, "block 210, beyond the last", 5, [](C& c) { return BlockOf(210, 52, c); }},
    {124, eBlockGroup, "block 1 with a data byte more", 5, [](C& c) { return BlockOf(1, 53, c); }},
    {127, eBlockGroup, "block 103 with a data byte less than it may have", 5, [](C& c) { return BlockOf(103, 63, c); }},
    {132, eBlockGroup, "block 103 with a data byte more than it may have", 5, [](C& c) { return BlockOf(103, 94, c); }},
    {136, eBlockGroup, "start doubled: $BIN", 5, [](C&) { return std::string("$BIN"); }},
    {139, eBlockGroup, "length that wraps in 16 bits", 5, [](C&) { return std::string("$BIN\x01\0\xFA\xFF", 8); }},

    // The receiver's own sentences, text and packed
    {143, eTextGroup, "HPR, a bit of a field flipped", 5,
     [](C&) { return Flipped(OwnText("HPR,235923.00,91.27,-1.27,0.55,N"), 26); }},
    {146, eTextGroup, "HPR cut short", 5, [](C&) { return Cut(OwnSentence("HPR,235926.00,91.27,-1.27,0.55,N"), 27); }},
    {151, eTextGroup, "HPR, checksum in lower case", 5,
     [](C&) { return WithLowerCaseSum(OwnSentence("HPR,235931.00,91.27,-1.27,0.51,N")); }},
    {154, eTextGroup, "own sentence of an unknown name", 5,
     [](C&) { return OwnText("HPRX,235934.00,91.27,-1.27,0.55"); }},
    {157, eBlockGroup, "INTLT, too long", 5, [](C&) { return OwnText("INTLT,12.3456789012345678901"); }},
    {166, eBlockGroup, "VCT with a tabulator", 5,
     [](C&) { return OwnText("VCT,1,000006.00,\t91.27,1.21,-0.33,0.155,0.2,0.3"); }},
    {169, eBlockGroup, "RAW, a data bit flipped", 4, [](C& c) { return Flipped(MakePackedSentence(c).bytes, 20, 4); }},
    {172, eBlockGroup, "RAW, a byte without its top bit", 5,
     [](C& c) { return Flipped(MakePackedSentence(c).bytes, 24, 7); }},
    {177, eBlockGroup, "RAW, announcing two bytes more", 4,
     [](C& c) { return PackedSentence(34, c.random.Bytes(32)).bytes; }},
    {181, eBlockGroup, "RAW, announcing an odd count for the next even one", 4,
     [](C& c) { return PackedSentence(33, c.random.Bytes(32)).bytes; }},
    {184, eTextGroup, "RAW cut short", 5, [](C& c) { return Cut(PackedSentence(90, c.random.Bytes(90)), 50); }},

    // Replies
    {188, eTextGroup, "RD1 with a wrong checksum", 4,
     [](C&) {
       return Flipped(Line(CheckedReply("RD1,604826,2315,1545.5300,0,12-34,45.5,-0.12,1.25,1F,A0,3,7E")), 10);
     }},
    {191, eTextGroup, "RD1 with a NUL", 5, [](C& c) { return WithByteBehind(MakeDiagnostic(c), "15", '\0'); }},
    {196, eTextGroup, "RD2, a version that does not exist", 5,
     [](C&) { return std::string("$RD2,21,2315,1545.5300,0,12-34,45.5,-0.12,1.25,1F\r\n"); }},
    {199, eTextGroup, "RD0, a version that is never sent", 5,
     [](C&) { return std::string("$RD0,21,2315,1545.5300,0,12-34,45.5,-0.12,1.25,1F\r\n"); }},
    {203, eTextGroup, "JI with a wrong checksum", 4,
     [](C&) { return Flipped(Line(CheckedReply(">JI,20417733,4,2,12/03/2021,01/01/2020,3.14,61")), 12); }},
    {206, eTextGroup, "JQUERY, too long", 5,
     [](C&) { return std::string("$>JQUERY,LIST,") + std::string(120, 'q') + "\r\n"; }},
    {211, eTextGroup, "JGEO with an escape", 5,
     [](C&) { return std::string("$>JGEO,SAT=123,FREQ=1545.53,\x1BLON=31.5,EL=22,AZ=147\r\n"); }},
    {214, eTextGroup, "JI, shorter than it may be", 4, [](C&) { return std::string("$>JI,20417733\r\n"); }},
    {217, eTextGroup, "site record with a backspace", 5,
     [](C&) { return std::string("$>JSITERECORD,7,BRIDGE\b,5128.6,N\r\n"); }},
    {222, eTextGroup, "site record, too long", 5,
     [](C&) { return std::string("$>JSITERECORD,8,") + std::string(500, 'r') + "\r\n"; }},
    {226, eBlockGroup, "JROX, a data bit flipped", 4,
     [](C& c) { return Flipped(PackedReply(c.random.Bytes(60)).bytes, 33, 2); }},
    {229, eBlockGroup, "JROX with a plain character", 5,
     [](C& c) { return Flipped(PackedReply(c.random.Bytes(60)).bytes, 33, 7); }},
    {233, eTextGroup, "JROX cut short", 5, [](C& c) { return Cut(PackedReply(c.random.Bytes(60)), 40); }},
    {236, eTextGroup, "JROX, too long", 5, [](C& c) { return PackedReply(c.random.Bytes(390)).bytes; }},

    // Each of these false starts is followed by a good sentence or a good RTCM 3 frame.
    {241, eTextGroup, "false start: RAW without end", 5, [](C&) { return std::string("$PKVN,RAW,5,20,"); }},
    {244, eRtcmGroup, "false start: block 71", 4, [](C&) { return std::string("$BIN\x47\0\xC0\x01", 8); }},
    {248, eRtcmGroup, "false start: site record", 5, [](C&) { return std::string("$>JSITERECORD,"); }},
};

// Noise of several kinds, none of which may begin with a line end.
using t_Noise = std::string (*)(S_Context& context);
constexpr t_Noise kNoises[] = {
    [](C& c) { return std::string(1, '\x7F') + c.random.Bytes(1 + c.random.Below(64)); },
    [](C&) { return std::string(17, '\0'); },
    [](C&) { return std::string("boot 3.14 ... self test passed\r\n"); },
    [](C&) { return std::string(40, '$'); },
    [](C& c) { return std::string(1, '\xFF') + c.random.Bytes(200 + c.random.Below(200)); },
    [](C&) { return std::string("\xD3\xD3\xD3$\xD3$\xD3", 7); },
    [](C&) { return std::string(33, '\xFF'); },
    [](C&) { return std::string("$GPGGA\r\n$GPGSA\r\n$PKVN\r\n$>J\r\n"); },
};
constexpr int kNoisePeriod = 9;

// The last seconds stay clean: what a false start waits for has then come.
constexpr int kQuietSeconds = 15;

}  // namespace

void AddFaults(C_Session& session, S_Context& context, eGroup group) {
  const int second = context.now.second;
  context.round = static_cast<unsigned int>(second);
  for (const S_FaultRow& row : kFaults)
    if (row.second == second && row.before == group) session.AddFault(row.make(context), row.what, row.result);
  const int noisyGroup = second / kNoisePeriod % 3;
  if (second % kNoisePeriod == 4 && group == noisyGroup && second < kSessionSeconds - kQuietSeconds)
    session.AddNoise(kNoises[static_cast<std::size_t>(second / kNoisePeriod) % std::size(kNoises)](context));
}
