// Decodes a sentence, changes the record and encodes it again; then decodes a sentence of an earlier NMEA version.
#include <cstdio>
#include <string>

#include "geo/NotAvailable.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace {

unsigned char* Bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
unsigned short Length(const std::string& text) { return static_cast<unsigned short>(text.size()); }

// Decodes a GGA sentence, changes its altitude and encodes it again.
void RaiseAntenna(C_NMEA_EncodeDecode& nmea, std::string sentence) {
  C_NMEA_EncodeDecode::U_EcdDcdData data;
  const unsigned int result = nmea.Decode(Bytes(sentence), Length(sentence), C_RawDataMessage::eNmeaGGA, data);
  if (result != 0) return void(std::printf("refused with %u\n", result));
  std::printf("%.6f N %.6f E, %.1f m\n", data.gga.latitude, data.gga.longitude, data.gga.altitude);

  data.gga.altitude += 2.0;
  unsigned char out[1024];
  unsigned short length = 0;
  if (nmea.Encode(&data.gga, C_RawDataMessage::eNmeaGGA, out, length) == 0)
    std::printf("%s", reinterpret_cast<const char*>(out));
}

// An RMC sentence as before NMEA 0183 version 2.3: no mode, no navigational status; its magnetic variation is empty.
void ReadOldRmc(C_NMEA_EncodeDecode& nmea, std::string sentence) {
  C_NMEA_EncodeDecode::U_EcdDcdData data;
  unsigned char decodable[1024];
  unsigned short length = 0;
  std::printf("as it is: %u\n", nmea.Decode(Bytes(sentence), Length(sentence), C_RawDataMessage::eNmeaRMC, data));
  if (C_NMEA_EncodeDecode::MakeDecodable(Bytes(sentence), Length(sentence), decodable, length) != 0) return;
  const unsigned int result = nmea.Decode(decodable, length, C_RawDataMessage::eNmeaRMC, data);
  std::printf("made decodable: %u, %.1f knots, variation %s\n", result, data.rmc.speedKnots,
              IsNotAvailable(data.rmc.magneticVariation) ? "not available" : "known");
}

}  // namespace

int main() {
  C_NMEA_EncodeDecode nmea;
  RaiseAntenna(nmea, "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47");
  ReadOldRmc(nmea, "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,*11");
}
