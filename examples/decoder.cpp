// Records of a stream: what each frame is decoded to, how far, and what to do with it.
#include <cstdio>
#include <string>

#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"
#include "stream/RecordDecoder.h"

namespace {

// One function for each record that this program cares about, and one for all others.
void Show(const S_GGA_Data& gga) { std::printf("%.6f N %.6f E, %.1f m\n", gga.latitude, gga.longitude, gga.altitude); }

void Show(const S_RMC_Data& rmc) {
  std::printf("%u-%02u-%02u, %.1f knots\n", unsigned{rmc.year}, unsigned{rmc.month}, unsigned{rmc.day}, rmc.speedKnots);
}

void Show(const VelaPKVN_Messages::S_PKvnHpr& hpr) {
  IsNotAvailable(hpr.roll) ? std::puts("roll not available") : std::printf("roll %.2f\n", hpr.roll);
}

void Show(const velagnss::HdtRecord& hdt) { std::printf("heading %.2f\n", hdt.headingTrue); }

void Show(const velagnss::RawText& raw) {
  std::printf("not decoded: %.*s\n", static_cast<int>(raw.text.size()), raw.text.data());
}

template <class Record>
void Show(const Record&) {
  std::puts("a record that this program does not need");
}

void ShowResult(const velagnss::DecodedFrame& decoded) {
  if (decoded.result.value_or(eResultOk) == eResultOk) return;
  const std::string_view text = velagnss::ResultText(*decoded.result);
  std::printf("result %u, %.*s; ", *decoded.result, static_cast<int>(text.size()), text.data());
}

}  // namespace

int main() {
  const std::string stream =
      "$GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47\r\n"
      "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,180524,003.1,W*6F\r\n"  // NMEA 0183 before version 2.3
      "$PKVN,HPR,120000.25,271.5,-1.25,,G*3E\r\n"
      "$GPGGA,123520,48x7.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*05\r\n"  // a right checksum, a wrong field
      "$GPHDT,274.07,T*03\r\n"
      "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K*48\r\n";
  velagnss::FrameReader reader;
  velagnss::RecordDecoder decoder;
  reader.Feed(reinterpret_cast<const unsigned char*>(stream.data()), stream.size());
  reader.Finish();
  while (const velagnss::Frame* frame = reader.NextFrame()) {
    const velagnss::DecodedFrame& decoded = decoder.Decode(*frame);
    ShowResult(decoded);
    std::visit([](const auto& record) { Show(record); }, decoded.record);
  }
}
