#include "apps/velagnss/account/AccountJson.h"

#include "apps/velagnss/account/ObservationReport.h"
#include "apps/velagnss/account/PlaceJson.h"
#include "apps/velagnss/account/PointReportJson.h"
#include "apps/velagnss/text/RejectionNumber.h"
#include "stream/Names.h"

namespace Host {
namespace {

void WriteMessages(C_JsonWriter& json, const C_StreamAccount& account) {
  json.Key("messages").BeginArray();
  for (const S_MessageCount& entry : account.Messages()) {
    json.BeginObject();
    json.Key("protocol").String(velagnss::ProtocolName(entry.key.protocol));
    json.Key("message").String(entry.name);
    json.Key("number").IntegerOrNull(entry.number);
    json.Key("count").Integer(entry.count);
    json.Key("decoded").Integer(entry.decoded);
    json.Key("faults").Integer(entry.faults);
    json.Key("per_second").Number(account.RateOf(entry.count));
    json.EndObject();
  }
  json.EndArray();
}

void WriteTime(C_JsonWriter& json, const C_StreamAccount& account) {
  json.Key("time");
  if (!account.Epochs().First()) return json.Null();
  json.BeginObject();
  json.Key("first").String(account.TimeText(*account.Epochs().First()).Text());
  json.Key("last").String(account.TimeText(*account.Epochs().Last()).Text());
  json.Key("duration_s").Number(account.Duration());
  json.Key("usual_step_s").Number(account.Epochs().Interval());
  json.Key("gap_count").Integer(account.Epochs().GapCount());
  WriteGaps(json, account, account.Epochs());
  json.EndObject();
}

constexpr std::string_view kNoPositions[] = {"no position", "no fix", "no altitude"};  // eNoPosition

void WritePosition(C_JsonWriter& json, const C_StreamAccount& account) {
  const std::optional<S_PositionSummary> position = account.Position();
  if (!position) json.Key("no_position").String(kNoPositions[static_cast<std::size_t>(account.WhyNoPosition())]);
  json.Key("position");
  if (!position) return json.Null();
  json.BeginObject();
  json.Key("fixes").Integer(position->fixes);
  WritePlace(json, position->latitude, position->longitude, position->height);
  json.Key("altitude_m").Number(position->altitude);
  WriteSpread(json, *position);
  json.Key("radius_50_m").Number(position->radius50);
  json.Key("radius_95_m").Number(position->radius95);
  json.EndObject();
}

void WriteIntegrityCounts(C_JsonWriter& json, const C_StreamAccount& account) {
  json.Key("checksum_errors").Integer(account.ChecksumErrors());
  json.Key("rejected_starts").Integer(account.RejectedStarts());
  json.Key("skipped_ranges").Integer(account.Skipped().Count());
}

void WriteIntegrity(C_JsonWriter& json, const C_StreamAccount& account) {
  json.Key("integrity").BeginObject();
  WriteIntegrityCounts(json, account);
  json.Key("false_starts").BeginArray();
  for (const S_FalseStart& start : account.FalseStarts().Entries()) {
    json.BeginObject();
    json.Key("offset").Integer(start.offset);
    json.Key("result").Integer(RejectionNumber(start.reason));
    json.Key("why").String(velagnss::ReasonText(start.reason));
    json.EndObject();
  }
  json.EndArray();
  json.Key("skipped").BeginArray();
  for (const S_SkippedBytes& range : account.Skipped().Entries()) {
    json.BeginObject();
    json.Key("offset").Integer(range.offset);
    json.Key("length").Integer(range.length);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

void WriteCounts(C_JsonWriter& json, const C_StreamAccount& account) {
  json.Key("bytes").BeginObject();
  json.Key("total").Integer(account.Bytes());
  json.Key("accepted").Integer(account.AtEnd().bytesAccepted);
  json.Key("discarded").Integer(account.AtEnd().bytesDiscarded);
  json.Key("queued").Integer(account.Queued());
  json.Key("damaged").Integer(account.BytesDamaged());
  json.EndObject();
  json.Key("frames").BeginObject();
  json.Key("good").Integer(account.FramesGood());
  json.Key("decoded").Integer(account.FramesDecoded());
  json.Key("not_decoded").Integer(account.FramesGood() - account.FramesDecoded());
  json.Key("bad").Integer(account.FramesBad());
  json.Key("bad_percent").Number(account.BadPercent());
  // Good frames that a false start at the end of the input had held back.
  json.Key("recovered_at_end").Integer(account.FramesGood() - account.AtEnd().framesGood);
  json.EndObject();
  WriteMessages(json, account);
}

}  // namespace

void WriteTotal(C_JsonWriter& json, const C_StreamAccount& total, std::size_t inputs) {
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").String("total");
  json.Key("inputs").Integer(inputs);
  WriteCounts(json, total);
  json.Key("integrity").BeginObject();
  WriteIntegrityCounts(json, total);
  json.EndObject();
  json.EndObject();
  json.EndLine();
}

void WriteAccount(C_JsonWriter& json, const C_StreamAccount& account, const C_PointReport* points) {
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").String("stat");
  json.Key("input").Utf8(account.Input());
  WriteCounts(json, account);
  WriteTime(json, account);
  WritePosition(json, account);
  WriteObservations(json, account);
  WriteIntegrity(json, account);
  if (points != nullptr) WritePoints(json, *points);
  json.EndObject();
}

}  // namespace Host
