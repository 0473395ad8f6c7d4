// Writes a receiver session of some minutes, all protocols interleaved and with the faults of a bad line, and the
// manifest of what a careful reader must find in it.
//
//   make_session SESSION.bin MANIFEST.json
//
// The same bytes come out on every machine: no clock, no locale, and real numbers only where orbits need them.

#include <cstdio>
#include <cstdlib>

#include "samples/Faults.h"
#include "samples/Frames.h"
#include "samples/Session.h"

namespace {

using t_Send = void (*)(C_Session& session, S_Context& context);

template <S_Frame (*Make)(S_Context&)>
void One(C_Session& session, S_Context& context) {
  session.Add(Make(context));
}

template <std::vector<S_Frame> (*Make)(S_Context&)>
void Set(C_Session& session, S_Context& context) {
  for (const S_Frame& frame : Make(context)) session.Add(frame);
}

// --- Good frames whose line ends are unusual ---

void SendLineFeedOnly(C_Session& session, S_Context& context) {
  S_Frame frame = MakeGga(context);
  frame.bytes.back() = '\n';
  frame.tail.clear();
  session.Add(frame);
}

void SendReturnOnly(C_Session& session, S_Context& context) {
  S_Frame frame = MakeGll(context);
  frame.tail.clear();
  session.Add(frame);
}

void SendManyLineEnds(C_Session& session, S_Context& context) {
  S_Frame frame = MakeZda(context);
  frame.tail = "\n\r\n\r\r\n";
  session.Add(frame);
}

void SendBlockWithoutLineEnd(C_Session& session, S_Context& context) {
  S_Frame frame = MakePositionBlock(context);
  frame.tail.clear();
  session.Add(frame);
}

// A sentence that does not end in a checksum is taken as it is, with its own line end.
void SendUncheckedOwnSentence(C_Session& session, S_Context& context) {
  S_Frame frame = OwnSentence("HPR," + TimeField(context.now) + ",91.27,-1.27,0.55,N");
  frame.bytes = frame.bytes.substr(0, frame.bytes.rfind('*')) + '\r';
  frame.tail = "\n";
  session.Add(frame);
}

// As short as a sentence can be: the search for a start already holds its line end and what comes after.
void SendShortestSentence(C_Session& session, S_Context&) { session.Add(Sentence("TIROT,")); }

void SendAcknowledgement(C_Session& session, S_Context&) { session.AddAcknowledgement("$>\r\n"); }

struct S_Row {
  eGroup group;
  int period;  // s
  int phase;   // s, first time
  t_Send send;
};

// What is sent in each second, in this order.
constexpr S_Row kSchedule[] = {
    {eTextGroup, 1, 0, &One<MakeGga>},
    {eTextGroup, 1, 0, &One<MakeRmc>},
    {eTextGroup, 2, 1, &One<MakeVtg>},
    {eTextGroup, 5, 1, &Set<MakeGsaSet>},
    {eTextGroup, 5, 3, &Set<MakeGsvSet>},
    {eTextGroup, 2, 0, &One<MakeZda>},
    {eTextGroup, 3, 0, &One<MakeGll>},
    {eTextGroup, 3, 1, &One<MakeGns>},
    {eTextGroup, 3, 2, &One<MakeGst>},
    {eTextGroup, 10, 4, &One<MakeRmcOfNmea2>},
    {eTextGroup, 10, 6, &One<MakeVtgOfNmea2>},
    {eTextGroup, 20, 8, &Set<MakeGsaSetOfNmea2>},
    {eTextGroup, 20, 9, &Set<MakeGsvSetOfNmea2>},
    {eTextGroup, 5, 2, &One<MakeRareSentence>},
    {eTextGroup, 30, 12, &SendLineFeedOnly},
    {eTextGroup, 30, 17, &SendReturnOnly},
    {eTextGroup, 30, 22, &SendManyLineEnds},
    {eTextGroup, 100, 27, &SendShortestSentence},

    {eBlockGroup, 1, 0, &One<MakePositionBlock>},
    {eBlockGroup, 4, 2, &One<MakeObservationBlock>},
    {eBlockGroup, 6, 0, &One<MakeGpsBlock>},
    {eBlockGroup, 24, 5, &One<MakeQzssBlock>},
    {eBlockGroup, 9, 2, &One<MakeGlonassBlock>},
    {eBlockGroup, 12, 7, &One<MakeSbasBlock>},
    {eBlockGroup, 15, 8, &One<MakeRawWordsBlock>},
    {eBlockGroup, 4, 1, &One<MakeStatusBlock>},
    {eBlockGroup, 30, 14, &SendBlockWithoutLineEnd},
    {eBlockGroup, 2, 1, &One<MakeOwnSentence>},
    {eBlockGroup, 40, 19, &SendUncheckedOwnSentence},
    {eBlockGroup, 8, 3, &One<MakePackedSentence>},
    {eBlockGroup, 10, 3, &One<MakePackedReply>},
    {eBlockGroup, 5, 4, &One<MakeDiagnostic>},
    {eBlockGroup, 6, 5, &One<MakeReply>},
    {eBlockGroup, 30, 11, &One<MakeLongestReply>},
    {eBlockGroup, 40, 35, &One<MakeSiteRecord>},
    {eBlockGroup, 25, 6, &SendAcknowledgement},

    {eRtcmGroup, 10, 0, &One<MakeStation>},
    {eRtcmGroup, kMsmPeriod, kMsmPhase, &Set<MakeMsmSet>},
    {eRtcmGroup, 7, 3, &One<MakeGpsEphemeris>},
    {eRtcmGroup, 9, 5, &One<MakeGlonassEphemeris>},
    {eRtcmGroup, 20, 11, &One<MakeGalileoEphemeris>},
    {eRtcmGroup, 12, 8, &One<MakeBeidouEphemeris>},
    {eRtcmGroup, 15, 6, &One<MakeCodePhaseBias>},
    {eRtcmGroup, 20, 7, &One<MakeProprietaryRtcm>},
};

void SendGroup(C_Session& session, S_Context& context, eGroup group) {
  AddFaults(session, context, group);
  const int second = context.now.second;
  for (const S_Row& row : kSchedule) {
    if (row.group != group || second % row.period != row.phase) continue;
    context.round = static_cast<unsigned int>(second / row.period);
    row.send(session, context);
  }
}

C_Session MakeSession() {
  C_Session session;
  S_Context context{MomentAt(0), C_Random(20240518), 0};
  for (int second = 0; second < kSessionSeconds; ++second) {
    context.now = MomentAt(second);
    for (const eGroup group : {eTextGroup, eBlockGroup, eRtcmGroup}) SendGroup(session, context, group);
  }
  return session;
}

void WriteFile(const char* name, const std::string& content) {
  std::FILE* const file = std::fopen(name, "wb");
  Require(file != nullptr, std::string("cannot open ") + name);
  const bool isWritten = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  Require(std::fclose(file) == 0 && isWritten, std::string("cannot write ") + name);
}

}  // namespace

int main(int count, char** arguments) {
  Require(count == 3, "usage: make_session SESSION.bin MANIFEST.json");
  const C_Session session = MakeSession();
  WriteFile(arguments[1], session.Bytes());
  WriteFile(arguments[2], session.Manifest());
  return EXIT_SUCCESS;
}
