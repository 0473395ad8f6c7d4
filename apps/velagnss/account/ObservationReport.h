// Stations, observations and ephemerides of one input, as JSON and for people.
#ifndef VELAGNSS_APPS_OBSERVATION_REPORT_H
#define VELAGNSS_APPS_OBSERVATION_REPORT_H

#include <string>

#include "apps/velagnss/account/StreamAccount.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// Members of the object of the account.
void WriteObservations(C_JsonWriter& json, const C_StreamAccount& account);

// Nothing for an input without any of them.
void AppendObservations(std::string& table, const C_StreamAccount& account, std::size_t maxRows);

// The gaps of epochs of the account, as an array of JSON and as at most `maxRows` lines.
void WriteGaps(C_JsonWriter& json, const C_StreamAccount& account, const C_EpochSteps& epochs);
void AppendGaps(std::string& table, const C_StreamAccount& account, const C_EpochSteps& epochs, std::size_t maxRows);

}  // namespace Host

#endif  // VELAGNSS_APPS_OBSERVATION_REPORT_H
