// Lines of JSON, as `velagnss decode` writes them, back into NMEA 0183 sentences.
#ifndef VELAGNSS_APPS_LINE_ENCODER_H
#define VELAGNSS_APPS_LINE_ENCODER_H

#include <array>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/text/JsonWriter.h"
#include "framing/FrameRecognizer.h"
#include "textproto/NmeaMoreRecords.h"

namespace Host {

// Each line is encoded on its own.
class C_LineEncoder {
 public:
  enum class eOutcome {
    Encoded,
    Skipped,  // an object that is not a sentence: another protocol, an event, a frame that was not decoded
    Refused,  // a sentence that cannot be encoded, or a line that is not JSON
  };

  C_LineEncoder();

  // `isCutOff`: the input ends without the line's end.
  eOutcome Encode(std::string_view line, bool isCutOff = false);

  // Of an `Encoded` line, with CR LF. The frame search recognizes it.
  std::string_view Sentence() const { return m_sentence; }

  // Why a line was skipped or refused, member first.
  const std::string& Reason() const { return m_reason; }

  // GNS sentences whose mode letters were left out: only those of a talker that ends in N have them (NMEA 0183).
  std::uint64_t ModesLeftOut() const { return m_modesLeftOut; }

 private:
  eOutcome Skip(std::string reason);
  eOutcome Refuse(std::string reason);
  eOutcome EncodeObject(nlohmann::json& object);
  eOutcome EncodeMembers(nlohmann::json& object);
  eOutcome EncodeFields(const nlohmann::json& fields, C_RawDataMessage::eNMEA0183Messages type);
  eOutcome EncodeMoreFields(nlohmann::json& fields, std::string_view name);
  bool IsTextOf(const nlohmann::json& object);
  bool AreFieldsOfText(const nlohmann::json& object, const velagnss::NmeaRecord& record);
  eOutcome EncodeRecord(const velagnss::NmeaRecord& record);
  void DropModes(S_GNS_Data& gns);
  bool IsRecognized();

  C_JsonWriter m_fieldsOfText{4096};
  std::string m_text;  // of the sentence as it was received, with CR LF; or of the fields that a record points to
  std::array<unsigned char, 1024> m_buffer{};
  C_FrameRecognizer m_recognizer;
  std::vector<unsigned char> m_frameBuffer;
  C_RawDataMessage m_frame;
  std::string_view m_sentence;
  std::string m_reason;
  std::uint64_t m_modesLeftOut = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LINE_ENCODER_H
