// The decoders of "$PKVN," and "$RD1," sentences; the mutator repairs checksums and line ends. Results are those that
// the operations state; records depend on the sentence alone; only a decoded sentence is counted; nothing outside of it
// is read; a good sentence after it decodes as before it.
#include "fuzz/DecodeChecks.h"
#include "fuzz/RepairedSentence.h"
#include "fuzz/Samples.h"
#include "tests/ExactCopy.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace {

using VelaPKVN_Messages::eMessageTypes;

constexpr auto kUnset = eMessageTypes{77};

void RequireOrder(ExactCopy& frame) {
  eMessageTypes checkedType = kUnset;
  unsigned short errorPosition = 77;
  const unsigned int checked = C_VelaPKVN_Decode::ValidateFrame(frame.Data(), frame.Size(), checkedType, errorPosition);
  Fuzz::RequireOneOf(checked, {0, 3, 4, 5, 19, 20}, "ValidateFrame");
  eMessageTypes type = kUnset;
  const unsigned int result = Fuzz::DecodeOverAnyMemory<U_VelaPKVN_EcdDcdData>(
      [&](U_VelaPKVN_EcdDcdData& record) {
        C_VelaPKVN_Decode decoder;
        const unsigned int decoded = decoder.Decode(frame.Data(), frame.Size(), type = kUnset, record);
        Fuzz::Require(decoder.GetLastResult() == decoded, "the last result is kept");
        Fuzz::Require(decoder.GetReceivedMsgCount(type) == (decoded == 0 ? 1 : 0), "what is decoded is counted");
        return decoded;
      },
      true);
  Fuzz::RequireOneOf(result, {0, 2, 3, 4, 5, 6, 11, 19, 20}, "Decode");
  Fuzz::Require(checked == 0 || checked == result, "Decode answers what the frame check answers");
  Fuzz::Require(type == checkedType, "Decode gives the type that the frame check gives");
}

// One kind of sentence, without the check of the frame.
template <auto Operation, class Record>
void RequireOrderOf(ExactCopy& frame, Record&&) {
  using t_Record = std::remove_reference_t<Record>;
  const unsigned int result = Fuzz::DecodeOverAnyMemory<t_Record>(
      [&](t_Record& record) {
        C_VelaPKVN_Decode decoder;
        return (decoder.*Operation)(frame.Data(), frame.Size(), record);
      },
      frame.Size() >= 18);  // below, the record is left alone
  Fuzz::RequireOneOf(result, {0, 2, 3, 11}, "Decode_...");
}

void RequireOrderOfTypes(ExactCopy& frame) {
  using D = C_VelaPKVN_Decode;
  RequireOrderOf<&D::Decode_AttStat>(frame, S_PKvnAttStat());
  RequireOrderOf<&D::Decode_GBS>(frame, S_PKvnGbs());
  RequireOrderOf<&D::Decode_HPR>(frame, S_PKvnHpr());
  RequireOrderOf<&D::Decode_BLV>(frame, S_PKvnBlv());
  RequireOrderOf<&D::Decode_FVI>(frame, S_PKvnFvi());
  RequireOrderOf<&D::Decode_RtkStat>(frame, S_PKvnRtkStat());
  RequireOrderOf<&D::Decode_VCT>(frame, S_PKvnVct());
  RequireOrderOf<&D::Decode_INTLT>(frame, S_PKvnINTLT());
  RequireOrderOf<&D::Decode_TEMPERATURE>(frame, S_PKvnTEMPERATURE());
  RequireOrderOf<&D::Decode_ARN>(frame, S_PKvnARN());
}

void RequireOrderOfRd(ExactCopy& frame) {
  unsigned short checkedVersion = 77;
  const unsigned int checked = C_VelaRD_Decode::ValidateFrame(frame.Data(), frame.Size(), checkedVersion);
  Fuzz::RequireOneOf(checked, {0, 3, 5, 20}, "ValidateFrame");
  Fuzz::Require(checkedVersion == 77 || checked == 0, "only a good frame has a version");
  unsigned short version = 77;
  const unsigned int result = Fuzz::DecodeOverAnyMemory<U_VelaRD_EcdDcdData>(
      [&](U_VelaRD_EcdDcdData& record) {
        C_VelaRD_Decode decoder;
        const unsigned int decoded = decoder.Decode(frame.Data(), frame.Size(), version = 77, record);
        Fuzz::Require(decoded == 0 || Fuzz::AreSameBytes(record, *Fuzz::FilledWith<U_VelaRD_EcdDcdData>(0)),
                      "the record stays zero after a failure");
        return decoded;
      },
      true);
  Fuzz::RequireOneOf(result, {0, 2, 3, 5, 8, 9, 11, 20}, "Decode of RD");
  Fuzz::Require(checked == 0 || checked == result, "Decode answers what the frame check answers");
  Fuzz::Require(version == checkedVersion, "Decode gives the version that the frame check gives");
  const unsigned int direct = Fuzz::DecodeOverAnyMemory<S_IntSignalDiagMsg>(
      [&](S_IntSignalDiagMsg& record) { return C_VelaRD_Decode().Decode_RD1(frame.Data(), frame.Size(), record); },
      false);
  Fuzz::RequireOneOf(direct, {0, 2, 3, 8, 9, 11}, "Decode_RD1");
}

// The sentence between two good ones, in the same decoders.
void RequireNoTrace(ExactCopy& frame) {
  C_VelaPKVN_Decode pkvn;
  C_VelaRD_Decode rd;
  auto goodPkvn = Fuzz::GoodFrame<U_VelaPKVN_EcdDcdData>([&pkvn](U_VelaPKVN_EcdDcdData& record) {
    ExactCopy copy(Sentence("PKVN,HPR,120000.00,271.50,-1.25,0.75,G"));
    eMessageTypes type = kUnset;
    return pkvn.Decode(copy.Data(), copy.Size(), type, record);
  });
  auto goodRd = Fuzz::GoodFrame<U_VelaRD_EcdDcdData>([&rd](U_VelaRD_EcdDcdData& record) {
    ExactCopy copy("$RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF\r\n");
    unsigned short version = 0;
    return rd.Decode(copy.Data(), copy.Size(), version, record);
  });
  eMessageTypes type = kUnset;
  unsigned short version = 0;
  pkvn.Decode(frame.Data(), frame.Size(), type, *Fuzz::FilledWith<U_VelaPKVN_EcdDcdData>(0xAA));
  rd.Decode(frame.Data(), frame.Size(), version, *Fuzz::FilledWith<U_VelaRD_EcdDcdData>(0xAA));
  goodPkvn.RequireSame();
  goodRd.RequireSame();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 0xFFFF) return 0;
  const std::string_view bytes = Fuzz::View(data, size);
  ExactCopy frame(bytes);
  RequireOrder(frame);
  RequireOrderOfTypes(frame);
  RequireOrderOfRd(frame);
  RequireNoTrace(frame);
  Fuzz::Require(bytes == Fuzz::View(frame.Data(), frame.Size()), "the sentence is not written");
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
  return Fuzz::Mutate(data, size, maxSize, seed, [](std::string& input, std::minstd_rand& random) {
    Fuzz::RepairSentence(input, 0, Fuzz::kProprietarySamples, random);
    if (input.compare(0, 3, "$RD") == 0) input.replace(input.rfind('*'), std::string::npos, "\r\n");
  });
}
