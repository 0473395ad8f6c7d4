// What goes to the destinations: whole units, shared by all who send them.
#ifndef VELAGNSS_APPS_PIECE_H
#define VELAGNSS_APPS_PIECE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

// The input of a piece.
struct S_InputOrigin {
  std::string name;
  std::string identity;  // InputIdentity.h
};

// Where a unit comes from, for destinations that sort units by it.
struct S_UnitOrigin {
  std::uint64_t offset = 0;   // of the first byte of its frame, or of the first frame of its epoch
  std::string_view protocol;  // the names that JSON has; an epoch: "epoch"
  std::string message;        // likewise; an epoch: "epoch"

  // When the last of it came, if its source is live.
  std::optional<std::chrono::system_clock::time_point> arrival = {};
};

// Units that were ready at the same time: frames, lines of JSON, pieces of a raw stream. A destination sends all of
// them or drops all of them, so a reader never sees a part of a unit.
struct S_Piece {
  std::string_view format = {};  // of `--to`: "raw", "frames", "json", "epochs"
  std::string bytes;
  std::vector<std::size_t> ends;               // where each unit ends; the last is the end of `bytes`
  std::vector<S_UnitOrigin> origins;           // of each unit; none for units of the raw stream
  std::shared_ptr<const S_InputOrigin> input;  // that all of them come from

  // What was appended to `bytes` since the last call is a unit; nothing is none.
  void EndUnit() {
    if (bytes.size() > (ends.empty() ? 0 : ends.back())) ends.push_back(bytes.size());
  }

  std::string_view Unit(std::size_t number) const {
    const std::size_t begin = number == 0 ? 0 : ends[number - 1];
    return std::string_view(bytes).substr(begin, ends[number] - begin);
  }
};

using t_Piece = std::shared_ptr<const S_Piece>;

}  // namespace Host

#endif  // VELAGNSS_APPS_PIECE_H
