#include "apps/velagnss/json/LineEncoder.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "apps/velagnss/json/MemberTable.h"
#include "apps/velagnss/json/MoreNmeaJson.h"
#include "apps/velagnss/json/NmeaJson.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"
#include "textproto/NmeaSentenceCodec.h"

namespace Host {
namespace {

constexpr C_RawDataMessage::eProtocols kSearch[] = {C_RawDataMessage::eNMEA0183, C_RawDataMessage::eAllProtocols};

// Values are copied, compared and printed by recursion. What `decode` writes is nested four deep.
constexpr int kMaxDepth = 32;
struct TooDeep {};

bool LimitDepth(int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
  if (depth > kMaxDepth) throw TooDeep();
  return true;
}

bool IsControl(char c) { return static_cast<unsigned char>(c) < ' '; }

// A sentence kept as texts says its name in its members.
bool HasItsName(const nlohmann::json& object, std::string_view text, const velagnss::NmeaRecord& record) {
  const bool isOther = std::holds_alternative<velagnss::OtherSentence>(record);
  return isOther || object.value("message", nlohmann::json()) == velagnss::SentenceName(text);
}

// A member that is null counts as one that is missing.
nlohmann::json WithoutNulls(nlohmann::json fields) {
  if (!fields.is_object()) return fields;
  for (auto member = fields.begin(); member != fields.end();)
    member = member->is_null() ? fields.erase(member) : std::next(member);
  return fields;
}

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

C_LineEncoder::eOutcome C_LineEncoder::Encode(std::string_view line, bool isCutOff) {
  if (const std::size_t nul = line.find('\0'); nul != std::string_view::npos)  // where the parser would end
    return Refuse(fmt::format("not valid JSON (column {})", nul + 1));
  try {
    nlohmann::json object = nlohmann::json::parse(line, &LimitDepth);
    return object.is_object() ? EncodeObject(object) : Refuse("not a JSON object");
  } catch (const nlohmann::json::parse_error& error) {
    if (isCutOff && error.byte > line.size()) return Refuse("incomplete: the input ends within this line");
    return Refuse(fmt::format("not valid JSON (column {})", error.byte));
  } catch (const nlohmann::json::out_of_range&) {
    return Refuse("a number is beyond the range of a double");
  } catch (const TooDeep&) {
    return Refuse(fmt::format("nested more than {} deep", kMaxDepth));
  }
}

// What `decode` writes beside sentences is skipped: events, other protocols, sentences that could not be decoded.
// Anything else is a mistake in the line and is refused.
C_LineEncoder::eOutcome C_LineEncoder::EncodeObject(nlohmann::json& object) {
  const auto member = [&](const char* name) { return object.value(name, nlohmann::json()); };
  if (object.contains("schema") && object["schema"] != kSchemaVersion)
    return Refuse(fmt::format("schema: {} is not {}", Quoted(object["schema"]), kSchemaVersion));
  if (object.contains("event")) return Skip("event: not a frame");
  if (!object.contains("protocol")) return Refuse("protocol: missing");
  if (member("protocol") != "nmea") return Skip(fmt::format("protocol: {} is not encoded", Quoted(member("protocol"))));
  if (IsTextOf(object)) return eOutcome::Encoded;
  if (object.contains("result") && object["result"] != eResultOk)
    return Skip(fmt::format("result: {} is not the result of a decoded sentence", Quoted(object["result"])));
  return EncodeMembers(object);
}

C_LineEncoder::eOutcome C_LineEncoder::EncodeMembers(nlohmann::json& object) {
  const nlohmann::json message = object.value("message", nlohmann::json());
  const std::string name = message.is_string() ? message.get<std::string>() : "";
  const auto fields = object.find("fields");
  if (fields != object.end() && (IsOtherSentence(*fields) || (IsMoreSentence(name) && fields->is_object())))
    return EncodeMoreFields(*fields, name);
  const auto type = FindEncodableSentence(name);
  if (!type && !IsMoreSentence(name))
    return Refuse(
        fmt::format("message: {} is not one of {} {}", Quoted(message), EncodableSentenceNames(), MoreSentenceNames()));
  if (fields == object.end()) return Refuse("fields: missing");
  if (!fields->is_object()) return Refuse(fmt::format("fields: {} is not an object", Quoted(*fields)));
  return EncodeFields(*fields, *type);
}

// Whether the object has the text of a sentence, and nothing of it was changed: then the sentence is that text.
bool C_LineEncoder::IsTextOf(const nlohmann::json& object) {
  nlohmann::json text = object.value("text", nlohmann::json());
  if (!text.is_string() || !MakeBytes(text)) return false;
  m_text = text.get<std::string>();
  if (std::any_of(m_text.begin(), m_text.end(), IsControl)) return false;
  velagnss::NmeaRecord record;
  const unsigned int result = velagnss::DecodeSentence(m_text, record, velagnss::TimeDigits::All);
  const bool isSentence = result == eResultOk || result == eResultOutOfRange || result == eResultPastEnd ||
                          result == eResultBadField;  // those of a sentence whose checksum is right
  if (!isSentence || !HasItsName(object, m_text, record)) return false;
  const nlohmann::json asRead = {{"text", object["text"]}};
  const bool isUnchanged = !object.contains("fields") ||
                           (result == eResultOk ? AreFieldsOfText(object, record) : object["fields"] == asRead);
  if (!isUnchanged) return false;
  m_text += "\r\n";
  m_sentence = m_text;
  return true;
}

bool C_LineEncoder::AreFieldsOfText(const nlohmann::json& object, const velagnss::NmeaRecord& record) {
  m_fieldsOfText.ClearText();
  m_fieldsOfText.BeginObject();
  WriteMembers(m_fieldsOfText, record);
  m_fieldsOfText.EndObject();
  m_fieldsOfText.EndLine();
  return WithoutNulls(object["fields"]) == WithoutNulls(nlohmann::json::parse(m_fieldsOfText.Text()));
}

// Such a sentence can be of any address, and of any length that its text has room for.
C_LineEncoder::eOutcome C_LineEncoder::EncodeMoreFields(nlohmann::json& fields, std::string_view name) {
  if (!MakeBytes(fields)) return Refuse("fields: a character beyond U+00FF is not of a sentence");
  velagnss::NmeaRecord record;
  const std::string problem =
      IsOtherSentence(fields) ? ReadOtherFields(fields, m_text, record) : ReadMoreFields(fields, name, record);
  return problem.empty() ? EncodeRecord(record) : Refuse("fields: " + problem);
}

C_LineEncoder::eOutcome C_LineEncoder::EncodeFields(const nlohmann::json& fields,
                                                    C_RawDataMessage::eNMEA0183Messages type) {
  velagnss::NmeaRecord record;
  const std::string problem = ReadNmeaFields(fields, type, record);
  if (!problem.empty()) return Refuse("fields: " + problem);
  if (auto* const gns = std::get_if<S_GNS_Data>(&record)) DropModes(*gns);
  const eOutcome outcome = EncodeRecord(record);
  if (outcome == eOutcome::Encoded && !IsRecognized())
    return Refuse(
        fmt::format("fields: the sentence would have {} characters, more than its kind allows", m_sentence.size()));
  return outcome;
}

// Only the talker of a combined solution ("GN") has modes, and the encoder refuses them for any other talker. Without
// them the rest of the sentence is still useful.
void C_LineEncoder::DropModes(S_GNS_Data& gns) {
  if (gns.talker[1] == 'N' || gns.mode[0] == eNmeaModeEmpty) return;
  std::fill(std::begin(gns.mode), std::end(gns.mode), eNmeaModeEmpty);
  ++m_modesLeftOut;
}

C_LineEncoder::eOutcome C_LineEncoder::EncodeRecord(const velagnss::NmeaRecord& record) {
  std::size_t length = 0;
  char* const out = reinterpret_cast<char*>(m_buffer.data());
  const unsigned int result = velagnss::EncodeSentence(record, out, m_buffer.size(), length, velagnss::TimeDigits::All);
  if (result != eResultOk) return Refuse(fmt::format("fields: cannot be encoded: {}", velagnss::ResultText(result)));
  m_sentence = {out, length};
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
