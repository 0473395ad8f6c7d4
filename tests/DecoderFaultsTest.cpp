// Every kind of message of the sample session through its decoder, each of its bytes set to what parsers trip over, or
// cut there, and the checksum made right again: the result is a stated one, nothing outside of the frame is read, the
// output does not depend on what it held before, and the failure leaves no trace in the next message.
#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "binproto/VelaBin_Decode.h"
#include "records/ResultCodes.h"
#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/HostData.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace {

// The first frame of each message type of a protocol.
std::map<unsigned, std::string> FirstFrames(unsigned protocol) {
  const std::string session = ReadHostFile("samples/session.bin");
  const nlohmann::json manifest = nlohmann::json::parse(ReadHostFile("samples/session.json"));
  std::map<unsigned, std::string> frames;
  for (const auto& [offset, length, of, type] : manifest.at("frameList").get<std::vector<std::array<unsigned, 4>>>())
    if (of == protocol) frames.emplace(type, session.substr(offset, length));
  return frames;
}

// A decoder and the record that it fills.
struct S_Decoder {
  virtual ~S_Decoder() = default;
  virtual unsigned Decode(unsigned type, unsigned char* frame, unsigned short length) = 0;
  virtual std::string_view Record() const = 0;
  virtual void Fill(int byte) = 0;
};

template <class Union>
struct S_Output : S_Decoder {
  std::unique_ptr<Union> out = std::make_unique<Union>();
  std::string_view Record() const override { return {reinterpret_cast<const char*>(out.get()), sizeof *out}; }
  void Fill(int byte) override { std::memset(static_cast<void*>(out.get()), byte, sizeof *out); }
};

struct S_Nmea : S_Output<U_EcdDcdData> {
  C_NMEA_EncodeDecode decoder;
  unsigned Decode(unsigned type, unsigned char* frame, unsigned short length) override {
    return decoder.Decode(frame, length, C_RawDataMessage::eNMEA0183Messages{type}, *out);
  }
};

struct S_Bin : S_Output<U_VelaBIN_EcdDcdData> {
  C_VelaBin_Decode decoder{nullptr};
  S_Bin() { decoder.SeedTime(2314, 604638.0, ALGO::GNSS_GPS); }
  unsigned Decode(unsigned, unsigned char* frame, unsigned short length) override {
    unsigned short number = 0;
    return decoder.Decode(frame, length, number, *out);
  }
};

struct S_Pkvn : S_Output<U_VelaPKVN_EcdDcdData> {
  C_VelaPKVN_Decode decoder;
  unsigned Decode(unsigned, unsigned char* frame, unsigned short length) override {
    auto type = VelaPKVN_Messages::ePkvnUnknown;
    return decoder.Decode(frame, length, type, *out);
  }
};

struct S_Rd : S_Output<U_VelaRD_EcdDcdData> {
  C_VelaRD_Decode decoder;
  unsigned Decode(unsigned, unsigned char* frame, unsigned short length) override {
    unsigned short version = 0;
    return decoder.Decode(frame, length, version, *out);
  }
};

void MakeXorRight(std::string& frame) {
  const std::size_t star = frame.rfind('*');
  if (star == std::string::npos || star + 2 >= frame.size() || star == 0) return;
  unsigned sum = 0;
  for (std::size_t i = 1; i < star; ++i) sum ^= static_cast<unsigned char>(frame[i]);
  frame[star + 1] = "0123456789ABCDEF"[sum >> 4];
  frame[star + 2] = "0123456789ABCDEF"[sum & 15];
}

// Of as many bytes as the header says, if there are so many.
void MakeSumRight(std::string& frame) {
  if (frame.size() < 10) return;
  const auto length = static_cast<unsigned char>(frame[6]) + 256U * static_cast<unsigned char>(frame[7]);
  if (length + 10 > frame.size()) return;
  unsigned sum = 0;
  for (std::size_t i = 8; i < 8 + length; ++i) sum += static_cast<unsigned char>(frame[i]);
  frame[8 + length] = static_cast<char>(sum);
  frame[9 + length] = static_cast<char>(sum >> 8);
}

struct S_DecoderCase {
  const char* name;
  C_RawDataMessage::eProtocols protocol;
  std::unique_ptr<S_Decoder> (*make)();
  void (*makeSumRight)(std::string& frame);
  std::vector<unsigned> results;  // that are stated
};

