#include "apps/velagnss/json/FrameJson.h"

#include <utility>

#include "apps/velagnss/json/EpochJson.h"
#include "apps/velagnss/json/RecordJson.h"
#include "apps/velagnss/json/TagJson.h"
#include "apps/velagnss/pipeline/RecordTime.h"
#include "apps/velagnss/text/RejectionNumber.h"
#include "apps/velagnss/text/TimeText.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr std::string_view kDepths[] = {"none", "raw", "partial", "full"};  // velagnss::Depth

void WriteDecoded(C_JsonWriter& json, const velagnss::DecodedFrame& decoded) {
  json.Key("result").IntegerOrNull(decoded.result);
  if (decoded.result.value_or(eResultOk) != eResultOk) json.Key("error").String(velagnss::ResultText(*decoded.result));
  json.Key("decoded").Name(kDepths[static_cast<std::size_t>(decoded.depth)]);
  json.Key("fields");
  if (decoded.depth == velagnss::Depth::None) return json.Null();
  json.BeginObject();
  WriteFields(json, decoded);
  json.EndObject();
}

// The date of a time of day comes from the stream.
void WriteUtc(C_JsonWriter& json, const velagnss::Record& record, const velagnss::StreamClock& clock) {
  const velagnss::StreamClock::Utc utc = clock.UtcOfTimeOfDay(TimeOfDayOf(record));
  if (!utc.mjd) return;
  const C_TimeText text = C_TimeText::Utc(*utc.mjd, utc.secondsOfDay, C_TimeText::kAllDigits);
  if (!text.IsEmpty()) json.Key("utc").Name(text.Text());
}

std::string_view SentenceOf(const velagnss::Frame& frame) {
  std::string_view text(reinterpret_cast<const char*>(frame.data), frame.length);
  while (text.ends_with('\r') || text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

}  // namespace

void C_FrameJson::WriteLike(const C_FrameJson& other) {
  m_input = other.m_input;
  m_arrival = other.m_arrival;
  m_hex = other.m_hex;
}

void C_FrameJson::Begin() {
  m_json.BeginObject();
  m_json.Key("schema").Integer(kSchemaVersion);
  if (!m_input.empty()) m_json.Key("input").Utf8(m_input);
  if (m_arrival) m_json.Key("arrival").Name(C_TimeText::OfMachine(*m_arrival).Text());
}

void C_FrameJson::End() {
  m_json.EndObject();
  m_json.EndLine();
}

void C_FrameJson::WriteFrame(const velagnss::Frame& frame, const velagnss::DecodedFrame* decoded,
                             const velagnss::StreamClock& clock, const S_TagBlocks& tag) {
  Begin();
  m_json.Key("offset").Integer(frame.offset);
  m_json.Key("length").Integer(frame.length);
  m_json.Key("protocol").Name(velagnss::ProtocolName(frame.protocol));
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  const velagnss::MessageName listed(frame.protocol, frame.message);
  m_json.Key("message").String(unlisted.empty() ? listed.Text() : unlisted);
  m_json.Key("number").IntegerOrNull(velagnss::MessageNumber(frame));
  if (decoded != nullptr) WriteDecoded(m_json, *decoded);
  if (decoded != nullptr) WriteUtc(m_json, decoded->record, clock);
  if (frame.protocol == C_RawDataMessage::eNMEA0183) m_json.Key("text").String(SentenceOf(frame));
  if (!tag.text.empty()) {
    m_json.Key("tag");
    WriteTag(m_json, tag);
  }
  if (m_hex) m_json.Key("hex").Hex({frame.data, frame.length});
  End();
}

void C_FrameJson::WriteEpoch(const S_Epoch& epoch) {
  Begin();
  Host::WriteEpoch(m_json, epoch);
  End();
}

void C_FrameJson::WriteRejections(const velagnss::RejectedStart& first, std::uint64_t lastOffset, std::uint64_t count) {
  Begin();
  m_json.Key("event").String("rejected");
  m_json.Key("offset").Integer(first.offset);
  // A rejected start gives up its first byte only; the search goes on with the next one.
  m_json.Key("length").Integer(lastOffset + 1 - first.offset);
  m_json.Key("count").Integer(count);
  m_json.Key("result").Integer(RejectionNumber(first.reason));
  m_json.Key("why").String(velagnss::ReasonText(first.reason));
  m_json.Key("start").String({reinterpret_cast<const char*>(first.data), first.size});
  if (m_hex) m_json.Key("hex").Hex({first.data, first.size});
  End();
}

void C_FrameJson::WriteSkipped(const velagnss::SkippedRange& range) {
  Begin();
  m_json.Key("event").String("skipped");
  m_json.Key("offset").Integer(range.offset);
  m_json.Key("length").Integer(range.length);
  m_json.Key("why").String(IsTagOnly(range) ? "TAG blocks" : velagnss::ReasonText(range.reason));
  if (m_hex) m_json.Key("hex").Hex({range.data, range.size});
  End();
}

// Connecting and being connected have no text of their own but the other end.
void C_FrameJson::WriteLink(const S_LinkChange& change) {
  constexpr std::string_view kStates[] = {"connecting", "connected", "lost", "refused", "failed"};
  const t_Arrival arrival = std::exchange(m_arrival, change.at);
  Begin();
  m_arrival = arrival;
  m_json.Key("event").String("source");
  m_json.Key("state").Name(kStates[static_cast<std::size_t>(change.state)]);
  m_json.Key("text").String(change.text);
  m_json.Key("failures").Integer(change.failures);
  if (change.retryIn.count() > 0) m_json.Key("retry_in_ms").Integer(change.retryIn.count());
  End();
}

}  // namespace Host
