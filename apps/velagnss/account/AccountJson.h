// The account of one input as JSON; docs/json.md describes the object.
#ifndef VELAGNSS_APPS_ACCOUNT_JSON_H
#define VELAGNSS_APPS_ACCOUNT_JSON_H

#include "apps/velagnss/account/PointReport.h"
#include "apps/velagnss/account/StreamAccount.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// An object. `points` may be null: then there is no member "positions".
void WriteAccount(C_JsonWriter& json, const C_StreamAccount& account, const C_PointReport* points = nullptr);

// A line, the counts of a total of so many inputs.
void WriteTotal(C_JsonWriter& json, const C_StreamAccount& total, std::size_t inputs);

}  // namespace Host

#endif  // VELAGNSS_APPS_ACCOUNT_JSON_H
