// What the program makes of the bytes of an input, command and options chosen by the input: decode, stat, report,
// convert to each format, encode, and the screens of monitor. The output is valid in its format, holds only printable
// ASCII, and is the same however the input was cut into pieces, unless acknowledgements are searched for: "$>" is one
// as soon as it is read, before it can turn out to begin a reply.
#include <tinyxml2.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <vector>

#include "apps/velagnss/account/AccountJson.h"
#include "apps/velagnss/account/AccountTable.h"
#include "apps/velagnss/account/PointReportTable.h"
#include "apps/velagnss/json/JsonLines.h"
#include "apps/velagnss/json/LineEncoder.h"
#include "apps/velagnss/monitor/Pages.h"
#include "apps/velagnss/monitor/SourceModel.h"
#include "apps/velagnss/nmea/SentenceConverter.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/report/InputReport.h"
#include "apps/velagnss/report/ReportJson.h"
#include "apps/velagnss/rinex/NavConverter.h"
#include "apps/velagnss/rinex/ObsConverter.h"
#include "apps/velagnss/text/MessageNames.h"
#include "apps/velagnss/track/TrackConverter.h"
#include "fuzz/GoodFrames.h"
#include "records/ResultCodes.h"
#include "tests/ExactCopy.h"
#include "tests/JsonSchema.h"
#include "tests/RinexReader.h"
#include "textproto/NmeaSentenceCodec.h"

