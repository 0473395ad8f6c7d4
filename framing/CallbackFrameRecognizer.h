// A frame recognizer that pumps itself and reports every step to a function of the host. Internal.
#ifndef VELAGNSS_FRAMING_CALLBACK_FRAME_RECOGNIZER_H
#define VELAGNSS_FRAMING_CALLBACK_FRAME_RECOGNIZER_H

#include <memory>

#include "framing/FrameRecognizer.h"

// The classifiers and settings of `C_FrameRecognizer` stay available; `Feed` takes the place of `DoRecognition`.
class C_CallbackFrameRecognizer : public C_FrameRecognizer {
 public:
  // Called after every step with its result and the recognizer's message, which holds the frame after
  // `eRecFrameComplete` and until the next one. `context` is what was given to SetCallback.
  using t_Callback = void (*)(void* context, eRecognitionResult result, C_RawDataMessage& message);

  // As `C_FrameRecognizer`; all results are reported once a callback is set.
  C_CallbackFrameRecognizer(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling, bool keepStatistics);

  // Null switches reporting off; frames are recognized all the same.
  void SetCallback(t_Callback function, void* context);

  // A result that is not reported. Initially, and after a reset, none: 8, which no step returns.
  void SetSuppressedResult(unsigned int result) { m_suppressedResult = result; }

  // `FullProcessingReset`, and the last and the suppressed result as at construction. Returns 0.
  unsigned int Reset();

  // Queues the bytes and steps until nothing is left to do. The last result is then `eRecNoNewData`, or an error that
  // would only repeat itself. No step is made when `data` is null or `length` is 0.
  void Feed(const unsigned char* data, unsigned short length);

  // The frame completed last; empty before the first one.
  const C_RawDataMessage& GetMessage() const { return m_message; }

  // Result of the latest step; 0 before the first one.
  unsigned int GetLastResult() const { return m_lastResult; }

 private:
  t_Callback m_callback = nullptr;
  void* m_context = nullptr;
  std::unique_ptr<unsigned char[]> m_buffer;
  C_RawDataMessage m_message;
  unsigned int m_lastResult = eRecNoNewData;
  unsigned int m_suppressedResult;
};

#endif  // VELAGNSS_FRAMING_CALLBACK_FRAME_RECOGNIZER_H
