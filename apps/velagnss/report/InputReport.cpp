#include "apps/velagnss/report/InputReport.h"

#include "apps/velagnss/account/AccountJson.h"
#include "apps/velagnss/report/ReceiverJson.h"

namespace Host {

void C_InputReport::BeginInput(const std::string& name) {
  m_contents = {};
  m_arrivals.emplace(name);
}

void C_InputReport::OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) {
  m_arrivals->NoteBytes(bytes.size(), arrival);
}

void C_InputReport::OnFrame(const S_FrameRecord& record) {
  const double seconds = record.clock.Seconds();
  const std::optional<S_TimeBin> bin = m_contents.axis.Note(seconds);
  m_contents.messages.Note(record, bin);
  m_contents.ephemerides.Note(record);
  m_contents.damage.NoteFrame(seconds, bin);
  if (const auto arrival = m_arrivals->At(record.frame.offset + record.frame.length - 1))
    m_contents.latency.Note(record, *arrival, bin);
}

void C_InputReport::EndInput(const S_InputEnd& end) {
  m_clock = end.clock;
  m_contents.messages.Finish();
}

// The gaps of the account, on the axis.
void C_InputReport::WriteGaps(C_JsonWriter& json) const {
  json.Key("gaps").BeginArray();
  for (const S_TimeGap& gap : m_account.Epochs().Gaps()) {
    json.BeginObject();
    json.Key("from").String(m_account.TimeText(gap.from).Text());
    json.Key("to").String(m_account.TimeText(gap.to).Text());
    json.Key("from_bin").IntegerOrNull(m_contents.axis.IndexOf(gap.from));
    json.Key("to_bin").IntegerOrNull(m_contents.axis.IndexOf(gap.to));
    json.Key("seconds").Number(static_cast<double>(gap.Milliseconds()) / 1000);
    json.EndObject();
  }
  json.EndArray();
}

void C_InputReport::Write(C_JsonWriter& json) const {
  json.BeginObject();
  json.Key("name").Utf8(m_account.Input());
  WriteAccount(json.Key("stat"), m_account, &m_points);
  WriteBins(json.Key("bins"), m_contents.axis, m_clock);
  WriteReceivers(json, m_receivers);
  m_contents.messages.Write(json, m_contents.axis);
  WriteGaps(json);
  m_contents.latency.Write(json, m_contents.axis);
  m_contents.ephemerides.Write(json, m_clock);
  m_contents.damage.Write(json, m_contents.axis, m_clock);
  m_contents.messages.WriteNotDecoded(json, m_account.Bytes());
  json.EndObject();
}

}  // namespace Host
