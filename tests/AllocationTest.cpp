// Nothing is allocated after construction: counts what malloc and operator new hand out while bytes are fed, frames
// decoded, objects reset and positions computed. Its own program, because it takes the place of malloc.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "framing/CallbackFrameRecognizer.h"
#include "geo/Geodesy.h"
#include "geo/PointCoordinate.h"
#include "positioning/PointSolver.h"
#include "rtcm3/Rtcm3Decoder.h"
#include "stream/RecordDecoder.h"
#include "tests/Constellation.h"
#include "tests/Rtcm3Bits.h"
#include "tests/Streams.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NmeaSentenceCodec.h"

namespace {

std::size_t allocations = 0;

}  // namespace

#if defined(__SANITIZE_ADDRESS__)
// Of the sanitizer's runtime; g++ comes without the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));

namespace {

const int kHooked = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { ++allocations; },
                                                              [](const volatile void*) {});

}  // namespace
#else
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
  ++allocations;
  return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
  ++allocations;
  return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) {
  ++allocations;
  return __libc_realloc(block, size);
}
}
#endif

namespace {

std::string EveryKindOfFrame() {
  return Sentence("GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,") +
         Sentence("GNGSA,A,3,01,02,03,,,,,,,,,,1.5,0.9,1.2,1") +
         Sentence("GPRMC,123519,A,4807.038,N,01131.000,E,0.1,84.4,230394,3.1,W") + RtcmFrame(RtcmPayload(1005, 19)) +
         BinFrame(97, std::string(28, 'a')) + "\r\n" + BinFrame(93, std::string(56, '\1')) + "\r\n" +
         Sentence("PKVN,HPR,123519.00,271.5,-1.25,0.5,N") + "$RD1,1000.0,3,1575.42,0,12-34,45.5,1,2,F,F,1,F\r\n" +
         "$JROX," + Packed("abcdef") + "\r\n" + RtcmFrame(RtcmPayload(1067, 9) + Sentence("GPTXT,1")) +
         Sentence("IITXT,01,01,02,ANTENNA OK") + Sentence("PGRME,15.0,M,45.0,M,25.0,M") + RtcmFrame(RtcmPayload(1, 9)) +
         "$>JI,";
}

// The classes below reader and decoder: a host that encodes again what it received.
TEST(Allocation, NothingAfterConstruction) {
  struct Host {
    C_CallbackFrameRecognizer recognizer{nullptr, eCircBufOvrflowDropOldest, true};
    C_NMEA_EncodeDecode nmea;
    U_EcdDcdData data;
    unsigned char text[1024];
    unsigned int encoded = 0;
  } host;
  const auto encode = [](void* context, eRecognitionResult result, C_RawDataMessage& message) {
    auto& [recognizer, nmea, data, text, encoded] = *static_cast<Host*>(context);
    if (result != eRecFrameComplete || message.protocol != C_RawDataMessage::eNMEA0183) return;
    const C_RawDataMessage::eNMEA0183Messages type{message.messageType};
    unsigned short length = 0;
    encoded += C_NMEA_EncodeDecode::MakeDecodable(message.data, message.length, text, length) == 0 &&
               nmea.Decode(text, length, type, data) == 0 && nmea.Encode(&data, type, text, length) == 0;
  };
  host.recognizer.SetCallback(encode, &host);
  const std::string stream = EveryKindOfFrame();
  const std::size_t before = allocations;
  for (int round = 0; round < 30; ++round) {  // at every place in the ring
    host.recognizer.Feed(reinterpret_cast<const unsigned char*>(stream.data()),
                         static_cast<unsigned short>(stream.size()));
    host.recognizer.Reset();
    host.nmea.Reset();
  }
  const std::size_t during = allocations - before;
  EXPECT_EQ(during, 0U);
  EXPECT_EQ(host.encoded, 30U * 3);
  const std::vector<int> counted(10);
  EXPECT_GT(allocations - before, during) << "the count does not work";
}

TEST(Allocation, NothingInReaderAndDecoder) {
  const std::string stream = EveryKindOfFrame() + "\xD3\x03\xE8\x3E\xD0" + EveryKindOfFrame();
  velagnss::FrameReader reader;
  velagnss::RecordDecoder decoder;
  reader.ReportEvents(true);
  reader.AcceptUnlisted(true);
  unsigned int frames = 0;
  const auto readAll = [&] {
    while (true) {
      const velagnss::StreamItem& item = reader.Next();
      if (std::holds_alternative<std::monostate>(item)) return;
      const auto* frame = std::get_if<velagnss::Frame>(&item);
      if (frame != nullptr) frames += decoder.Decode(*frame).depth != velagnss::Depth::None;
    }
  };
  const std::size_t before = allocations;
  for (std::size_t piece = 1; piece < 30; ++piece) {
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      reader.Feed(reinterpret_cast<const unsigned char*>(stream.data()) + at, std::min(piece, stream.size() - at));
      readAll();
    }
    reader.Finish();
    readAll();
    reader.Restart();
    decoder.Restart();
  }
  EXPECT_EQ(allocations, before);
  EXPECT_EQ(frames, 29U * 2 * 13);
}

