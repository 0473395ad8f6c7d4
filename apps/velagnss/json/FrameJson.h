// The objects of the JSON Lines output: one per frame, and one per event when asked for. docs/json.md describes them.
#ifndef VELAGNSS_APPS_FRAME_JSON_H
#define VELAGNSS_APPS_FRAME_JSON_H

#include <string>

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/pipeline/TagBlock.h"
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

  // When the last bytes of what follows came; none for inputs that are not live.
  void SetArrival(t_Arrival arrival) { m_arrival = arrival; }

  // Writes the same as another one from here on, to its own writer.
  void WriteLike(const C_FrameJson& other);

  // Adds the bytes of frames and events as hexadecimal digits.
  void SetHex(bool isWanted) { m_hex = isWanted; }

  // A frame and what was decoded of it; null for the envelope alone.
  // `clock` has noted the frame already. `tag`: the TAG blocks before it.
  void WriteFrame(const velagnss::Frame& frame, const velagnss::DecodedFrame* decoded,
                  const velagnss::StreamClock& clock, const S_TagBlocks& tag = {});

  void WriteEpoch(const S_Epoch& epoch);
  // `count` starts, the last of which is at `lastOffset`; their first bytes are those of `first`.
  void WriteRejections(const velagnss::RejectedStart& first, std::uint64_t lastOffset, std::uint64_t count);
  void WriteSkipped(const velagnss::SkippedRange& range);
  void WriteLink(const S_LinkChange& change);

 private:
  void Begin();
  void End();

  C_JsonWriter& m_json;
  std::string m_input;
  t_Arrival m_arrival;
  bool m_hex = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_JSON_H
