// Lines of JSON, as `velagnss decode` writes them, back into NMEA 0183 sentences.
#ifndef VELAGNSS_APPS_LINE_ENCODER_H
#define VELAGNSS_APPS_LINE_ENCODER_H

#include <array>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

// One line after the other; each stands for itself.
class C_LineEncoder {
 public:
  enum class eOutcome {
    Encoded,
    Skipped,  // an object that no sentence can be made of: another protocol, an event, what was not decoded
    Refused,  // what ought to be a sentence, and is not fit for one; or no JSON at all
  };

  C_LineEncoder();

  eOutcome Encode(std::string_view line);

  // With CR LF; of an `Encoded` line. It is one that the frame search finds again.
  std::string_view Sentence() const { return m_sentence; }

  // Why a line was skipped or refused, member first.
  const std::string& Reason() const { return m_reason; }

  // Sentences whose mode letters were left out: only GNS of a talker that ends in N has them (NMEA 0183, GNS).
  std::uint64_t ModesLeftOut() const { return m_modesLeftOut; }

 private:
  eOutcome Skip(std::string reason);
  eOutcome Refuse(std::string reason);
  eOutcome EncodeObject(const nlohmann::json& object);
  eOutcome EncodeFields(const nlohmann::json& object, C_RawDataMessage::eNMEA0183Messages type);
  eOutcome EncodeRecord(C_RawDataMessage::eNMEA0183Messages type);
  void DropModesWithoutRoom();
  bool IsRecognised();

  C_NMEA_EncodeDecode m_nmea;
  U_EcdDcdData m_record;
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