TEST(Allocation, NothingInSentencesOfAnyAddress) {
  const std::string sentences[] = {Sentence("GPHDT,274.07,T"),
                                   Sentence("GNTXT,01,01,02,ANTENNA OK"),
                                   Sentence("GPGRS,024603.00,1,-1.8,-2.7,0.3,,,,,,,,,"),
                                   Sentence("PGRME,15.0,M,45.0,M,25.0,M"),
                                   Sentence("GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,"),
                                   "$GPTXT,1*00\r\n"};
  velagnss::NmeaRecord record;
  char text[velagnss::kMaxSentenceLength];
  unsigned int encoded = 0;
  const std::size_t before = allocations;
  for (const std::string& sentence : sentences) {
    std::size_t length = 0;
    if (velagnss::DecodeSentence(sentence, record) == 0)
      encoded += velagnss::EncodeSentence(record, text, sizeof text, length) == 0;
  }
  EXPECT_EQ(allocations, before);
  EXPECT_EQ(encoded, 5U);
}

TEST(Allocation, NothingInPositions) {
  using namespace constellation;
  Receiver receiver;
  const auto ephemeris = Kepler(ALGO::GNSS_GPS, 1);
  receiver.NoteAll();
  const auto ranges = receiver.Measure(kToe + 600);
  velagnss::PointSolver solver;
  const std::size_t before = allocations;
  receiver.store.Note(ephemeris);
  EXPECT_EQ(solver.Solve(EpochOf(ranges, kToe + 600), receiver.store).result, velagnss::PointResult::Ok);
  EXPECT_EQ(allocations, before);
}

TEST(Allocation, NothingInContentsOfRtcm3) {
  const auto Full = [](unsigned int number) {  // an MSM of 64 cells, and whatever else its bits may be
    Rtcm3Bits bits{{number, 12}, {0, 12 + 30 + 19}, {0xFF, 64}, {0xFF, 32}};
    return RtcmFrame(bits.Put(-1, 64).Payload() + std::string(800, '\x2B'));
  };
  velagnss::Rtcm3Decoder decoder;
  std::vector<std::string> frames;
  for (const unsigned int number : {1004U, 1012U, 1006U, 1019U, 1020U, 1029U, 1033U, 1046U, 1059U, 1066U, 1077U, 1087U})
    frames.push_back(Full(number));
  const std::size_t before = allocations;
  for (const std::string& frame : frames)
    decoder.Decode(reinterpret_cast<const unsigned char*>(frame.data()), frame.size());
  decoder.Reset();
  EXPECT_EQ(allocations, before);
}

TEST(Allocation, NothingInGeometry) {
  C_Matrix covariance(3, 3);
  const double six[6] = {1, 2, 3, 0.1, 0.2, 0.3};
  const double a = ALGO::kWgs84A, f = ALGO::kWgs84F;
  double p, q, r, rotated[6];
  float e, z;
  const C_Vector3 target(2e7, 1e7, 5e6);
  const std::size_t before = allocations;
  C_PointCoordinate point(C_PointCoordinate::COORD_GEODETIC, 0.5, 1.0, 100.0);
  point.ElevationAndAzimuth(target, true, p, q);
  point.ElevationAndAzimuth(target, true, e, z);
  point.Cart2GeodSigma(point.RangeLocal(target));
  covariance = point.Cart2GeodCovariance(covariance);
  point.AddDeltaXYZ(target);
  ALGO::CovEcefToLocal(1, 2, 3, six, rotated);
  ALGO::CovLocalToEcef(1, 2, 3, six, rotated);
  ALGO::CartToGeodIter(1e6, 2e6, 6e6, a, f, p, q, r);
  ALGO::GeodesicInverse(0, 0, 0.5, 1, a, f, p, q, r);
  ALGO::GeodLookAngles(0, 0, 0, 0.5, 1, 0, a, f);
  ALGO::PointDistance(target, point.Cartesian(), true);
  EXPECT_EQ(allocations, before);
}

}  // namespace
