#include "apps/velagnss/report/Damage.h"

#include "apps/velagnss/pipeline/TagBlock.h"
#include "apps/velagnss/text/TimeText.h"
#include "stream/Names.h"

namespace Host {

void C_Damage::NoteFrame(double seconds, const std::optional<S_TimeBin>& bin) {
  m_seconds = seconds;
  m_bin = bin;
}

void C_Damage::Note(const velagnss::RejectedStart& start) {
  m_events.Add({start.offset, std::nullopt, m_seconds, velagnss::ReasonText(start.reason)});
}

void C_Damage::Note(const velagnss::SkippedRange& range) {
  if (IsTagOnly(range)) return;
  m_events.Add({range.offset, range.length, m_seconds, velagnss::ReasonText(range.reason)});
  m_bytes.Add(m_bin, static_cast<double>(range.length));
}

void C_Damage::Write(C_JsonWriter& json, const C_TimeBins& axis, const velagnss::StreamClock& clock) const {
  json.Key("integrity").BeginObject();
  json.Key("count").Integer(m_events.Count());
  json.Key("events").BeginArray();
  for (const S_DamageEvent& event : m_events.Entries()) {
    json.BeginObject();
    json.Key("offset").Integer(event.offset);
    json.Key("length").IntegerOrNull(event.length);
    json.Key("time").StringOrNull(C_TimeText::StreamTime(clock, event.seconds).Text());
    json.Key("bin").IntegerOrNull(axis.IndexOf(event.seconds));
    json.Key("kind").String(event.length ? "skipped" : "false start");
    json.Key("why").String(event.why);
    json.EndObject();
  }
  json.EndArray();
  WriteSums(json.Key("damaged_bytes"), m_bytes, axis);
  json.EndObject();
}

}  // namespace Host
