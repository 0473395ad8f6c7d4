#include "apps/velagnss/report/MessageReport.h"

#include "apps/velagnss/account/StreamAccount.h"

namespace Host {
namespace {

void WriteName(C_JsonWriter& json, const S_MessageRow& row) {
  json.Key("protocol").String(velagnss::ProtocolName(row.key.protocol));
  json.Key("message").String(row.name);
}

// A single epoch has no step.
double StepOrNone(double seconds) { return seconds > 0 ? seconds : kNotKnown; }

}  // namespace

void C_MessageReport::Note(const S_FrameRecord& record, const std::optional<S_TimeBin>& bin) {
  S_MessageRate* const row = m_rows.Of(record.frame);
  if (row == nullptr) return void(++m_leftOut);
  ++row->count;
  row->steps.Note(record.frame.offset, record.clock.Seconds());
  row->series.Add(bin, 1);
  if (IsDecoded(record.decoded)) return;
  ++row->notDecoded;
  row->bytesNotDecoded += record.frame.length;
}

void C_MessageReport::Write(C_JsonWriter& json, const C_TimeBins& axis) const {
  json.Key("messages").BeginArray();
  for (const S_MessageRate& row : m_rows.All()) {
    json.BeginObject();
    WriteName(json, row);
    json.Key("count").Integer(row.count);
    json.Key("usual_step_s").Number(StepOrNone(row.steps.Interval()));
    json.Key("longest_gap_s").Number(StepOrNone(row.steps.Longest()));
    json.Key("gap_count").Integer(row.steps.GapCount());
    WriteSums(json.Key("rate"), row.series, axis);
    json.EndObject();
  }
  json.EndArray();
  json.Key("messages_left_out").Integer(m_leftOut);
}

void C_MessageReport::WriteNotDecoded(C_JsonWriter& json, std::uint64_t bytes) const {
  std::vector<const S_MessageRate*> rows;
  for (const S_MessageRate& row : m_rows.All())
    if (row.notDecoded > 0) rows.push_back(&row);
  std::sort(rows.begin(), rows.end(), [](const S_MessageRate* a, const S_MessageRate* b) {
    return std::tie(b->bytesNotDecoded, a->key.protocol, a->name) <
           std::tie(a->bytesNotDecoded, b->key.protocol, b->name);
  });
  json.Key("not_decoded").BeginArray();
  for (const S_MessageRate* row : rows) {
    json.BeginObject();
    WriteName(json, *row);
    json.Key("count").Integer(row->notDecoded);
    json.Key("bytes").Integer(row->bytesNotDecoded);
    json.Key("share_percent").Number(Percent(row->bytesNotDecoded, bytes));
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace Host
