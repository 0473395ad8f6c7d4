// The account of one input for people, in aligned columns.
#ifndef VELAGNSS_APPS_ACCOUNT_TABLE_H
#define VELAGNSS_APPS_ACCOUNT_TABLE_H

#include <string>

#include "apps/velagnss/account/StreamAccount.h"

namespace Host {

// The counts of a total of so many inputs.
std::string TotalTable(const C_StreamAccount& total, std::size_t inputs);

// `isLong`: all entries of the lists, not only the first few.
std::string AccountTable(const C_StreamAccount& account, bool isLong);

}  // namespace Host

#endif  // VELAGNSS_APPS_ACCOUNT_TABLE_H
