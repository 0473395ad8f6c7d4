#include "framing/CallbackFrameRecognizer.h"

namespace {

constexpr unsigned int kSuppressNothing = 8;  // no step has this result
constexpr unsigned int kBufferMargin = 10;    // bytes of buffer beyond the longest frame

}  // namespace

// The buffer outlives every message in it: what the callback sees stays until the next frame is complete.
C_CallbackFrameRecognizer::C_CallbackFrameRecognizer(const eProtocols* protocols,
                                                     eCircBufOvrflowHandling overflowHandling, bool keepStatistics)
    : C_FrameRecognizer(protocols, overflowHandling, keepStatistics),
      m_buffer(new unsigned char[GetMaxFrameLength() + kBufferMargin]()),
      m_message(m_buffer.get(), GetMaxFrameLength()),
      m_suppressedResult(kSuppressNothing) {
  FullProcessingReset();
}

void C_CallbackFrameRecognizer::SetCallback(t_Callback function, void* context) {
  m_callback = function;
  m_context = context;
}

// The callback stays: it belongs to the host, not to the stream.
unsigned int C_CallbackFrameRecognizer::Reset() {
  FullProcessingReset();
  m_lastResult = eRecNoNewData;
  m_suppressedResult = kSuppressNothing;
  return 0;
}

// An error with data is not the end: those bytes may be lost, but what is queued can still be worked off.
void C_CallbackFrameRecognizer::Feed(const unsigned char* data, unsigned short length) {
  if (data == nullptr || length == 0) return;
  while (true) {
    const eRecognitionResult result = DoRecognition(data, length, m_message);
    m_lastResult = result;
    if (m_callback != nullptr && result != m_suppressedResult) m_callback(m_context, result, m_message);
    if (result == eRecNoNewData) return;
    if (result == eRecError && data == nullptr) return;  // such a step would fail forever
    data = nullptr;
  }
}
