// `velagnss relay` as users run it.
#include "tests/Cases.h"
#include "tests/ProgramRun.h"

namespace {

struct S_Relay {
  const char* name;
  const char* command;
  int code;
  const char* output;
  const char* message;
};
constexpr S_Relay kRelays[] = {
    {"RawIsAllOfIt", "velagnss relay $S --to raw | cmp - $S", 0, "", ""},
    {"WithoutFormatAndFilter", "velagnss relay $S --to copy; cmp copy $S", 0, "", ""},
    {"FramesAsExtracted", "velagnss extract --proto rtcm3 $S >a; velagnss relay --proto rtcm3 $S --to b; cmp a b", 0,
     "", ""},
    {"LinesAsDecoded",
     "velagnss decode --msg GGA $S >a; velagnss decode --epochs-only $S >b;"
     "velagnss relay --msg GGA $S --to json:c --to epochs:d; cmp a c; cmp b d",
     0, "", ""},
    {"ToTheNextOne",
     "velagnss relay $S --wait-clients 1 --to unix-listen://$PWD/s &"
     "until [ -S s ]; do sleep 0.01; done;"
     "python3 -c 'import socket, sys\n"
     "s = socket.socket(socket.AF_UNIX); s.connect(\"s\")\n"
     "for b in iter(lambda: s.recv(65536), b\"\"): sys.stdout.buffer.write(b)' | cmp - $S; wait",
     0, "", ""},
    {"NoDestination", "velagnss relay $S", 2, "", "--to is required"},
    {"WrongDestination", "velagnss relay $S --to tcp://nowhere", 2, "", "tcp://nowhere: has no port"},
    {"FullDisk", "velagnss relay $S --to /dev/full --to b; code=$?; cmp b $S && exit $code", 4, "", "No space left"},
    {"OntoItself", "cp $S a; velagnss relay a --to raw:a", 2, "", "is also an input"},
    {"Empty", ": >e; velagnss relay e --to frames", 1, "", "is empty"},
    {"NothingRecognized", "echo hello | velagnss relay --to frames", 1, "", "no frame"},
    {"SignalWhileItWaits",
     VELAGNSS_PROGRAM " relay $S --wait-clients 1 --to unix-listen://$PWD/s & until [ -S s ]; do sleep 0.01; done;"
                      "kill -TERM $!; wait $!",
     143, "", ""},
};

TEST_ROWS_F(Relay, Command, Program, kRelays, row) {
  const Outcome outcome = Run(row.command);
  EXPECT_EQ(outcome.code, row.code) << outcome.messages;
  EXPECT_EQ(outcome.output, row.output);
  EXPECT_NE(outcome.messages.find(row.message), std::string::npos) << outcome.messages;
}

}  // namespace
