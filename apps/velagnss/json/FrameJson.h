// The objects of the JSON Lines output: one per frame, and one per event when asked for. docs/json.md describes them.
#ifndef VELAGNSS_APPS_FRAME_JSON_H
#define VELAGNSS_APPS_FRAME_JSON_H

#include <cstdint>
#include <string>

#include "apps/velagnss/pipeline/FrameDecoder.h"
#include "apps/velagnss/pipeline/FrameReader.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

inline constexpr int kSchemaVersion = 1;

// Writes whole lines. `input` is the name of the input, empty to leave it out.
class C_FrameJson {
 public:
  explicit C_FrameJson(C_JsonWriter& json) : m_json(json) {}

  void SetInput(std::string name) { m_input = std::move(name); }

  // Add the frame's bytes as hexadecimal digits to every object.
  void SetHex(bool isWanted) { m_hex = isWanted; }

  // What `decoder` made of `frame`; null for the envelope alone.
  void WriteFrame(const C_RawDataMessage& frame, std::uint64_t offset, const C_FrameDecoder* decoder);

  void WriteRejection(const S_Rejection& rejection);
  void WriteSkipped(std::uint64_t offset, std::uint64_t length);

 private:
  void Begin();
  void End();

  C_JsonWriter& m_json;
  std::string m_input;
  bool m_hex = false;
};

// Why a result is not 0, in words: of a decoder, and of the frame search.
std::string_view ResultText(unsigned int result);
std::string_view RejectionText(unsigned int result);

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_JSON_H
