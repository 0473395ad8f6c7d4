// What an address of a scheme may hold, as a table row, and the check of an address against it.
#ifndef VELAGNSS_APPS_ADDRESS_FORM_H
#define VELAGNSS_APPS_ADDRESS_FORM_H

#include <span>
#include <string>
#include <string_view>

#include "apps/velagnss/net/Address.h"

namespace Host {

// What may follow the '?' of an address: "baud=115200".
struct S_AddressOption {
  std::string_view name;
  std::string_view allowed;  // "a number from 50 to 20000000"
  bool (*isGood)(const std::string& value);
};

struct S_AddressForm {
  enum class eNeed { None, Maybe, Must };

  std::string_view scheme;
  std::string_view example;  // how it is written: "tcp://HOST:PORT"
  eNeed account = eNeed::None;
  eNeed host = eNeed::None;
  eNeed port = eNeed::None;
  eNeed path = eNeed::None;
  std::span<const S_AddressOption> options = {};
  std::string (*check)(const S_Address& address) = nullptr;  // what a row cannot say; returns an error text
};

// Returns an error text that shows how to write the address; empty when it is good.
std::string CheckAddress(const S_Address& address, const S_AddressForm& form);

}  // namespace Host

#endif  // VELAGNSS_APPS_ADDRESS_FORM_H
