#include "apps/velagnss/json/FrameJson.h"

#include <iterator>

#include "apps/velagnss/text/MessageNames.h"
#include "records/ResultCodes.h"

namespace Host {
namespace {

constexpr std::string_view kDepths[] = {"none", "raw", "partial", "full"};  // eDepth

struct S_ResultText {
  unsigned int result;
  std::string_view text;
};
constexpr S_ResultText kResultTexts[] = {
    {eResultWrongSentence, "wrong sentence"},
    {eResultBadSync, "bad prefix or line end"},
    {eResultChecksum, "checksum mismatch"},
    {eResultUnknownMessage, "message not supported"},
    {eResultWrongMessage, "message cannot be converted"},
    {eResultOutOfRange, "value out of range"},
    {eResultPastEnd, "message too short or too long"},
    {eResultBadField, "too few fields, or a field that does not read"},
    {eResultTooShort, "too short"},
    {eResultTooLong, "too long"},
    {eResultNoSeed, "week not resolved: no date known; --seed tells one"},
};

void WriteDecoded(C_JsonWriter& json, const C_FrameDecoder& decoder) {
  json.Key("result").IntegerOrNull(decoder.Result());
  if (decoder.Result().value_or(eResultOk) != eResultOk) json.Key("error").String(ResultText(*decoder.Result()));
  json.Key("decoded").String(kDepths[static_cast<std::size_t>(decoder.Depth())]);
  json.Key("fields");
  if (decoder.Depth() == eDepth::None) return json.Null();
  json.BeginObject();
  decoder.WriteFields(json);
  json.EndObject();
}

}  // namespace

std::string_view ResultText(unsigned int result) {
  for (const S_ResultText& row : kResultTexts)
    if (row.result == result) return row.text;
  return "not decoded";
}

std::string_view RejectionText(unsigned int result) {
  return result == eRecChecksumError ? "checksum error" : "no such message, or not its length or characters";
}

void C_FrameJson::Begin() {
  m_json.BeginObject();
  m_json.Key("schema").Integer(kSchemaVersion);
  if (!m_input.empty()) m_json.Key("input").String(m_input);
}

void C_FrameJson::End() {
  m_json.EndObject();
  m_json.EndLine();
}

void C_FrameJson::WriteFrame(const C_RawDataMessage& frame, std::uint64_t offset, const C_FrameDecoder* decoder) {
  Begin();
  m_json.Key("offset").Integer(offset);
  m_json.Key("length").Integer(frame.length);
  m_json.Key("protocol").String(ProtocolName(frame.protocol));
  m_json.Key("message").String(C_MessageName(frame.protocol, frame.messageType).Text());
  m_json.Key("number").IntegerOrNull(MessageNumber(frame.messageType));
  if (decoder != nullptr) WriteDecoded(m_json, *decoder);
  if (m_hex) m_json.Key("hex").Hex({frame.data, frame.length});
  End();
}

void C_FrameJson::WriteRejection(const S_Rejection& rejection) {
  Begin();
  m_json.Key("event").String("rejected");
  m_json.Key("offset").Integer(rejection.offset);
  m_json.Key("length").Integer(1);
  m_json.Key("result").Integer(rejection.result);
  m_json.Key("why").String(RejectionText(rejection.result));
  m_json.Key("start").String({reinterpret_cast<const char*>(rejection.bytes.data()), rejection.bytes.size()});
  End();
}

void C_FrameJson::WriteSkipped(std::uint64_t offset, std::uint64_t length) {
  Begin();
  m_json.Key("event").String("skipped");
  m_json.Key("offset").Integer(offset);
  m_json.Key("length").Integer(length);
  m_json.Key("why").String("bytes of no frame");
  End();
}

}  // namespace Host
