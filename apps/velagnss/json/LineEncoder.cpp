#include "apps/velagnss/json/LineEncoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "apps/velagnss/json/MemberTable.h"
#include "apps/velagnss/json/NmeaJson.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr C_RawDataMessage::eProtocols kSearch[] = {C_RawDataMessage::eNMEA0183, C_RawDataMessage::eAllProtocols};

}  // namespace

C_LineEncoder::C_LineEncoder()
    : m_recognizer(kSearch, eCircBufOvrflowRejectNew, false),
      m_frameBuffer(m_recognizer.GetMaxFrameLength()),
      m_frame(m_frameBuffer.data(), static_cast<unsigned int>(m_frameBuffer.size())) {}

C_LineEncoder::eOutcome C_LineEncoder::Skip(std::string reason) {
  m_reason = std::move(reason);
  return eOutcome::Skipped;
}

C_LineEncoder::eOutcome C_LineEncoder::Refuse(std::string reason) {
  m_reason = std::move(reason);
  return eOutcome::Refused;
}

C_LineEncoder::eOutcome C_LineEncoder::Encode(std::string_view line) {
  try {
    const nlohmann::json object = nlohmann::json::parse(line);
    return object.is_object() ? EncodeObject(object) : Refuse("not a JSON object");
  } catch (const nlohmann::json::parse_error& error) {
    return Refuse(fmt::format("not valid JSON (column {})", error.byte));
  } catch (const nlohmann::json::out_of_range&) {
    return Refuse("a number is beyond the range of a double");
  }
}

// What `decode` writes beside sentences is skipped: events, other protocols, sentences that could not be decoded.
// Anything else is a mistake in the line and is refused.
C_LineEncoder::eOutcome C_LineEncoder::EncodeObject(const nlohmann::json& object) {
  const auto member = [&](const char* name) { return object.value(name, nlohmann::json()); };
  if (object.contains("schema") && object["schema"] != kSchemaVersion)
    return Refuse(fmt::format("schema: {} is not {}", Quoted(object["schema"]), kSchemaVersion));
  if (object.contains("event")) return Skip("event: not a frame");
  if (!object.contains("protocol")) return Refuse("protocol: missing");
  if (member("protocol") != "nmea") return Skip(fmt::format("protocol: {} is not encoded", Quoted(member("protocol"))));
  if (object.contains("result") && object["result"] != eResultOk)
    return Skip(fmt::format("result: {} is not the result of a decoded sentence", Quoted(object["result"])));
  const nlohmann::json message = member("message");
  const auto type = message.is_string() ? FindEncodableSentence(message.get_ref<const std::string&>()) : std::nullopt;
  if (!type) return Refuse(fmt::format("message: {} is not one of {}", Quoted(message), EncodableSentenceNames()));
  if (!object.contains("fields")) return Refuse("fields: missing");
  return EncodeFields(object["fields"], *type);
}

C_LineEncoder::eOutcome C_LineEncoder::EncodeFields(const nlohmann::json& fields,
                                                    C_RawDataMessage::eNMEA0183Messages type) {
  if (!fields.is_object()) return Refuse(fmt::format("fields: {} is not an object", Quoted(fields)));
  const std::string problem = ReadNmeaFields(fields, type, m_record);
  if (!problem.empty()) return Refuse("fields: " + problem);
  if (type == C_RawDataMessage::eNmeaGNS) DropModes();
  return EncodeRecord(type);
}

// Only the talker of a combined solution ("GN") has modes, and the encoder refuses them for any other talker. Without
// them the rest of the sentence is still useful.
void C_LineEncoder::DropModes() {
  if (m_record.gns.talker[1] == 'N' || m_record.gns.mode[0] == eNmeaModeEmpty) return;
  std::fill(std::begin(m_record.gns.mode), std::end(m_record.gns.mode), eNmeaModeEmpty);
  ++m_modesLeftOut;
}

C_LineEncoder::eOutcome C_LineEncoder::EncodeRecord(C_RawDataMessage::eNMEA0183Messages type) {
  unsigned short length = 0;
  const unsigned int result = m_nmea.Encode(&m_record, type, m_buffer.data(), length);
  if (result != eResultOk) return Refuse(fmt::format("fields: cannot be encoded: {}", velagnss::ResultText(result)));
  m_sentence = {reinterpret_cast<const char*>(m_buffer.data()), length};
  if (!IsRecognized())
    return Refuse(fmt::format("fields: the sentence would have {} characters, more than its kind allows", length));
  return eOutcome::Encoded;
}

// Numbers with many digits can make a sentence longer than what is accepted of its kind.
bool C_LineEncoder::IsRecognized() {
  m_recognizer.FullProcessingReset();
  unsigned int result =
      m_recognizer.DoRecognition(m_buffer.data(), static_cast<unsigned short>(m_sentence.size()), m_frame);
  while (result == eRecSearching || result == eRecFrameStarted)
    result = m_recognizer.DoRecognition(nullptr, 0, m_frame);
  return result == eRecFrameComplete;
}

}  // namespace Host
