#include "textproto/VelaPKVN_Decode.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "records/ResultCodes.h"

using namespace VelaPKVN_Messages;

namespace {

constexpr std::string_view kPrefix = "$PKVN,";
constexpr unsigned int kMinFrame = 18;
constexpr unsigned int kMaxFrame = 2047;
constexpr std::size_t kMaxName = 31;

// The message names; the row is the message type.
constexpr std::string_view kNames[] = {
    "RAW", "ATTSTAT", "GBS", "HPR", "BLV", "FVI", "RTKSTAT", "VCT", "INTLT", "TEMPERATURE", "ARN_ROUTER",
};
static_assert(kNames[ePkvnARN_ROUTER] == "ARN_ROUTER" && std::size(kNames) == ePkvnARN_ROUTER + 1);

struct S_ChannelName {
  std::string_view name;
  ePKvnAttStatSysChans channel;
};

// clang-format off
constexpr S_ChannelName kChannelNames[] = {
    {"L1", ePkvnL1}, {"L2", ePkvnL2}, {"L5", ePkvnL5},
    {"G1", ePkvnG1}, {"G2", ePkvnG2},
    {"B1", ePkvnB1}, {"B2", ePkvnB2}, {"B3", ePkvnB3}, {"B2B", ePkvnB2B},
    {"E5a", ePkvnE5a}, {"E5A", ePkvnE5a}, {"E5b", ePkvnE5b}, {"E5B", ePkvnE5b}, {"E5a+b", ePkvnE5ab},
    {"E6", ePkvnE6}, {"E1B", ePkvnE1B},
    {"QL1", ePkvnQL1},
};
// clang-format on

constexpr bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

// The sentence without the line end that may follow it. A sentence of the least length has none: it is too short with
// it.
std::string_view WithoutLineEnd(std::string_view sentence) {
  if (sentence.size() <= kMinFrame + 1) return sentence;
  for (int i = 0; i < 2 && IsLineEnd(sentence.back()); ++i) sentence.remove_suffix(1);
  return sentence;
}

std::string_view MessageName(std::string_view behindPrefix) {
  return behindPrefix.substr(0, std::min(kMaxName, behindPrefix.find_first_of(std::string_view(",\0", 2))));
}

bool HasChecksum(std::string_view sentence) {
  const std::size_t digits = sentence.size() - 2;
  unsigned int expected = 0;
  const auto* text = reinterpret_cast<const unsigned char*>(sentence.data());
  if (!C_VelaPKVN_Decode::ExtractHexValue(text + digits, 2, expected)) return false;
  unsigned int sum = 0;
  for (std::size_t i = 1; i < digits - 1; ++i) sum ^= text[i];  // the byte before the digits is taken for the asterisk
  return sum == expected;
}

}  // namespace

unsigned int C_VelaPKVN_Decode::ValidateFrame(const unsigned char* frame, unsigned short length, eMessageTypes& type,
                                              unsigned short& errorPosition) {
  if (frame == nullptr) return eResultNull;
  const std::string_view sentence = WithoutLineEnd({reinterpret_cast<const char*>(frame), length});
  if (sentence.size() > kMaxFrame) return eResultTooLong;
  if (sentence.size() < kMinFrame) return eResultTooShort;

  const auto wrong = std::mismatch(kPrefix.begin(), kPrefix.end(), sentence.begin()).first;
  errorPosition = static_cast<unsigned short>(wrong - kPrefix.begin());
  if (wrong != kPrefix.end()) {
    ++errorPosition;
    return eResultBadSync;
  }

  const std::string_view name = MessageName(sentence.substr(kPrefix.size()));
  errorPosition = static_cast<unsigned short>(errorPosition + name.size());
  const auto* row = std::find(std::begin(kNames), std::end(kNames), name);
  if (row == std::end(kNames)) {
    type = ePkvnUnknown;
    return eResultUnknownMessage;
  }
  type = static_cast<eMessageTypes>(row - kNames);
  return HasChecksum(sentence) ? eResultOk : eResultChecksum;
}

bool C_VelaPKVN_Decode::ExtractHexValue(const unsigned char* text, unsigned char digits, unsigned int& value) {
  value = 0;
  if (text == nullptr || digits < 1 || digits > 8) return false;
  for (const unsigned char c : std::basic_string_view(text, digits)) {
    const bool isLetter = c >= 'A' && c <= 'F';
    if (!isLetter && (c < '0' || c > '9')) return false;
    value = value << 4 | (isLetter ? c - 'A' + 10U : c - '0' + 0U);
  }
  return true;
}

bool C_VelaPKVN_Decode::MapPKvnAttSysStr2Type(const char* name, ePKvnAttStatSysChans& channel) {
  channel = ePkvnChanUnknown;
  if (name == nullptr) return false;
  for (const S_ChannelName& row : kChannelNames) {
    if (row.name != name) continue;
    channel = row.channel;
    return true;
  }
  return false;
}
