// A whole host: reads a receiver's bytes from standard input and tells where it is.
#include <cstdio>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "geo/NotAvailable.h"
#include "textproto/NMEA_EncodeDecode.h"

int main() {
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowDropOldest, false);  // null: every protocol
  recognizer.SetPatientSearch(true);
  C_NMEA_EncodeDecode nmea;
  std::vector<unsigned char> buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
  unsigned char bytes[1024];
  while (const std::size_t count = std::fread(bytes, 1, sizeof bytes, stdin)) {
    auto result = recognizer.DoRecognition(bytes, static_cast<unsigned short>(count), message);
    for (; result != eRecNoNewData; result = recognizer.DoRecognition(nullptr, 0, message)) {
      if (result != eRecFrameComplete || !C_FrameRecognizer::IsAnNmeaGgaMsg(message.protocol, message.messageType))
        continue;
      U_EcdDcdData record;
      if (nmea.Decode(message.data, message.length, C_RawDataMessage::eNmeaGGA, record) != 0) continue;
      if (!IsNotAvailable(record.gga.latitude)) std::printf("%.7f %.7f\n", record.gga.latitude, record.gga.longitude);
    }
  }
}
