// A host by somebody else: headers in both spellings, a frame found, a sentence decoded, an exported constant read.
#include <velagnss/framing/FrameRecognizer.h>

#include <cstdio>
#include <string>
#include <vector>

#include "framing/CRC24.h"
#include "textproto/NMEA_EncodeDecode.h"

int main() {
  std::string sentence = "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,1.0,0031*6A\r\n";
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowDropOldest, false);
  std::vector<unsigned char> buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage message(buffer.data(), recognizer.GetMaxFrameLength());
  const auto* bytes = reinterpret_cast<const unsigned char*>(sentence.data());
  recognizer.SetPatientSearch(true);
  auto result = recognizer.DoRecognition(bytes, static_cast<unsigned short>(sentence.size()), message);
  while (result != eRecFrameComplete && result != eRecNoNewData) result = recognizer.DoRecognition(nullptr, 0, message);

  C_NMEA_EncodeDecode nmea;
  U_EcdDcdData record;
  if (nmea.Decode(message.data, message.length, C_RawDataMessage::eNmeaGGA, record) != 0) return 1;
  std::printf("%.6f %.6f %06X\n", record.gga.latitude, record.gga.longitude, C_CRC24::mu32CRC_Table[1]);
}
