#include "apps/velagnss/text/MessageNames.h"

#include <algorithm>

#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"
#include "stream/Names.h"

namespace Host {
namespace {

using eProtocols = C_RawDataMessage::eProtocols;

bool IsLetter(char c) { return c >= 'A' && c <= 'Z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

S_MessageKey KeyOf(const velagnss::Frame& frame) {
  const std::string_view unlisted = velagnss::UnlistedName(frame);
  if (!unlisted.empty()) return {frame.protocol, frame.message, std::string(unlisted)};
  return {frame.protocol, velagnss::MessageNumber(frame).value_or(0)};
}

std::optional<S_MessageKey> FindUnlisted(std::string_view name) {
  constexpr std::size_t kFormatter = 3;
  const std::string upper = InCapitals(name);
  const bool isWord = std::all_of(upper.begin(), upper.end(), [](char c) { return IsLetter(c) || IsDigit(c); }) &&
                      std::any_of(upper.begin(), upper.end(), &IsLetter);
  const bool isProprietary = upper.size() > kFormatter && upper.front() == 'P';
  if (!isWord || (upper.size() != kFormatter && !isProprietary)) return std::nullopt;
  return S_MessageKey{C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaUnknown, upper};
}

std::string ProtocolNames() {
  std::string names;
  for (unsigned int i = 0; i < kNumProtocols; ++i)
    names.append(names.empty() ? "" : " ").append(velagnss::ProtocolName(eProtocols{i}));
  return names;
}

std::string SentenceNames() {
  std::string names;
  for (const eProtocols protocol : {C_RawDataMessage::eNMEA0183, C_RawDataMessage::ePKVN}) {
    for (unsigned int type = 0; type < velagnss::NumMessages(protocol); ++type) {
      const velagnss::MessageName name(protocol, type);
      if (!name.Text().empty()) names.append(names.empty() ? "" : " ").append(name.Text());
    }
  }
  return names;
}

// One name can belong to messages of several protocols; all of them are meant.
std::vector<S_MessageKey> FindMessages(std::string_view nameOrNumber) {
  std::vector<S_MessageKey> found;
  unsigned int number = 0;
  const bool isNumber = ParseWhole(nameOrNumber, number);
  const std::string name = InCapitals(nameOrNumber);  // as all names are
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const eProtocols protocol{i};
    for (unsigned int type = 0; type < velagnss::NumMessages(protocol); ++type) {
      const bool isMeant = isNumber ? type == number && velagnss::IsCalledByNumber(protocol)
                                    : velagnss::MessageName(protocol, type).Text() == name;
      if (isMeant) found.push_back({protocol, type});
    }
  }
  return found;
}

}  // namespace Host