namespace {

using nlohmann::json;

struct S_Options {
  Host::S_RunOptions run;
  Host::S_JsonLinesOptions lines;
  bool dependsOnCut;
  bool hasPositions;    // in stat, as part of a report
  unsigned int format;  // of convert
};

// A part of the stream: a window of times of day or with dates, and talkers.
void TakeSelection(Fuzz::C_Input& input, Host::C_FrameSelection& selection) {
  constexpr const char* kBounds[] = {"", "00:00:00", "12:00:00.5", "2014-03-11T00:00:00", "2026-03-01T23:59:60"};
  const auto bound = [&] { return kBounds[input.Below(std::size(kBounds))]; };
  const char* from = bound();
  selection.SetWindow(from, bound());  // a pair that does not fit leaves nothing set
  if (input.Below(2) == 0) selection.AddTalkers("GP,gn,P");
}

S_Options TakeOptions(Fuzz::C_Input& input) {
  S_Options options{};
  for (unsigned int protocol = 0; protocol < Host::kNumProtocols; ++protocol) {
    const bool isAck = protocol == C_RawDataMessage::eVelaCmdAck;
    const bool isRare = input.Below(8) == 0;
    if (isAck != isRare) continue;  // rarely with acknowledgements, rarely without one of the others
    options.run.search.push_back(C_RawDataMessage::eProtocols{protocol});
    options.dependsOnCut = options.dependsOnCut || isAck;
  }
  if (input.Below(2) == 0) options.run.seed.emplace().Set(input.Value<std::uint16_t>(), 345600.0, ALGO::GNSS_GPS);
  options.run.acceptsUnlisted = input.Below(8) != 0;
  if (input.Below(4) == 0) options.run.firstDay = input.Value<std::uint16_t>();
  if (input.Below(8) == 0) TakeSelection(input, options.run.selection);
  constexpr const char* kMessages[] = {"GGA", "GGA:10,RMC:1", "BIN95,1077", "HPR:0.5"};
  if (input.Below(4) == 0) options.lines.filter.AddMessages(kMessages[input.Below(std::size(kMessages))]);
  if (input.Below(8) == 0) options.lines.filter.AddProtocols("nmea,bin");
  options.lines.framesOnly = input.Below(8) == 0;
  options.lines.hex = input.Below(4) == 0;
  options.lines.events = options.lines.epochs = input.Below(2) == 0;
  options.hasPositions = input.Below(2) == 0;
  options.format = input.Below(8);
  return options;
}

// --- The commands, without an output ---

void FeedAll(Host::C_RecordRun& run, std::string_view stream, std::size_t piece) {
  run.BeginInput("input");
  for (; !stream.empty(); stream.remove_prefix(std::min(piece, stream.size()))) {
    const std::string_view part = stream.substr(0, piece);
    ExactCopy copy(part);
    run.Feed({{copy.Data(), part.size()}, {}});
  }
  run.EndInput();
  run.Finish();
}

std::string Decode(const S_Options& options, std::string_view stream, std::size_t piece) {
  Host::C_JsonLines lines(options.lines);
  Host::C_RecordRun run(options.run, {&lines});
  FeedAll(run, stream, piece);
  const std::string text(lines.Text().Text());
  const auto count = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
  Fuzz::Require(options.lines.events || count == lines.FramesWritten(), "each frame is a line");
  return text;
}

std::unique_ptr<Host::C_TextConsumer> MakeConverter(unsigned int format) {
  if (format == 0) return Host::MakeTrackConverter(Host::MakeCsvTrack());
  if (format == 1) return Host::MakeTrackConverter(Host::MakeGpxTrack());
  if (format == 2) return Host::MakeTrackConverter(Host::MakeKmlTrack());
  if (format == 3) return Host::MakeTrackConverter(Host::MakeGeoJsonTrack());
  if (format == 4) return Host::MakeSentenceConverter();
  if (format == 5) return Host::MakeNavConverter({});
  Host::S_RinexOptions rinex;
  rinex.version = Host::kRinex4;
  return format == 6 ? Host::MakeNavConverter(rinex) : Host::MakeObsConverter(rinex);
}

std::string Convert(const S_Options& options, std::string_view stream, std::size_t piece) {
  const std::unique_ptr<Host::C_TextConsumer> converter = MakeConverter(options.format);
  Host::C_RecordRun run(options.run, {converter.get()});
  FeedAll(run, stream, piece);
  return std::string(converter->Text());
}

std::string Session(const S_Options& options, std::string_view stream, std::size_t piece) {
  Host::C_InputReport report;
  Host::C_RecordRun run(options.run, report.Consumers());
  FeedAll(run, stream, piece);
  Host::C_JsonWriter object;
  Host::BeginReport(object);
  report.Write(object);
  Host::EndReport(object);
  return std::string(object.Text());
}

// The session's report contains the account with its positions.
std::string Report(const S_Options& options, std::string_view stream, std::size_t piece) {
  if (options.lines.hex && options.hasPositions) return Session(options, stream, piece);
  Host::C_StreamAccount account;
  Host::C_PointReport points;
  Host::C_RecordRun run(options.run, {&account, &points});
  FeedAll(run, stream, piece);
  const bool isLong = options.lines.events;
  if (!options.lines.hex)
    return Host::AccountTable(account, isLong) + (options.hasPositions ? Host::PointTable(points, isLong) : "");
  Host::C_JsonWriter object;
  Host::WriteAccount(object, account);
  object.EndLine();
  return std::string(object.Text());
}

// All pages, on a small and on a large terminal.
std::string Monitor(const S_Options& options, std::string_view stream, std::size_t piece) {
  Host::C_SourceModel model("input", [] { return Host::C_SourceModel::t_Clock::time_point(); });
  Host::C_RecordRun run(options.run, {&model});
  FeedAll(run, stream, piece);
  Host::S_ScreenState state;
  state.tabs = {{"input", model.State()}};
  std::string text;
  for (const Host::S_Page& page : Host::Pages()) {
    state.page = page.page;
    for (const int rows : {Host::kLeastRows, 60}) {
      Host::C_Grid grid(rows, 4 * rows, true);
      Host::DrawScreen(grid, model.Snapshot(), state);
      for (int row = 0; row < rows; ++row) text += grid.Text(row) + '\n';
    }
  }
  return text;
}

// --- What the output must be ---

void RequirePrintable(const std::string& text) {
  const bool holds = std::all_of(text.begin(), text.end(),
                                 [](char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\r' || c == '\t'; });
  Fuzz::Require(holds, "the output is printable ASCII");
}

std::vector<std::string> Lines(const std::string& text, std::string_view end) {
  std::vector<std::string> lines;
  for (std::size_t at = 0, next = 0; at < text.size(); at = next + end.size()) {
    next = text.find(end, at);
    Fuzz::Require(next != std::string::npos, "each line has its end");
    lines.push_back(text.substr(at, next - at));
  }
  return lines;
}

const JsonSchema& Schema() {
  static const JsonSchema schema = [] {
    std::ifstream file(VELAGNSS_SOURCE_DIR "/docs/velagnss.schema.json");
    return JsonSchema(json::parse(file));
  }();
  return schema;
}

// Rejected starts are many and alike: a few of them will do for the schema.
void RequireJsonLines(const std::string& text) {
  constexpr std::size_t kMostForSchema = 8;
  std::size_t checked = 0;
  for (const std::string& line : Lines(text, "\n")) {
    const json object = json::parse(line, nullptr, false);
    Fuzz::Require(object.is_object(), "each line is a JSON object");
    if (++checked > kMostForSchema) continue;
    const std::string fault = Schema().Check(object);
    Fuzz::Require(fault.empty(), fault.c_str());
  }
}

void RequireSentence(const std::string& line) {
  velagnss::NmeaRecord record;
  Fuzz::Require(velagnss::DecodeSentence(line, record) != eResultChecksum, "each sentence has its checksum");
}

void RequireCsv(const std::string& text) {
  const std::vector<std::string> lines = Lines(text, "\r\n");
  for (const std::string& line : lines) {
    const auto commas = [](const std::string& row) { return std::count(row.begin(), row.end(), ','); };
    Fuzz::Require(commas(line) == commas(lines.front()), "each row has all columns");
    Fuzz::Require(line.find_first_of("\r\n\"") == std::string::npos, "nothing in a row needs quotes");
  }
}

void RequireFormat(const std::string& text, unsigned int format) {
  tinyxml2::XMLDocument document;
  if (format == 0) RequireCsv(text);
  if (format == 1 || format == 2) Fuzz::Require(document.Parse(text.c_str()) == tinyxml2::XML_SUCCESS, "XML is valid");
  if (format == 3) Fuzz::Require(json::accept(text), "GeoJSON is valid");
  if (format == 4)
    for (const std::string& line : Lines(text, "\r\n")) RequireSentence(line);
  if (format < 5 || text.empty()) return;
  const RinexReader rinex(text);
  Fuzz::Require(rinex.faults.empty(), rinex.faults.empty() ? "" : rinex.faults[0].c_str());
}

// Encode takes what decode writes of a sentence, or gives a reason; so it does with any text.
void RequireEncode(const std::string& text) {
  Host::C_LineEncoder encoder;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const auto outcome = encoder.Encode(std::string_view(text).substr(at, end - at));
    if (outcome == Host::C_LineEncoder::eOutcome::Encoded)
      RequireSentence(std::string(encoder.Sentence()));
    else
      Fuzz::Require(!encoder.Reason().empty(), "what is not encoded has a reason");
    at = end + 1;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Host::SetVerbosity(Host::eVerbosity::Quiet);
  Fuzz::C_Input input(data, size);
  const unsigned int command = input.Below(8);
  const std::size_t piece = 1 + input.Below(input.Below(2) == 0 ? 64 : 5000);
  const S_Options options = TakeOptions(input);
  if (command == 7) {
    RequireEncode(input.Rest());
    return 0;
  }
  const std::string stream = Fuzz::MakeStream(input).bytes;
  const bool isMonitor = command == 6 && options.format > 5;
  const auto run = [&](std::size_t pieceSize) {
    if (command < 3) return Decode(options, stream, pieceSize);
    if (command < 6) return Convert(options, stream, pieceSize);
    return isMonitor ? Monitor(options, stream, pieceSize) : Report(options, stream, pieceSize);
  };
  const std::string text = run(60000);
  Fuzz::Require(options.dependsOnCut || run(piece) == text, "the output does not depend on how the input is read");
  RequirePrintable(text);
  if (command < 3 || (command == 6 && options.lines.hex && !isMonitor)) RequireJsonLines(text);
  if (command < 3) RequireEncode(text);
  if (command >= 3 && command < 6) RequireFormat(text, options.format);
  return 0;
}
