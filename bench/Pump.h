// Streams for benchmarks, and the way a host feeds them.
#ifndef VELAGNSS_BENCH_PUMP_H
#define VELAGNSS_BENCH_PUMP_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "framing/FrameRecognizer.h"

using t_Bytes = std::vector<unsigned char>;

inline t_Bytes Repeated(std::string_view unit, std::size_t atLeast) {
  t_Bytes bytes;
  while (bytes.size() < atLeast) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

struct S_Search {
  bool withAcknowledgements = false;
  bool withUnlisted = false;
};

// Feeds the stream in pieces and hands each frame on; returns the number of frames.
template <class OnFrame>
std::size_t Pump(const t_Bytes& stream, std::size_t piece, OnFrame onFrame, S_Search search = {}) {
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, true);
  if (search.withUnlisted) recognizer.SetAcceptUnlisted(true);
  if (!search.withAcknowledgements) recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
  recognizer.SetPatientSearch(true);
  t_Bytes buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
  std::size_t frames = 0;
  for (std::size_t at = 0; at < stream.size();) {
    const std::size_t count = std::min({piece, stream.size() - at, std::size_t{recognizer.GetFreeSpace()}});
    auto result = recognizer.DoRecognition(&stream[at], static_cast<unsigned short>(count), message);
    for (; result != eRecNoNewData; result = recognizer.DoRecognition(nullptr, 0, message)) {
      if (result != eRecFrameComplete) continue;
      ++frames;
      onFrame(message);
    }
    at += count;
  }
  return frames;
}

#endif  // VELAGNSS_BENCH_PUMP_H
