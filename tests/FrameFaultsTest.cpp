// Faults of the line: frames damaged at every place among good ones, noise, too much at once. Every frame that was not
// touched must be delivered; a damaged one must not pass for another.
#include <algorithm>
#include <random>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/CarefulHost.h"
#include "tests/Cases.h"
#include "tests/Streams.h"

namespace {

using Frames = std::vector<std::string>;

Frames FramesIn(std::string_view stream) {
  CarefulHost host;
  host.Feed(stream);
  host.Finish();
  EXPECT_TRUE(host.isInOrder);
  Frames frames;
  for (const S_Found& found : host.found) frames.push_back(found.bytes);
  return frames;
}

struct S_Kind {
  const char* name;
  std::string bytes;
  bool isProtected;            // a flipped bit anywhere makes no other frame of it
  bool mayLoseItsSum = false;  // damaged it may be taken for a frame without checksum, and swallow the text after it
};

const S_Kind kKinds[] = {
    {"Nmea", Sentence("GPHDT,274.07,T"), true},
    {"Rtcm", RtcmFrame(RtcmPayload(1005, 19)), true},
    {"Bin", BinFrame(97, "twenty-eight bytes of a body"), true},  // no block a bit away has its length
    {"Jrox", "$JROX," + Packed("abcdef") + "\r\n", false},        // bits that fill the last packed byte carry nothing
    {"Raw", "$PKVN,RAW,1,4," + Packed("abcd") + "\r\n", false},
    {"Pkvn", Sentence("PKVN,HPR,120000.00,271.50,-1.25,0.75,G"), false, true},
};

std::string Stream() {
  std::string stream;
  for (const S_Kind& kind : kKinds) stream += kind.bytes;
  return stream;
}

// As delivered: without what of its line end does not belong to it.
std::string Delivered(const S_Kind& kind) { return FramesIn(kind.bytes).at(0); }

Frames AllBut(const S_Kind* touched) {
  Frames frames;
  for (const S_Kind& kind : kKinds)
    if (&kind != touched) frames.push_back(Delivered(kind));
  return frames;
}

// Takes the expected frames, in their order, out of `frames`: false when one is not there.
bool TakeOut(const Frames& expected, Frames& frames) {
  auto at = frames.begin();
  for (const std::string& frame : expected) {
    at = std::find(at, frames.end(), frame);
    if (at == frames.end()) return false;
    at = frames.erase(at);
  }
  return true;
}

class DamagedFrame : public testing::TestWithParam<S_Kind> {
 protected:
  // Flips bits of the frame: all others are delivered and, if so wanted, nothing else.
  void ExpectNoHarmOf(std::initializer_list<std::size_t> bits, bool nothingElse) {
    std::string stream = m_behind;
    for (const std::size_t bit : bits) {
      char& byte = stream[m_behind.find(m_kind.bytes) + bit / 8];
      byte = static_cast<char>(byte ^ 1 << bit % 8);
    }
    Frames frames = FramesIn(stream);
    ASSERT_TRUE(TakeOut(m_others, frames)) << testing::PrintToString(bits);
    std::erase(frames, Delivered(m_kind));  // flips after the frame's end, or the same bit twice
    if (nothingElse) {
      ASSERT_EQ(frames.size(), 0U) << testing::PrintToString(bits);
    }
  }

  const S_Kind& m_kind = kKinds[std::find_if(std::begin(kKinds), std::end(kKinds),
                                             [](const S_Kind& kind) { return kind.bytes == GetParam().bytes; }) -
                                std::begin(kKinds)];
  const Frames m_others = AllBut(&m_kind);
  const std::string m_behind = Stream();
};

TEST_P(DamagedFrame, SingleFlippedBitsMakeNoOtherFrameAndHideNone) {
  for (std::size_t bit = 0; bit < 8 * m_kind.bytes.size(); ++bit) ExpectNoHarmOf({bit}, m_kind.isProtected);
}

// Two flips that cancel pass a sum, but not a CRC.
TEST_P(DamagedFrame, DoubleFlippedBitsHideNoOtherFrame) {
  std::mt19937 random(20250104);
  const auto bit = [&] { return random() % (8 * m_kind.bytes.size()); };
  for (int round = 0; round < 2000; ++round) ExpectNoHarmOf({bit(), bit()}, m_kind.name == std::string("Rtcm"));
}

// Bytes doubled, deleted, exchanged with the next ones, and random ones inserted, 1 to 64 of them.
TEST_P(DamagedFrame, DamagedAnywhereHidesNothingBehindIt) {
  if (m_kind.mayLoseItsSum) return;
  std::mt19937 random(20250101);
  const Frames expected = AllBut(nullptr);
  for (std::size_t at = 0; at < m_kind.bytes.size(); ++at) {
    for (const std::size_t count : {1, 2, 3, 7, 8, 16, 33, 64}) {
      std::string inserted(count, ' ');
      for (char& c : inserted) c = static_cast<char>(random());
      const std::string head = m_kind.bytes.substr(0, at), tail = m_kind.bytes.substr(at);
      const std::size_t cut = std::min(count, tail.size());
      std::string swapped = tail;
      std::rotate(swapped.begin(), swapped.begin() + static_cast<std::ptrdiff_t>(cut / 2),
                  swapped.begin() + static_cast<std::ptrdiff_t>(cut));
      for (const std::string& damaged :
           {head + inserted + tail, head + tail.substr(0, cut) + tail, head + tail.substr(cut), head + swapped}) {
        Frames frames = FramesIn(damaged + m_behind);
        ASSERT_TRUE(TakeOut(expected, frames)) << testing::PrintToString(damaged);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedFrame, testing::ValuesIn(kKinds), CaseName<S_Kind>);

TEST(Noise, OfAnyLengthHidesNoFrame) {
  std::mt19937 random(20250102);
  for (const std::size_t length : {1, 10, 100, 1000, 10000, 100000, 1 << 20}) {
    std::string noise(length, ' ');
    for (char& c : noise) c = static_cast<char>(random());
    Frames frames = FramesIn(noise + Stream());
    EXPECT_TRUE(TakeOut(AllBut(nullptr), frames)) << length;
  }
}

}  // namespace
