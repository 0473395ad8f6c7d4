// A careful host: feeds no more than fits, pumps until nothing is left to do, and at the end releases the bytes that a
// false start holds back. Counts what happened to every byte.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "framing/FrameRecognizer.h"

namespace {

constexpr C_RawDataMessage::eProtocols kWanted[] = {
    C_RawDataMessage::eRTCM3_x, C_RawDataMessage::eNMEA0183, C_RawDataMessage::ePKVN,
    C_RawDataMessage::eAllProtocols,  // ends the list
};

class Host {
 public:
  Host() : m_recognizer(kWanted, eCircBufOvrflowRejectNew, true), m_buffer(m_recognizer.GetMaxFrameLength()) {
    m_recognizer.SetPatientSearch(true);  // the result must not depend on how the stream is cut
  }

  void Read(const std::string& stream) {
    Feed(stream, 0);
    const S_RecognizerStatistics counters = *m_recognizer.GetStatistics();
    std::printf("%u bytes accepted, %u discarded, %u queued, %u bad frames\n", counters.bytesAccepted,
                counters.bytesDiscarded, m_recognizer.GetQueuedBytes(), counters.framesBad);
    while (const unsigned int queued = m_recognizer.GetQueuedBytes()) {  // again from the byte after the false start
      m_recognizer.FullProcessingReset();
      Feed(stream, stream.size() - queued + 1);
    }
  }

 private:
  void Feed(const std::string& stream, std::size_t from) {
    C_RawDataMessage message(m_buffer.data(), m_recognizer.GetMaxFrameLength());
    while (from < stream.size()) {
      const std::size_t count = std::min<std::size_t>(stream.size() - from, m_recognizer.GetFreeSpace());
      const auto* bytes = reinterpret_cast<const unsigned char*>(stream.data() + from);
      from += count;
      auto result = m_recognizer.DoRecognition(bytes, static_cast<unsigned short>(count), message);
      for (; result != eRecNoNewData; result = m_recognizer.DoRecognition(nullptr, 0, message)) Show(result, message);
    }
  }

  static void Show(eRecognitionResult result, const C_RawDataMessage& message) {
    if (result == eRecChecksumError) std::puts("checksum error");
    if (result != eRecFrameComplete) return;
    std::printf("protocol %u, message %u, %u bytes\n", unsigned{message.protocol}, message.messageType,
                unsigned{message.length});
    if (message.protocol == C_RawDataMessage::ePKVN && message.messageType == 0) Unpack(message);
  }

  // "$PKVN,RAW,": packed bytes from the fourth comma to the line end.
  static void Unpack(const C_RawDataMessage& message) {
    const unsigned char* packed = message.data;
    for (int commas = 0; commas < 4; ++packed) commas += *packed == ',';
    char text[2048];
    const unsigned int length = C_FrameRecognizer::UnwindVela7of8Message(text, packed, sizeof text / 2);
    std::printf("unpacked: %.*s\n", static_cast<int>(length), text);
  }

  C_FrameRecognizer m_recognizer;
  std::vector<unsigned char> m_buffer;
};

}  // namespace

int main() {
  Host().Read(
      "noise$GPHDT,274.07,T*03\r\n"
      "$GPHDT,275.07,T*03\r\n"                          // a damaged digit
      "$PKVN,RAW,1,4,\xE1\xC4\x8D\xA3\xC6\xD8\xB1\r\n"  // "abcd"
      "\xD3\x03\xE8\x3E\xD0"                            // announces 1000 bytes that will never come
      "$GPHDT,274.07,T*03\r\n");
}
