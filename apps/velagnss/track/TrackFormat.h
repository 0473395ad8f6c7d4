// The file formats of a track. docs/convert.md describes them.
//
// The text holds only numbers, times, fixed words and names of inputs, which are escaped, never a byte of the input: no
// input can break the syntax of a document.
#ifndef VELAGNSS_APPS_TRACK_FORMAT_H
#define VELAGNSS_APPS_TRACK_FORMAT_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/SpilledText.h"
#include "apps/velagnss/track/TrackBuilder.h"

namespace Host {

// The calls come in this order: `Begin`; for each input that has positions `BeginTrack`, for each of its segments
// `BeginSegment`, `Add` for each point, `EndSegment`, then `EndTrack`; `End`.
// Each appends whole lines to `text`, or none; all of them together are a valid document.
class C_TrackFormat {
 public:
  virtual ~C_TrackFormat() = default;

  // Called while a lot of text is appended; it may clear the text.
  void SetDrain(std::function<void()> drain) { m_drain = std::move(drain); }

  virtual void Begin(std::string& text) = 0;
  virtual void BeginTrack(std::string_view /*name*/, std::string& /*text*/) {}
  virtual void BeginSegment(std::string& /*text*/) {}
  virtual void Add(const S_TrackPoint& point, std::string& text) = 0;
  virtual void EndSegment(std::string& /*text*/) {}
  virtual void EndTrack(std::string& /*text*/) {}
  virtual void End(std::string& /*text*/) {}

 protected:
  // Appends all of `part`, and clears it.
  void AppendSpilled(C_SpilledText& part, std::string& text) const {
    part.MoveTo([&](std::string_view piece) {
      text += piece;
      if (m_drain) m_drain();
    });
  }

 private:
  std::function<void()> m_drain;
};

std::unique_ptr<C_TrackFormat> MakeCsvTrack();      // RFC 4180
std::unique_ptr<C_TrackFormat> MakeGpxTrack();      // GPX 1.1
std::unique_ptr<C_TrackFormat> MakeKmlTrack();      // OGC KML 2.2, with the gx: tracks of its extension
std::unique_ptr<C_TrackFormat> MakeGeoJsonTrack();  // RFC 7946

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_FORMAT_H
