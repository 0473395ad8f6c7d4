#include "apps/velagnss/net/SerialSettings.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using eParity = S_SerialSettings::eParity;
using eFlow = S_SerialSettings::eFlow;

bool SetNumber(std::string_view text, unsigned int least, unsigned int greatest, unsigned int& number) {
  return ParseWhole(text, number) && number >= least && number <= greatest;
}

// The words for the values of an enumeration, in its order.
template <class Value, std::size_t N>
bool SetWord(std::string_view text, const std::array<std::string_view, N>& words, Value& value) {
  const auto found = std::find(words.begin(), words.end(), text);
  value = static_cast<Value>(found - words.begin());
  return found != words.end();
}

constexpr std::array<std::string_view, 3> kParities = {"none", "even", "odd"};
constexpr std::array<std::string_view, 3> kFlows = {"none", "rtscts", "xonxoff"};

// Each returns whether `text` is allowed.
bool SetBaud(std::string_view text, S_SerialSettings& settings) {
  return SetNumber(text, 50, 20'000'000, settings.baud.emplace());
}
bool SetBits(std::string_view text, S_SerialSettings& settings) { return SetNumber(text, 5, 8, settings.dataBits); }
bool SetParity(std::string_view text, S_SerialSettings& settings) { return SetWord(text, kParities, settings.parity); }
bool SetStop(std::string_view text, S_SerialSettings& settings) { return SetNumber(text, 1, 2, settings.stopBits); }
bool SetFlow(std::string_view text, S_SerialSettings& settings) { return SetWord(text, kFlows, settings.flow); }

template <bool (*Set)(std::string_view, S_SerialSettings&)>
bool IsGood(const std::string& text) {
  S_SerialSettings settings;
  return Set(text, settings);
}

struct S_Setting {
  std::string_view name;
  bool (*set)(std::string_view text, S_SerialSettings& settings);
};
constexpr S_Setting kSettings[] = {
    {"baud", &SetBaud}, {"bits", &SetBits}, {"parity", &SetParity}, {"stop", &SetStop}, {"flow", &SetFlow}};

constexpr S_AddressOption kOptions[] = {{"baud", "a number from 50 to 20000000", &IsGood<&SetBaud>},
                                        {"bits", "a number from 5 to 8", &IsGood<&SetBits>},
                                        {"parity", "none, even or odd", &IsGood<&SetParity>},
                                        {"stop", "1 or 2", &IsGood<&SetStop>},
                                        {"flow", "none, rtscts or xonxoff", &IsGood<&SetFlow>}};

}  // namespace

constexpr S_AddressForm kSerialForm = {
    .scheme = "serial",
    .example = "serial:///dev/ttyUSB0, with three slashes",
    .path = S_AddressForm::eNeed::Must,
    .options = kOptions,
};

S_SerialSettings ReadSerialSettings(const S_Address& address) {
  S_SerialSettings settings;
  for (const S_Setting& setting : kSettings)
    if (const auto option = address.options.find(std::string(setting.name)); option != address.options.end())
      setting.set(option->second, settings);
  return settings;
}

}  // namespace Host
