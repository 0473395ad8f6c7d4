// The facade: each operation of the exported class calls the recognizer core or a small part of this directory.
#include "framing/FrameRecognizer.h"

#include "framing/MessageLengths.h"
#include "framing/RecognizerCore.h"
#include "framing/SevenOfEight.h"
#include "framing/XorSum.h"

using namespace velagnss::framing;

C_FrameRecognizer::C_FrameRecognizer(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling,
                                     bool keepStatistics)
    // By pointer: the size of the exported class stays the same when the machine changes.
    : m_core(new C_RecognizerCore(protocols, overflowHandling, keepStatistics)) {
  // The operations that a host may call again to restore the tables.
  CreateRecognizedFrames();
  SetFrameStartChars();
  SetExpectedNMEA0183Msgs();
  SetExpectedVelaBINMsgs();
  SetExpectedVelaRDMsgs();
  SetExpectedVelaJIMsgs();
  SetExpectedVelaGEOMsgs();
  SetExpectedVelaJQUERYMsgs();
  SetExpectedJSITERECORDMsgs();
}

C_FrameRecognizer::~C_FrameRecognizer() = default;

eRecognitionResult C_FrameRecognizer::DoRecognition(const unsigned char* data, unsigned short length,
                                                    C_RawDataMessage& message) {
  return m_core->DoRecognition(data, length, message);
}

void C_FrameRecognizer::EnableProtocol(eProtocols protocol) { m_core->EnableProtocol(protocol); }
void C_FrameRecognizer::DisableProtocol(eProtocols protocol) { m_core->DisableProtocol(protocol); }
void C_FrameRecognizer::SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) {
  m_core->SetOverflowHandling(overflowHandling);
}
void C_FrameRecognizer::SetPatientSearch(bool patient) { m_core->SetPatientSearch(patient); }
void C_FrameRecognizer::SetAcceptUnlisted(bool on) { m_core->SetAcceptUnlisted(on); }
void C_FrameRecognizer::FullProcessingReset() { m_core->FullProcessingReset(); }
void C_FrameRecognizer::ResetFrameScanProc() { m_core->ResetFrameScanProc(); }

unsigned short C_FrameRecognizer::GetMaxFrameLength() const { return m_core->GetMaxFrameLength(); }
unsigned int C_FrameRecognizer::GetFreeSpace() const { return m_core->GetFreeSpace(); }
unsigned int C_FrameRecognizer::GetQueuedBytes() const { return m_core->GetQueuedBytes(); }
unsigned int C_FrameRecognizer::CopyQueuedBytes(unsigned char* out, unsigned int room) const {
  return m_core->CopyQueuedBytes(out, room);
}
const S_RecognizerStatistics* C_FrameRecognizer::GetStatistics() const { return m_core->GetStatistics(); }

bool C_FrameRecognizer::IsAFrameStartChar(unsigned char byte) const { return m_core->IsAFrameStartChar(byte); }
bool C_FrameRecognizer::IsAPostFrameAllowedByte(unsigned char byte) { return m_core->IsAPostFrameAllowedByte(byte); }

bool C_FrameRecognizer::ExtractHexValue(const unsigned char* text, unsigned char count, unsigned int& value) const {
  return ReadHex(text, count, value);
}
unsigned char C_FrameRecognizer::Compute_ByteXOR(const unsigned char* data, unsigned short count) const {
  return data == nullptr ? 0 : XorOf(data, count);
}
bool C_FrameRecognizer::Unwind7of8_Byte(unsigned short* out, unsigned char in, unsigned int& accumulator,
                                        unsigned char& bitCount) {
  return UnwindByte(out, in, accumulator, bitCount);
}
unsigned int C_FrameRecognizer::UnwindVela7of8Message(void* out, const unsigned char* in, unsigned short maxWords) {
  return UnwindMessage(out, in, maxWords);
}

