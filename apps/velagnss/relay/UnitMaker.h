// What a stream is handed on as, unit by unit.
#ifndef VELAGNSS_APPS_UNIT_MAKER_H
#define VELAGNSS_APPS_UNIT_MAKER_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/sinks/live/Piece.h"

namespace Host {

enum class eUnits {
  Raw,     // the bytes as they came
  Frames,  // checked frames
  Json,    // a line for each frame
  Epochs,  // a line for each epoch
  Rows,    // a line for each of these and for each event, for a database
};

// The names that `--to` takes.
std::string UnitNames();
std::optional<eUnits> FindUnits(std::string_view name);

class C_UnitMaker {
 public:
  virtual ~C_UnitMaker() = default;

  // Where the units come from that are made from now on.
  void SetInput(std::shared_ptr<const S_InputOrigin> input) { m_input = std::move(input); }

  // What makes the units.
  virtual C_RecordConsumer& Consumer() = 0;

  // How many bytes of units there are.
  virtual std::size_t Size() const = 0;

  // Takes the units; null when there are none.
  virtual t_Piece Take() = 0;

 protected:
  std::shared_ptr<const S_InputOrigin> m_input;
};

// `namesInput`: in every line of JSON. Rows know their input by the piece they are in.
std::unique_ptr<C_UnitMaker> MakeUnits(eUnits units, const C_MessageFilter& filter, bool namesInput);

}  // namespace Host

#endif  // VELAGNSS_APPS_UNIT_MAKER_H
