// Good frames made from a fuzz input (a sample's shape, the input's contents, the right checksum), and streams of them.
#ifndef VELAGNSS_FUZZ_GOOD_FRAMES_H
#define VELAGNSS_FUZZ_GOOD_FRAMES_H

#include <string>
#include <string_view>
#include <vector>

#include "framing/RawDataMessage.h"
#include "fuzz/Fuzz.h"
#include "fuzz/Samples.h"
#include "tests/RecognizerTwins.h"
#include "tests/Streams.h"

namespace Fuzz {

struct S_GoodFrame {
  C_RawDataMessage::eProtocols protocol;
  std::string bytes;   // as the recognizer delivers it
  std::string behind;  // without which it does not end
};

// A sample with up to seven characters of its fields replaced.
inline std::string Varied(C_Input& input, std::string sample) {
  constexpr std::string_view kCharacters = "0123456789.,-NSEWAVMG";
  const std::size_t fields = sample.find(',', sample.find(',') < 5 ? 5 : 0);
  for (unsigned int changes = input.Below(8); changes > 0; --changes) {
    const std::size_t at = fields + 1 + input.Below(sample.size() - fields - 1);
    sample[at] = kCharacters[input.Below(kCharacters.size())];
  }
  return sample;
}

// RTCM 3, NMEA 0183, "$PKVN," or binary: those whose checksum covers what the recognizer delivers.
inline S_GoodFrame GoodFrame(C_Input& input) {
  constexpr unsigned int kNumbers[] = {63,   1001, 1005, 1013, 1019, 1033, 1046,
                                       1057, 1077, 1127, 1230, 1303, 4011, 4095};
  const unsigned int kind = input.Below(4);
  if (kind == 0) {
    std::string payload = RtcmPayload(kNumbers[input.Below(std::size(kNumbers))], 2);
    payload += input.Take(input.Below(input.Below(16) == 0 ? 1022 : 40));
    return {C_RawDataMessage::eRTCM3_x, RtcmFrame(payload), ""};
  }
  if (kind == 1) {
    const S_Body& row = kBodies[input.Below(std::size(kBodies))];
    std::string body = input.Take(input.Below(row.bytes + 1U));
    body.resize(row.bytes);
    return {C_RawDataMessage::eVelaBIN, BinFrame(row.number, body), ""};
  }
  // "$PKVN," sentences with XOR checksum: all samples but RAW, the first, and RD, the last.
  const std::string& sample = kind == 2 ? kNmeaSamples[input.Below(kNmeaSamples.size())]
                                        : kProprietarySamples[1 + input.Below(kProprietarySamples.size() - 2)];
  std::string sentence = Sentence(Varied(input, sample));
  sentence.resize(sentence.size() - 2);
  if (kind == 2) return {C_RawDataMessage::eNMEA0183, sentence + "\r", ""};
  return {C_RawDataMessage::ePKVN, sentence, "\r"};
}

struct S_Planted {
  std::size_t from;
  S_GoodFrame frame;
};

struct S_Stream {
  std::string bytes;
  std::vector<S_Planted> planted;
};

inline constexpr std::size_t kLongestStream = 20000;

// Good frames among any bytes, pieces of frames and damaged ones.
inline S_Stream MakeStream(C_Input& input) {
  S_Stream stream;
  RecognizerTwins::Random random([&input](std::size_t limit) { return input.Below(limit); });
  while (!input.IsEmpty() && stream.bytes.size() < kLongestStream) {
    const unsigned int kind = input.Below(4);
    if (kind < 2) {
      stream.planted.push_back({stream.bytes.size(), GoodFrame(input)});
      const S_GoodFrame& frame = stream.planted.back().frame;
      stream.bytes += frame.bytes + frame.behind + (kind == 0 ? "\r\n" : "");
    } else {
      stream.bytes += kind == 2 ? random.Piece() : input.Take(input.Below(40));
    }
  }
  return stream;
}

}  // namespace Fuzz

#endif  // VELAGNSS_FUZZ_GOOD_FRAMES_H
