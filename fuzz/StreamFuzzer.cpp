// Good frames among noise, read as a careful host reads: every planted frame is found where it was planted, unless a
// frame that was found overlaps it. The same frames come however the stream is cut, the counters tell what became of
// every byte, and nothing that was found is found twice.
#include <algorithm>
#include <tuple>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "fuzz/GoodFrames.h"
#include "tests/ExactCopy.h"

namespace {

using Fuzz::C_Input;

struct S_Found {
  std::size_t from;
  unsigned int protocol;
  unsigned int type;
  std::string bytes;

  std::size_t End() const { return from + bytes.size(); }
  bool operator==(const S_Found& other) const {
    return std::tie(from, protocol, type, bytes) == std::tie(other.from, other.protocol, other.type, other.bytes);
  }
};

// Feeds piece by piece, never more than there is room for, and pumps until nothing new comes.
class C_Host {
 public:
  C_Host() : m_recognizer(nullptr, eCircBufOvrflowRejectNew, true), m_buffer(m_recognizer.GetMaxFrameLength()) {
    m_recognizer.SetPatientSearch(true);
    m_recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
  }

  void Feed(std::string_view bytes, std::size_t piece) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) FeedPiece(bytes.substr(0, piece));
  }
  const std::vector<S_Found>& Found() const { return m_found; }

 private:
  void FeedPiece(std::string_view piece) {
    while (!piece.empty()) {
      const std::string_view part = piece.substr(0, m_recognizer.GetFreeSpace());
      Fuzz::Require(!part.empty(), "pumped dry, the queue has room");
      piece.remove_prefix(part.size());
      ExactCopy copy(part);
      m_fed += part.size();
      Pump(copy);
    }
  }
  void Pump(ExactCopy& part) {
    C_RawDataMessage message(m_buffer.data(), m_recognizer.GetMaxFrameLength());
    auto result = m_recognizer.DoRecognition(part.Data(), part.Size(), message);
    for (; result != eRecNoNewData; result = m_recognizer.DoRecognition(nullptr, 0, message)) {
      Fuzz::Require(result != eRecInputOverflow && result != eRecError, "a careful host sees no overflow and no error");
      if (result == eRecFrameComplete) Note(message);
      RequireAccount();
    }
  }
  std::size_t Queued() const { return m_recognizer.GetMaxFrameLength() + 32U - m_recognizer.GetFreeSpace(); }
  void Note(const C_RawDataMessage& message) {
    const std::size_t end = m_fed - Queued();
    m_found.push_back({end - message.length, message.protocol, message.messageType,
                       std::string(Fuzz::View(message.data, message.length))});
  }
  void RequireAccount() const {
    const S_RecognizerStatistics& counters = *m_recognizer.GetStatistics();
    Fuzz::Require(std::size_t{counters.bytesAccepted} + counters.bytesDiscarded + Queued() == m_fed,
                  "each byte is accepted, discarded or queued");
    Fuzz::Require(counters.framesGood == m_found.size(), "each delivered frame counts");
  }

  C_FrameRecognizer m_recognizer;
  std::vector<unsigned char> m_buffer;
  std::size_t m_fed = 0;
  std::vector<S_Found> m_found;
};

std::vector<S_Found> Read(const std::string& stream, std::size_t piece) {
  C_Host host;
  host.Feed(stream, piece);
  host.Feed(std::string(2100, '\0'), 2100);  // ends every wait for the rest of a false start
  return host.Found();
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
    Fuzz::Require(end > stream.size() || stream.compare(frame.from, frame.bytes.size(), frame.bytes) == 0,
                  "a frame is what stands in the stream");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  C_Input input(data, size);
  const std::size_t piece = 1 + input.Below(input.Below(2) == 0 ? 32 : 3000);
  const Fuzz::S_Stream stream = Fuzz::MakeStream(input);
  const std::vector<S_Found> found = Read(stream.bytes, 4000);
  RequirePlanted(stream, found);
  RequireOrder(stream.bytes, found);
  Fuzz::Require(Read(stream.bytes, piece) == found, "the same frames come however the stream is cut");
  return 0;
}