template <class Decoder>
std::unique_ptr<S_Decoder> Make() {
  return std::make_unique<Decoder>();
}

const S_DecoderCase kDecoders[] = {
    {"Nmea", C_RawDataMessage::eNMEA0183, Make<S_Nmea>, MakeXorRight, {0, 2, 4, 5, 8, 11, 20}},
    {"Bin", C_RawDataMessage::eVelaBIN, Make<S_Bin>, MakeSumRight, {0, 3, 5, 7, 8, 9, 19, 20}},
    {"Pkvn", C_RawDataMessage::ePKVN, Make<S_Pkvn>, MakeXorRight, {0, 3, 4, 5, 6, 11, 19}},
    {"Rd", C_RawDataMessage::eVelaRD, Make<S_Rd>, [](std::string&) {}, {0, 2, 3, 5, 8, 11, 20}},
};

class DecoderFaults : public testing::TestWithParam<S_DecoderCase> {
 protected:
  unsigned Decode(unsigned type, const std::string& frame) {
    return m_decoder->Decode(type, m_page.AtEnd(frame), static_cast<unsigned short>(frame.size()));
  }

  // Decodes into an output that held other bytes.
  unsigned DecodeOver(int byte, unsigned type, const std::string& frame) {
    m_decoder->Fill(byte);
    return Decode(type, frame);
  }

  // The message between two good ones.
  void ExpectNoTrace(unsigned type, const std::string& good, std::string changed) {
    const unsigned result = DecodeOver(0xAA, type, good);
    const std::string record(m_decoder->Record());
    GetParam().makeSumRight(changed);
    const unsigned stated = DecodeOver(0x00, type, changed);
    const std::string changedRecord(m_decoder->Record());
    ASSERT_THAT(GetParam().results, testing::Contains(stated)) << changed;
    ASSERT_EQ(DecodeOver(0xFF, type, changed), stated) << changed;
    ASSERT_TRUE(m_decoder->Record() == changedRecord) << changed;
    ASSERT_EQ(DecodeOver(0x00, type, good), result) << changed;
    ASSERT_TRUE(m_decoder->Record() == record) << changed;
  }

  const std::unique_ptr<S_Decoder> m_decoder = GetParam().make();
  GuardedPage m_page{2048};
};

TEST_P(DecoderFaults, AnyByteAndAnyCutGiveAStatedResultAndLeaveNoTrace) {
  std::mt19937 random(20250104);
  for (const auto& [type, frame] : FirstFrames(GetParam().protocol)) {
    for (std::size_t at = 0; at < frame.size(); ++at) {
      std::string bytes = std::string(",*-\x7F\x80\xFF\0", 7);
      for (int i = 0; i < 3; ++i) bytes += static_cast<char>(random());
      for (const char byte : bytes) {
        std::string changed = frame;
        changed[at] = byte;
        ASSERT_NO_FATAL_FAILURE(ExpectNoTrace(type, frame, changed)) << "byte " << at << " = " << int{byte};
      }
      for (const char* end : {"", "*00", "*00\r\n"})
        ASSERT_NO_FATAL_FAILURE(ExpectNoTrace(type, frame, frame.substr(0, at) + end)) << at << end;
    }
  }
}

// But where none can be: in the number of a binary message, the asterisk of own sentences, and diagnostics.
TEST_P(DecoderFaults, EveryFlippedBitIsSeen) {
  const unsigned protocol = GetParam().protocol;
  if (protocol == C_RawDataMessage::eVelaRD) return;
  for (const auto& [type, frame] : FirstFrames(protocol)) {
    Decode(type, frame);
    const std::string record(m_decoder->Record());
    for (std::size_t bit = 0; bit < 8 * frame.size(); ++bit) {
      const std::size_t at = bit / 8;
      if (protocol == C_RawDataMessage::eVelaBIN && (at == 4 || at == 5)) continue;
      if (protocol == C_RawDataMessage::ePKVN && at + 3 == frame.size()) continue;
      std::string flipped = frame;
      flipped[at] = static_cast<char>(flipped[at] ^ 1 << bit % 8);
      ASSERT_TRUE(Decode(type, flipped) != 0 || m_decoder->Record() == record) << flipped;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Decoders, DecoderFaults, testing::ValuesIn(kDecoders), CaseName<S_DecoderCase>);

}  // namespace
