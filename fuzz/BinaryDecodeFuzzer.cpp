// The binary decoder over frames whose header and checksum the mutator repairs. Results are those that the operations
// state; records depend on the frame and the seed alone; only a decoded frame is counted; nothing outside of the frame
// is read, and the frame is not written; a good frame after it decodes as before it.
#include "binproto/VelaBin_Decode.h"
#include "fuzz/DecodeChecks.h"
#include "fuzz/Samples.h"
#include "tests/BinaryFrames.h"
#include "tests/ExactCopy.h"

namespace {

using t_Record = U_VelaBIN_EcdDcdData;
using VelaBIN_Messages::eMessageTypes;

constexpr std::size_t kOptions = 4;  // bytes in front of the frame: seed, its week, and a message to ask for
constexpr std::size_t kHeader = 8;
constexpr std::size_t kSum = 2;

struct S_Options {
  bool hasSeed;
  unsigned short week;
  unsigned char asked;  // number of a message
};

void Prepare(C_VelaBin_Decode& decoder, const S_Options& options) {
  if (options.hasSeed) decoder.SeedTime(options.week, 345600.0, ALGO::GNSS_GPS);
}

// The frame through `Decode`, in decoders that know nothing else.
unsigned int RequireOrder(ExactCopy& frame, const S_Options& options) {
  unsigned short checkedNumber = 0xEEEE, frameLength = 0xEEEE, position = 0xEEEE;
  const unsigned int checked =
      C_VelaBin_Decode::ValidateFrame(frame.Data(), frame.Size(), checkedNumber, frameLength, position);
  Fuzz::RequireOneOf(checked, {0, 3, 4, 5, 19, 20}, "ValidateFrame");
  unsigned short number = 0;
  const unsigned int result = Fuzz::DecodeOverAnyMemory<t_Record>(
      [&](t_Record& record) {
        C_VelaBin_Decode decoder(nullptr);
        Prepare(decoder, options);
        return decoder.Decode(frame.Data(), frame.Size(), number = 0xEEEE, record);
      },
      true);
  Fuzz::RequireOneOf(result, {0, 3, 4, 5, 7, 8, 9, 19, 20, 22}, "Decode");
  Fuzz::Require(checked == 0 || checked == result, "Decode answers what the frame check answers");
  Fuzz::Require(number == checkedNumber, "Decode and the frame check find the same number");
  return result;
}

// The frame as one message, without the check of the frame: as the one it says it is, or the one asked for.
template <class Record>
void RequireOrderOf(unsigned int (C_VelaBin_Decode::*operation)(unsigned char*, const unsigned short&, Record&),
                    unsigned int number, ExactCopy& frame, const S_Options& options) {
  const unsigned int said = frame.Size() > 5 ? frame.Data()[4] | frame.Data()[5] << 8 : 0U;
  if (said != number && options.asked != number) return;
  const unsigned int result = Fuzz::DecodeOverAnyMemory<Record>(
      [&](Record& record) {
        C_VelaBin_Decode decoder(nullptr);
        Prepare(decoder, options);
        return (decoder.*operation)(frame.Data(), frame.Size(), record);
      },
      false);
  Fuzz::RequireOneOf(result, {0, 3, 7, 8, 9, 22}, "Decode_Bin...");
  Fuzz::Require(said == number || result != 0, "no message is taken for another one");
}

void RequireOrderOfMessages(ExactCopy& frame, const S_Options& options) {
  using D = C_VelaBin_Decode;
  RequireOrderOf(&D::Decode_Bin1, 1, frame, options);
  RequireOrderOf(&D::Decode_Bin2, 2, frame, options);
  RequireOrderOf(&D::Decode_Bin16, 16, frame, options);
  RequireOrderOf(&D::Decode_Bin25, 25, frame, options);
  RequireOrderOf(&D::Decode_Bin34, 34, frame, options);
  RequireOrderOf(&D::Decode_Bin35, 35, frame, options);
  RequireOrderOf(&D::Decode_Bin65, 65, frame, options);
  RequireOrderOf(&D::Decode_Bin76, 76, frame, options);
  RequireOrderOf(&D::Decode_Bin93, 93, frame, options);
  RequireOrderOf(&D::Decode_Bin209, 209, frame, options);
}

// The frame between two good ones, in one decoder.
void RequireNoTrace(ExactCopy& frame, const S_Options& options) {
  C_VelaBin_Decode decoder(nullptr);
  Prepare(decoder, options);
  const std::string ephemeris = BinFrame(95, std::string("\5\0", 2) + std::string(126, '\x2B'));
  auto good = Fuzz::GoodFrame<t_Record>([&](t_Record& record) {
    ExactCopy copy(ephemeris);
    unsigned short number = 0;
    return decoder.Decode(copy.Data(), copy.Size(), number, record);
  });
  const auto record = Fuzz::FilledWith<t_Record>(0xAA);
  unsigned short number = 0xEEEE;
  const unsigned int before = frame.Size() > 4 ? decoder.GetReceivedMsgCount(eMessageTypes{frame.Data()[4]}) : 0;
  const bool isDecoded = decoder.Decode(frame.Data(), frame.Size(), number, *record) == 0;
  Fuzz::Require(!isDecoded || decoder.GetReceivedMsgCount(eMessageTypes{number}) == before + 1,
                "a decoded frame counts");
  Fuzz::Require(isDecoded || frame.Size() <= 4 || decoder.GetReceivedMsgCount(eMessageTypes{frame.Data()[4]}) == before,
                "a failed frame does not count");
  for (unsigned char slot = 0; slot < 30; ++slot) {
    const int channel = decoder.GetGlonassSvChannelId(slot);
    Fuzz::Require(channel == -128 || (slot >= 1 && slot <= 24 && channel >= -7 && channel <= 6),
                  "channels are -7 to 6");
  }
  good.RequireSame();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  const S_Options options = {input.Below(4) != 0, input.Value<std::uint16_t>(), input.Value<std::uint8_t>()};
  const std::string bytes = input.Rest();
  if (bytes.size() > 0xFFFF) return 0;
  ExactCopy frame(bytes);
  RequireOrder(frame, options);
  RequireOrderOfMessages(frame, options);
  RequireNoTrace(frame, options);
  Fuzz::Require(bytes == Fuzz::View(frame.Data(), frame.Size()), "the frame is not written");
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
  return Fuzz::Mutate(data, size, maxSize, seed, [](std::string& input, std::minstd_rand& random) {
    if (input.size() < kOptions + kHeader + kSum) input.resize(kOptions + kHeader + kSum);
    unsigned int number = static_cast<unsigned char>(input[kOptions + 4]);
    std::string body = input.substr(kOptions + kHeader, input.size() - kOptions - kHeader - kSum);
    const auto* row =
        std::find_if(std::begin(Fuzz::kBodies), std::end(Fuzz::kBodies), [&](auto& it) { return it.number == number; });
    if (row == std::end(Fuzz::kBodies) || random() % 16 == 0) row = &Fuzz::kBodies[random() % std::size(Fuzz::kBodies)];
    if (random() % 8 != 0) {
      number = row->number;
      body.resize(row->bytes + (random() % 8 == 0 ? random() % 4 : 0));
    }
    input = input.substr(0, kOptions) + BinFrame(number, body);
  });
}
