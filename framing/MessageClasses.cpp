// What a delivered message is about, by protocol and number: the RTCM 3 messages that are delivered at all, the kinds
// of state space messages, and the types of the text replies. Nothing here looks at bytes.
#include <array>

#include "framing/FrameRecognizer.h"

namespace {

using eProtocols = C_RawDataMessage::eProtocols;

// clang-format off
// The RTCM 10403 message numbers that are delivered, and 4011 to 4095 of the proprietary ones.
// 1001 to 1013 are observables and stations, 1019 to 1046 and 63 ephemerides and text, 1057 to 1068 and 1240 to 1303
// corrections of orbits, clocks and biases (SSR), 1071 to 1127 MSM, 1230 GLONASS biases.
constexpr unsigned short kRtcmNumbers[][2] = {
    {63, 63},     {1001, 1013}, {1019, 1020}, {1030, 1033}, {1042, 1046}, {1057, 1066}, {1068, 1068}, {1071, 1077},
    {1081, 1087}, {1091, 1097}, {1101, 1107}, {1111, 1117}, {1121, 1127}, {1230, 1230}, {1240, 1243}, {1245, 1245},
    {1258, 1261}, {1263, 1270}, {1303, 1303}, {4011, 4011}, {4013, 4014}, {4067, 4095},
};

enum eSsrKind : unsigned char { eOrbitClock, eHighRateClock, eCodeBias, ePhaseBias, eVtec };

struct S_SsrRow {
  unsigned short number;
  eSsrKind kind;
  ALGO::eGNSSSystem system;  // of the orbit/clock messages
};

// Messages of the state space representation. The high-rate clock messages count as orbit/clock messages too.
constexpr S_SsrRow kSsrMessages[] = {
    {1057, eOrbitClock,    ALGO::GNSS_GPS},
    {1058, eOrbitClock,    ALGO::GNSS_GPS},
    {1059, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1060, eOrbitClock,    ALGO::GNSS_GPS},
    {1062, eHighRateClock, ALGO::GNSS_GPS},
    {1063, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1064, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1065, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1066, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1068, eHighRateClock, ALGO::GNSS_GLONASS},
    {1240, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1241, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1242, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1243, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1245, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1258, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1259, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1260, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1261, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1263, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1264, eVtec,          ALGO::GNSS_UNKNOWN},
    {1265, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1266, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1267, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1268, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1269, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1270, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1303, eOrbitClock,    ALGO::GNSS_BEIDOU},
};
// clang-format on

// The ranges spread out, so that the question asked of every RTCM 3 start costs one access.
constexpr auto kIsRtcmNumber = [] {
  std::array<bool, 4096> accepted = {};
  for (const auto& range : kRtcmNumbers) {
    for (unsigned int number = range[0]; number <= range[1]; ++number) accepted[number] = true;
  }
  return accepted;
}();

// Hosts ask this of delivered frames, not of bytes: a search of a short table is fast enough.
const S_SsrRow* FindSsr(unsigned int number) {
  for (const S_SsrRow& row : kSsrMessages) {
    if (row.number == number) return &row;
  }
  return nullptr;
}

bool IsSsr(eProtocols protocol, unsigned int number, eSsrKind kind) {
  const S_SsrRow* row = protocol == C_RawDataMessage::eRTCM3_x ? FindSsr(number) : nullptr;
  return row != nullptr && row->kind == kind;
}

constexpr unsigned int kMaxReplyType = 999;

}  // namespace

bool C_FrameRecognizer::IsASupportedRtcm3Type(unsigned int number) {
  return number < kIsRtcmNumber.size() && kIsRtcmNumber[number];
}

bool C_FrameRecognizer::IsAnRtcmSsrOrbitClockMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eOrbitClock) || IsSsr(protocol, number, eHighRateClock);
}

bool C_FrameRecognizer::IsAnRtcmSsrCodeBiasMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eCodeBias);
}

bool C_FrameRecognizer::IsAnRtcmSsrPhaseBiasMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, ePhaseBias);
}

bool C_FrameRecognizer::IsAnRtcmSsrVtecMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eVtec);
}

bool C_FrameRecognizer::IsAHighRateSsrClockMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eHighRateClock);
}

// Unknown also for the messages of biases: one number of them may serve several systems.
ALGO::eGNSSSystem C_FrameRecognizer::GetRtcmSsrOrbitClockMsgSys(unsigned int number) {
  const S_SsrRow* row = FindSsr(number);
  return row != nullptr ? row->system : ALGO::GNSS_UNKNOWN;
}

bool C_FrameRecognizer::IsAnNmeaGgaMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eNMEA0183 && type == C_RawDataMessage::eNmeaGGA;
}

bool C_FrameRecognizer::IsAVelaRDMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaRD && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaJIMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaJI && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaJQUERYMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaJQUERY && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaGEOMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaGEO && type <= kMaxReplyType;
}
