// The objects of the JSON Lines output: one per frame, and one per event when asked for. docs/json.md describes them.
#ifndef VELAGNSS_APPS_FRAME_JSON_H
#define VELAGNSS_APPS_FRAME_JSON_H

#include <string>

#include "apps/velagnss/text/JsonWriter.h"
#include "stream/FrameReader.h"
#include "stream/RecordDecoder.h"

namespace Host {

// Writes whole lines.
class C_FrameJson {
 public:
  explicit C_FrameJson(C_JsonWriter& json) : m_json(json) {}

  // The name of the input, for every object; empty to leave it out.
  void SetInput(std::string name) { m_input = std::move(name); }

  // Adds the frame's bytes as hexadecimal digits to every frame.
  void SetHex(bool isWanted) { m_hex = isWanted; }

  // A frame and what was decoded of it; null for the envelope alone.
  // `clock` has noted the frame already.
  void WriteFrame(const velagnss::Frame& frame, const velagnss::DecodedFrame* decoded,
                  const velagnss::StreamClock& clock);

  void WriteRejection(const velagnss::RejectedStart& start);
  void WriteSkipped(const velagnss::SkippedRange& range);

 private:
  void Begin();
  void End();

  C_JsonWriter& m_json;
  std::string m_input;
  bool m_hex = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_JSON_H
