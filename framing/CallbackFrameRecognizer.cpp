#include "framing/CallbackFrameRecognizer.h"

namespace {

constexpr unsigned int kSuppressNothing = 8;  // no step has this result
constexpr unsigned int kBufferMargin = 10;    // bytes of buffer beyond the longest frame

}  // namespace

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

unsigned int C_CallbackFrameRecognizer::Reset() {
  FullProcessingReset();
  m_lastResult = eRecNoNewData;
  m_suppressedResult = kSuppressNothing;
  return 0;
}

void C_CallbackFrameRecognizer::Feed(const unsigned char* data, unsigned short length) {
  if (data == nullptr || length == 0) return;
  while (true) {
    const eRecognitionResult result = DoRecognition(data, length, m_message);
    m_lastResult = result;
    if (m_callback != nullptr && result != m_suppressedResult) m_callback(m_context, result, m_message);
    if (result == eRecNoNewData) return;
    if (result == eRecError && data == nullptr) return;  // a step that fails without new data fails for ever
    data = nullptr;
  }
}
