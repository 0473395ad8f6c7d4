// Faults of the line: frames damaged at every place among good ones, noise, too much at once. Every frame that was not
// touched must be delivered; a damaged one must not pass for another.
#include <algorithm>
#include <random>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/Streams.h"

namespace {

using Frames = std::vector<std::string>;

// What a careful host finds: it feeds what fits, and at the end feeds again what still waits but its first byte.
class Host {
 public:
  explicit Host(std::string_view stream) {
    m_recognizer.SetPatientSearch(true);
    m_recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
    Feed(stream);
    for (unsigned waiting = Queued(); waiting > 0; waiting = Queued()) {
      m_recognizer.FullProcessingReset();
      Feed(stream.substr(stream.size() - waiting + 1));
    }
  }

  Frames frames;

 private:
  unsigned Queued() const { return m_recognizer.GetMaxFrameLength() + 32U - m_recognizer.GetFreeSpace(); }

  void Feed(std::string_view bytes) {
    for (std::size_t count = 0; !bytes.empty(); bytes.remove_prefix(count)) {
      count = std::min<std::size_t>(bytes.size(), m_recognizer.GetFreeSpace());
      const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
      auto result = m_recognizer.DoRecognition(data, static_cast<unsigned short>(count), m_message);
      for (; result != eRecNoNewData; result = m_recognizer.DoRecognition(nullptr, 0, m_message))
        if (result == eRecFrameComplete) frames.emplace_back(m_buffer, m_buffer + m_message.length);
    }
  }

  C_FrameRecognizer m_recognizer{nullptr, eCircBufOvrflowRejectNew, false};
  unsigned char m_buffer[2048];
  C_RawDataMessage m_message{m_buffer, sizeof m_buffer};
};

struct S_Kind {
  const char* name;
  std::string bytes;
  bool isProtected;            // a flipped bit anywhere makes no other frame of it
  bool mayLoseItsSum = false;  // damaged it may be taken for a frame without checksum, and swallow text behind it
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
std::string Delivered(const S_Kind& kind) { return Host(kind.bytes).frames.at(0); }

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
    Frames frames = Host(stream).frames;
    ASSERT_TRUE(TakeOut(m_others, frames)) << testing::PrintToString(bits);
    std::erase(frames, Delivered(m_kind));  // flips behind the frame's end, or one and the same twice
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

TEST_P(DamagedFrame, CutAnywhereHidesNothingBehindIt) {
  if (m_kind.mayLoseItsSum) return;
  for (std::size_t length = 0; length < m_kind.bytes.size(); ++length) {
    Frames frames = Host(m_kind.bytes.substr(0, length) + m_behind).frames;
    ASSERT_TRUE(TakeOut(AllBut(nullptr), frames)) << length;
  }
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
        Frames frames = Host(damaged + m_behind).frames;
        ASSERT_TRUE(TakeOut(expected, frames)) << testing::PrintToString(damaged);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedFrame, testing::ValuesIn(kKinds), CaseName<S_Kind>);

// What a false start holds back comes within the longest frame behind it, the end of input not being told.
TEST(Noise, OfAnyLengthHidesNoFrame) {
  std::mt19937 random(20250102);
  for (const std::size_t length : {1, 10, 100, 1000, 10000, 100000, 1 << 20}) {
    std::string noise(length, ' ');
    for (char& c : noise) c = static_cast<char>(random());
    Frames frames = Host(noise + Stream() + std::string(2048, '\0') + "$").frames;
    EXPECT_TRUE(TakeOut(AllBut(nullptr), frames)) << length;
  }
}

class Overfeeding : public testing::TestWithParam<eCircBufOvrflowHandling> {};

TEST_P(Overfeeding, LosesNoByteUncounted) {
  std::mt19937 random(20250103);
  const std::string stream = Stream() + Stream() + Stream() + Stream() + Stream();
  for (int round = 0; round < 200; ++round) {
    C_FrameRecognizer recognizer(nullptr, GetParam(), true);
    C_RawDataMessage message;
    std::size_t fed = 0;
    for (int step = 0; step < 60; ++step) {
      const std::size_t count = random() % 3 == 0 ? 0 : random() % stream.size();
      const auto* data = reinterpret_cast<const unsigned char*>(stream.data() + random() % (stream.size() - count));
      recognizer.DoRecognition(data, static_cast<unsigned short>(count), message);
      fed += count;
      const unsigned queued = recognizer.GetMaxFrameLength() + 32U - recognizer.GetFreeSpace();
      const S_RecognizerStatistics& counters = *recognizer.GetStatistics();
      ASSERT_EQ(counters.bytesAccepted + counters.bytesDiscarded + queued, fed) << round << ", " << step;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Policies, Overfeeding,
                         testing::Values(eCircBufOvrflowDropOldest, eCircBufOvrflowFlushAll, eCircBufOvrflowRejectNew));

}  // namespace
