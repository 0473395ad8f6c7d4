// What a stream is handed on as, unit by unit.
#ifndef VELAGNSS_APPS_UNITS_H
#define VELAGNSS_APPS_UNITS_H

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/sinks/live/Piece.h"

namespace Host {

enum class eUnits {
  Raw,     // the bytes as they came
  Frames,  // checked frames
  Json,    // a line for each frame
  Epochs,  // a line for each epoch
};

// The names that `--to` takes, and what they mean, for the help.
std::string UnitNames();
std::optional<eUnits> FindUnits(std::string_view name);

class C_UnitMaker {
 public:
  virtual ~C_UnitMaker() = default;

  // What makes the units of frames; null when they are made of bytes alone.
  virtual C_RecordConsumer* Consumer() { return nullptr; }

  // Bytes of the stream, before the frames that they complete.
  virtual void OnBytes(std::span<const unsigned char>) {}

  // How many bytes of units there are.
  virtual std::size_t Size() const = 0;

  // Takes the units; null when there are none.
  virtual t_Piece Take() = 0;
};

// `namesInput`: in every line of JSON.
std::unique_ptr<C_UnitMaker> MakeUnits(eUnits units, const C_MessageFilter& filter, bool namesInput);

}  // namespace Host

#endif  // VELAGNSS_APPS_UNITS_H