void C_FrameRecognizer::CreateRecognizedFrames() { m_core->CreateRecognizedFrames(); }
void C_FrameRecognizer::SetFrameStartChars() { m_core->SetFrameStartChars(); }

// The length limits of each protocol, as framing/MessageLengths.h has them.
void C_FrameRecognizer::SetExpectedNMEA0183Msgs() { m_core->Expected().nmea = kNmeaLengths; }
void C_FrameRecognizer::SetExpectedVelaBINMsgs() { m_core->Expected().blocks = kBlockLengths.data(); }
void C_FrameRecognizer::SetExpectedVelaRDMsgs() { m_core->Expected().rdVersions = kRdLengths; }
void C_FrameRecognizer::SetExpectedVelaJIMsgs() { m_core->Expected().replies[C_RawDataMessage::eVelaJI] = kInfoReply; }
void C_FrameRecognizer::SetExpectedVelaGEOMsgs() {
  m_core->Expected().replies[C_RawDataMessage::eVelaGEO] = kInfoReply;
}
void C_FrameRecognizer::SetExpectedVelaJQUERYMsgs() {
  m_core->Expected().replies[C_RawDataMessage::eVelaJQUERY] = kQueryReply;
}
void C_FrameRecognizer::SetExpectedJSITERECORDMsgs() {
  m_core->Expected().replies[C_RawDataMessage::eJSITERECORD] = kSiteRecord;
}

// Single steps of the search, for hosts that drive it themselves. Any order is safe: a step out of turn is an error.
eRecognitionResult C_FrameRecognizer::FrameStartSearch() { return m_core->FrameStartSearch(); }
eRecognitionResult C_FrameRecognizer::DetermineMsgExpectations() { return m_core->DetermineMsgExpectations(); }

bool C_FrameRecognizer::GetRTCM3_xFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eRTCM3_x); }
bool C_FrameRecognizer::GetNMEA0183rameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eNMEA0183); }
bool C_FrameRecognizer::GetVelaBINFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eVelaBIN); }
bool C_FrameRecognizer::GetPKvnFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::ePKVN); }
bool C_FrameRecognizer::GetVelaRDFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eVelaRD); }
bool C_FrameRecognizer::GetVelaJIFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eVelaJI); }
bool C_FrameRecognizer::GetVelaGEOFrameParameters() { return m_core->GetFrameParameters(C_RawDataMessage::eVelaGEO); }
bool C_FrameRecognizer::GetVelaJQUERYFrameParameters() {
  return m_core->GetFrameParameters(C_RawDataMessage::eVelaJQUERY);
}
bool C_FrameRecognizer::GetJSITERECORDFrameParameters() {
  return m_core->GetFrameParameters(C_RawDataMessage::eJSITERECORD);
}

// The first scans by the protocol of the start that matched, the others by their own, whatever has matched.
eRecognitionResult C_FrameRecognizer::FrameBodyWait() { return m_core->FrameBodyWait(); }
eRecognitionResult C_FrameRecognizer::RTCM3xBodyWait() { return m_core->BodyWait(eBody::Rtcm); }
eRecognitionResult C_FrameRecognizer::NMEA0183BodyWait() { return m_core->BodyWait(eBody::Text); }
eRecognitionResult C_FrameRecognizer::VelaBINBodyWait() { return m_core->VelaBINBodyWait(); }
eRecognitionResult C_FrameRecognizer::PKVNRawBodyWait() { return m_core->BodyWait(eBody::PkvnRaw); }
eRecognitionResult C_FrameRecognizer::PKVNNotRawBodyWait() { return m_core->BodyWait(eBody::Pkvn); }
eRecognitionResult C_FrameRecognizer::JSITERECORDBodyWait() { return m_core->BodyWait(eBody::SiteRecord); }
eRecognitionResult C_FrameRecognizer::VelaCmdAckBodyWait() { return m_core->BodyWait(eBody::Ack); }
eRecognitionResult C_FrameRecognizer::JROXBodyWait() { return m_core->BodyWait(eBody::Jrox); }
