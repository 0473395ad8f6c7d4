#include "apps/velagnss/account/StreamAccount.h"

#include <gmock/gmock.h>

#include "Cases.h"
#include "Streams.h"
#include "apps/velagnss/account/AccountTable.h"
#include "apps/velagnss/pipeline/RecordRun.h"

namespace {

Host::C_StreamAccount AccountOf(std::string_view stream) {
  Host::C_StreamAccount account;
  Host::C_RecordRun run({{C_RawDataMessage::eNMEA0183}, std::nullopt}, {&account});
  run.BeginInput("");
  run.Feed({{reinterpret_cast<const unsigned char*>(stream.data()), stream.size()}, {}});
  run.EndInput();
  return account;
}

struct S_ReasonCase {
  const char* name;
  std::string stream;
  const char* text;  // part of the table
};
const std::string kFix = Sentence("GPGLL,4916.45,N,12311.12,W,225444,A,A");
const std::string kVoid = Sentence("GPRMC,225446,V,4916.45,N,12311.12,W,,,191124,,,N");
const S_ReasonCase kReasons[] = {
    {"OnlyGll", kVoid + kFix + kVoid, "no fix has an altitude"},
    {"GgaWithoutAltitude", Sentence("GPGGA,225444,4916.45,N,12311.12,W,1,04,1.0,,M,,M,,"), "no fix has an altitude"},
    {"OnlyVoid", kVoid, "all positions are marked as invalid"},
    {"DeadReckoning", Sentence("GPGGA,225444,4916.45,N,12311.12,W,6,04,1.0,5,M,,M,,"), "marked as invalid, estimated"},
};
TEST_ROWS(PositionReason, IsInTheTable, kReasons, row) {
  EXPECT_THAT(Host::AccountTable(AccountOf(row.stream), false), testing::HasSubstr(row.text));
}

// A checksum in lower case breaks a rule of the catalog.
TEST(StreamAccount, HasARowForEachName) {
  const std::string odd = "$GPHDT,8.0,T*3d\r\n";
  const Host::C_StreamAccount account = AccountOf(odd + Sentence("GPHDT,8.0,T") + odd);
  ASSERT_EQ(account.Messages().size(), 1);
  EXPECT_EQ(account.Messages()[0].count, 3);
  EXPECT_TRUE(account.Messages()[0].number);
}

// 7.3 - 7.1 is not 0.2 in binary.
TEST(StreamAccount, DurationIsInWholeMilliseconds) {
  const auto at = [](const std::string& time) { return Sentence("GPGLL,4916.45,N,12311.12,W,0000" + time + ",A,A"); };
  EXPECT_EQ(AccountOf(at("07.1") + at("07.3")).Duration(), 0.4);
}

}  // namespace
