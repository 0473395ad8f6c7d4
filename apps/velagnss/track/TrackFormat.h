// The formats that a track can be written in. docs/convert.md describes what each of them holds.
//
// Into the text goes nothing but numbers, times and our own words: no byte of the input, so that no input can break the
// syntax of a document.
#ifndef VELAGNSS_APPS_TRACK_FORMAT_H
#define VELAGNSS_APPS_TRACK_FORMAT_H

#include <cmath>
#include <memory>
#include <string>

#include "apps/velagnss/track/TrackBuilder.h"

namespace Host {

// The calls come in this order: `Begin`; for each segment `BeginSegment`, `Add` for each point, `EndSegment`; `End`.
// Each appends whole lines to `text`, or none; all of them together are a valid document.
class C_TrackFormat {
 public:
  virtual ~C_TrackFormat() = default;
  virtual void Begin(std::string& text) = 0;
  virtual void BeginSegment(std::string& /*text*/) {}
  virtual void Add(const S_TrackPoint& point, std::string& text) = 0;
  virtual void EndSegment(std::string& /*text*/) {}
  virtual void End(std::string& /*text*/) {}
};

std::unique_ptr<C_TrackFormat> MakeCsvTrack();      // RFC 4180
std::unique_ptr<C_TrackFormat> MakeGpxTrack();      // GPX 1.1
std::unique_ptr<C_TrackFormat> MakeKmlTrack();      // OGC KML 2.2, with the gx: tracks of its extension
std::unique_ptr<C_TrackFormat> MakeGeoJsonTrack();  // RFC 7946

// --- Pieces of text that the formats share ---

// A number that can be written: neither the marker nor one without digits.
inline bool IsKnown(double value) { return std::isfinite(value) && !IsNotAvailable(value); }

// The shortest digits that read back as the same number, never with an exponent: XML Schema knows none in a decimal.
void AppendDecimal(std::string& text, double value);

// Degrees with 9 digits behind the point: 0.1 mm.
void AppendDegrees(std::string& text, double degrees);

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_FORMAT_H
