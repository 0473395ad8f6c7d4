// Streams cut into blocks for several cores, and into ranges: the result is that of the whole in one go.
#include <gmock/gmock.h>

#include <random>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/json/JsonLines.h"
#include "apps/velagnss/pipeline/Handover.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/report/InputReport.h"

namespace {

using Host::S_ByteRange;
using Host::S_JsonLinesOptions;
using Host::S_RunOptions;

S_RunOptions AllProtocols() { return {Host::ParseSearchList("", false).value(), std::nullopt}; }

std::string Decoded(std::string_view stream, const S_JsonLinesOptions& options, const S_RunOptions& how,
                    std::size_t piece) {
  Host::C_JsonLines lines(options);
  Host::C_RecordRun run(how, {&lines});
  run.BeginInput("in");
  for (std::size_t at = 0; at < stream.size() && run.WantsMore(); at += piece) {
    const std::string_view part = stream.substr(at, piece);
    run.Feed({{reinterpret_cast<const unsigned char*>(part.data()), part.size()}, {}});
  }
  run.EndInput();
  return std::string(lines.Text().Text()) + std::to_string(lines.DataErrors()) + "\n";
}

S_JsonLinesOptions Everything() {
  S_JsonLinesOptions options;
  options.events = options.epochs = options.hex = true;
  return options;
}
S_JsonLinesOptions SomeEpochs() {
  S_JsonLinesOptions options;
  options.epochs = options.epochsOnly = true;
  return options;
}
S_JsonLinesOptions Periods() {
  S_JsonLinesOptions options;
  options.events = true;
  options.filter.AddMessages("GGA:10,GSV:3,1077:5");
  return options;
}
const S_JsonLinesOptions kOptions[] = {Everything(), SomeEpochs(), Periods()};

// False starts of all kinds, longer than blocks, between good frames with TAG blocks.
std::string Hostile(std::size_t size) {
  std::mt19937 random(17);
  const std::string pieces[] = {Sentence("GPGGA,120000,4800,N,01100,E,1,05,1.0,500,M,,M,,"),
                                std::string(700, '$'),
                                "\xD3\x03\xFF",
                                "\\s:a*12\\" + Sentence("GPGSV,1,1,01,05,10,100,40"),
                                RtcmFrame(RtcmPayload(1005, 19)),
                                "$GPGGA,",
                                "$PKVN,RAW,"};
  std::string stream;
  while (stream.size() < size) {
    std::string piece = pieces[random() % std::size(pieces)];
    if (random() % 9 == 0) piece.resize(random() % (piece.size() + 1));
    stream += piece;
  }
  return stream;
}

std::string Sample() {
  std::string sample = Slurp(VELAGNSS_SOURCE_DIR "/samples/session.bin");
  EXPECT_FALSE(sample.empty()) << "samples/session.bin cannot be read";
  return sample;
}

// The sample with flipped bits in the messages of RTCM 3, whose checksums are right again: other times, masks, channels
// and lock indicators, and payloads that end too early. The sentences between them carry their times.
std::string WithFlippedBits(const std::string& sample) {
  std::mt19937 random(23);
  std::string stream;
  velagnss::FrameReader reader;
  reader.Feed(reinterpret_cast<const unsigned char*>(sample.data()), sample.size());
  while (const velagnss::Frame* frame = reader.NextFrame()) {
    std::string bytes(reinterpret_cast<const char*>(frame->data), frame->length);
    if (frame->protocol == C_RawDataMessage::eRTCM3_x) {
      std::string payload = bytes.substr(3, bytes.size() - 6);
      for (unsigned int flips = random() % 4; flips > 0; --flips)
        payload[random() % std::min<std::size_t>(payload.size(), 60)] ^= static_cast<char>(1U << random() % 8);
      if (random() % 16 == 0) payload.resize(2 + random() % (payload.size() - 1));
      bytes = RtcmFrame(payload);
    }
    stream += bytes;
  }
  return stream;
}

TEST(Blocks, GiveTheLinesOfOneCore) {
  constexpr std::size_t kPiece = 100'001;  // large enough for blocks
  for (const std::string& stream : {Sample(), Hostile(200'000), WithFlippedBits(Sample())}) {
    for (const S_JsonLinesOptions& options : kOptions) {
      const std::string expected = Decoded(stream, options, AllProtocols(), 777);
      for (const auto& [cores, size] : {std::pair(2U, 64U), {2U, 1U}, {3U, 2U}, {4U, 3U}, {5U, 7U}}) {
        S_RunOptions how = AllProtocols();
        how.cores = cores;
        how.blockSize = size;
        ASSERT_EQ(Decoded(stream, options, how, kPiece), expected) << cores << " cores, blocks of " << size;
      }
    }
  }
}

using t_Offsets = Host::C_Handover<std::uint64_t>;

struct S_Maker : Host::C_RecordConsumer {
  explicit S_Maker(t_Offsets& to) : offsets(to) {}
  void OnFrame(const Host::S_FrameRecord& record) override { offsets.Make(record.frame.offset, record.frame.offset); }
  void EndBlock() override { offsets.EndMaking(); }
  t_Offsets& offsets;
};

struct S_Taker : Host::C_RecordConsumer {
  explicit S_Taker(t_Offsets& from) : offsets(from) {}
  void BeginBlock(Host::C_BlockWork*) override { offsets.BeginTaking(); }
  void OnFrame(const Host::S_FrameRecord& record) override {
    ++frames;
    const std::uint64_t now = record.frame.offset;
    offsets.TakeUpTo(now, [&](std::uint64_t offset) { inTime += offset == now ? 1 : 0; });
  }
  void EndBlock() override { offsets.EndTaking(); }
  t_Offsets& offsets;
  int frames = 0, inTime = 0;
};

TEST(Blocks, HandOverAtTheFrame) {
  const std::string stream = Sample();
  for (const unsigned int cores : {1U, 2U, 4U}) {
    S_RunOptions how = AllProtocols();
    how.cores = cores;
    how.blockSize = 5;
    t_Offsets offsets;
    S_Maker maker(offsets);
    S_Taker taker(offsets);
    Host::C_RecordRun run(how, {&maker, &taker});
    run.BeginInput("in");
    run.Feed({{reinterpret_cast<const unsigned char*>(stream.data()), stream.size()}, {}});
    run.EndInput();
    EXPECT_EQ(taker.frames, 4245) << cores;
    EXPECT_EQ(taker.inTime, 4245) << cores;
  }
}

// Epochs and errors go from stage to stage.
std::string Reported(std::string_view stream, const S_RunOptions& how) {
  Host::C_InputReport report;
  Host::C_RecordRun run(how, report.Consumers());
  run.BeginInput("in");
  run.Feed({{reinterpret_cast<const unsigned char*>(stream.data()), stream.size()}, {}});
  run.EndInput();
  Host::C_JsonWriter json;
  report.Write(json);
  return std::string(json.Text());
}

TEST(Blocks, GiveTheReportOfOneCore) {
  for (const std::string& stream : {Sample() + Sample(), Hostile(200'000)}) {
    const std::string expected = Reported(stream, AllProtocols());
    for (const auto& [cores, size] : {std::pair(2U, 64U), {3U, 1U}, {5U, 7U}}) {
      S_RunOptions how = AllProtocols();
      how.cores = cores;
      how.blockSize = size;
      ASSERT_EQ(Reported(stream, how), expected) << cores << " cores, blocks of " << size;
    }
  }
}

// Without the numbers of faults, which add up.
std::string OfRange(const std::string& stream, const S_JsonLinesOptions& options, S_ByteRange range, unsigned cores,
                    unsigned long& faults) {
  S_RunOptions how = AllProtocols();
  how.range = range;
  how.cores = cores;
  std::string lines = Decoded(stream, options, how, 100'001);
  const std::size_t last = lines.rfind('\n', lines.size() - 2) + 1;  // beyond any line: 0
  faults += std::stoul(lines.substr(last));
  return lines.substr(0, last);
}

void ExpectRangesToBeTheWhole(const std::string& stream, const S_JsonLinesOptions& options,
                              const std::vector<std::uint64_t>& cuts, unsigned cores) {
  unsigned long faults = 0;
  std::string together;
  S_ByteRange range{0, 0};
  for (const std::uint64_t cut : cuts) {
    range = {range.end, cut};
    together += OfRange(stream, options, range, cores, faults);
  }
  together += OfRange(stream, options, {range.end}, cores, faults);
  ASSERT_EQ(together + std::to_string(faults) + "\n", Decoded(stream, options, AllProtocols(), stream.size()))
      << "first cut " << cuts.front();
}

TEST(Ranges, AreTogetherTheWhole) {
  std::mt19937 random(5);
  for (const std::string& stream : {Sample(), Hostile(200'000)})
    for (const S_JsonLinesOptions& options : kOptions) {
      for (unsigned cores = 1; cores < 3; ++cores) {
        std::vector<std::uint64_t> cuts(3);
        for (std::uint64_t& cut : cuts) cut = 1 + random() % (stream.size() - 1);
        std::sort(cuts.begin(), cuts.end());
        ExpectRangesToBeTheWhole(stream, options, cuts, cores);
      }
    }
}

TEST(Ranges, MayBeCutAnywhere) {
  const std::string stream = Sample().substr(0, 1'500) + Hostile(1'500);
  for (std::uint64_t cut = 1; cut < stream.size(); ++cut)
    ASSERT_NO_FATAL_FAILURE(ExpectRangesToBeTheWhole(stream, Everything(), {cut}, 1));
}

struct S_CoresCase {
  const char* name;
  const char* command;
};
// clang-format off
const S_CoresCase kCommands[] = {
    {"Decode",      "-v decode --strict --events --epochs"},
    {"Frames",      "decode --frames --listed-only"},
    {"Count",       "-v decode -n 700"},
    {"Window",      "decode --events --from 23:59:00 --until 00:01:00 --talker GP"},
    {"Range",       "stat --json --range 100k:300k"},
    {"Stat",        "-v stat"},
    {"Positions",   "stat --json --positions --max-bad 0"},
    {"Report",      "report --json"},
    {"Csv",         "convert --to csv"},
    {"Gpx",         "convert --to gpx"},
    {"Kml",         "convert --to kml"},
    {"GeoJson",     "convert --to geojson"},
    {"Nmea",        "convert --to nmea"},
    {"Navigation",  "convert --to rinex-nav"},
    {"Observation", "convert --to rinex-obs"},
};
// clang-format on
TEST_ROWS_F(Cores, DoNotMatter, Program, kCommands, row) {
  Write("hostile", Hostile(150'000));
  for (const char* input : {" $S", " hostile $S", " <(cat $S $S | gzip)", " hostile"}) {
    const std::string command = std::string(row.command) + input;
    const Outcome one = Run("velagnss " + command + " -j 1");
    const Outcome four = Run("velagnss " + command + " -j 4");
    EXPECT_EQ(four.code, one.code) << command;
    EXPECT_EQ(four.output, one.output) << command;
    EXPECT_EQ(four.messages, one.messages) << command;
  }
}

TEST_F(Program, ASignalEndsARunWhoseReaderHasStopped) {
  const Outcome outcome = Run("exec 3> >(sleep 6 > /dev/null 2>&1); " VELAGNSS_PROGRAM
                              " decode -j 8 $S > /dev/fd/3 & sleep 0.5; kill -TERM $!; SECONDS=0; wait $!;"
                              " echo $? $((SECONDS < 4))");
  EXPECT_EQ(outcome.output, "143 1\n");
}

struct S_RangeCase {
  const char* name;
  const char* options;
  int code;
  const char* message;
};
const S_RangeCase kRanges[] = {
    {"Backward", "--range 5:2 $S", 2, "'5:2' is not a range of bytes"},
    {"NoColon", "--range 5k $S", 2, "is not a range of bytes"},
    {"Live", "--range 5k: tcp://localhost:1", 2, "--range is for files"},
    {"BeyondTheEnd", "--range 1G: $S", 1, "4245 frames found, none within --range"},
    {"NoJobs", "-j 0 $S", 2, "must be a whole number from 1 to 256"},
};
TEST_ROWS_F(PartOf, AFile, Program, kRanges, row) {
  const Outcome outcome = Run(std::string("velagnss stat ") + row.options);
  EXPECT_EQ(outcome.code, row.code);
  EXPECT_THAT(outcome.messages, testing::HasSubstr(row.message));
}

}  // namespace
