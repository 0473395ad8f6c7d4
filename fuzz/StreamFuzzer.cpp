// Good frames among noise, read as a careful host reads: every planted frame is found where it was planted, unless a
// frame that was found overlaps it. The same frames come however the stream is cut, the counters tell what became of
// every byte, and nothing that was found is found twice.
#include <algorithm>
#include <vector>

#include "fuzz/GoodFrames.h"
#include "tests/CarefulHost.h"

namespace {

std::vector<S_Found> Read(const std::string& stream, std::size_t piece, bool acceptsUnlisted) {
  CarefulHost host(acceptsUnlisted);
  host.Feed(stream, piece);
  host.Finish();
  Fuzz::Require(host.isInOrder, "no overflow, no error, and each byte and frame counted");
  return host.found;
}

void RequirePlanted(const Fuzz::S_Stream& stream, const std::vector<S_Found>& found) {
  for (const Fuzz::S_Planted& planted : stream.planted) {
    const std::size_t end = planted.from + planted.frame.bytes.size();
    const auto overlapping = std::find_if(found.begin(), found.end(), [&](const S_Found& frame) {
      return frame.from < end && frame.End() > planted.from;
    });
    Fuzz::Require(overlapping != found.end(), "a planted frame is found, or one that overlaps it");
    const bool isIt = overlapping->from == planted.from && overlapping->bytes == planted.frame.bytes;
    Fuzz::Require(!isIt || overlapping->protocol == planted.frame.protocol, "a planted frame is found as what it is");
    Fuzz::Require(isIt || overlapping->from < planted.from, "no other frame begins inside of a planted one");
  }
}

void RequireOrder(const std::string& stream, const std::vector<S_Found>& found) {
  std::size_t end = 0;
  for (const S_Found& frame : found) {
    Fuzz::Require(frame.from >= end, "frames do not overlap");
    end = frame.End();
    Fuzz::Require(stream.compare(frame.from, frame.bytes.size(), frame.bytes) == 0, "a frame is part of the stream");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  const std::size_t piece = 1 + input.Below(input.Below(2) == 0 ? 32 : 3000);
  const bool acceptsUnlisted = input.Below(2) == 0;
  const Fuzz::S_Stream stream = Fuzz::MakeStream(input);
  const std::vector<S_Found> found = Read(stream.bytes, 4000, acceptsUnlisted);
  RequirePlanted(stream, found);
  RequireOrder(stream.bytes, found);
  Fuzz::Require(Read(stream.bytes, piece, acceptsUnlisted) == found, "the same frames come however the stream is cut");
  return 0;
}
