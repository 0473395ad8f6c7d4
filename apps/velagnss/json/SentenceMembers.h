// Kinds of members that NMEA sentences share.
#ifndef VELAGNSS_APPS_SENTENCE_MEMBERS_H
#define VELAGNSS_APPS_SENTENCE_MEMBERS_H

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/velagnss/json/MemberTable.h"
#include "apps/velagnss/text/Units.h"

namespace Host {

template <class Record>
constexpr S_MemberKind<Record> TimeOfDay() {
  return {&Value<&Record::timeOfDay, Record>, [](const nlohmann::json& value, Record& record) {
            t_Problem problem = ReadNumber(value, record.timeOfDay);
            if (!problem.empty() || (record.timeOfDay >= 0 && record.timeOfDay < kSecondsPerDay)) return problem;
            return fmt::format("{} is outside the range 0 to below {}", Quoted(value), kSecondsPerDay);
          }};
}

// Letters and digits: no other character can end the field or the sentence.
inline bool IsTalkerCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

template <class Record>
constexpr S_MemberKind<Record> Talker() {
  return {[](C_JsonWriter& json, const Record& record) {
            json.String({record.talker, sizeof record.talker});
          },
          [](const nlohmann::json& value, Record& record) -> t_Problem {
            const std::string text = value.is_string() ? value.get<std::string>() : "";
            if (text.size() != sizeof record.talker || !std::all_of(text.begin(), text.end(), &IsTalkerCharacter))
              return Quoted(value) + " is not two letters or digits";
            std::copy(text.begin(), text.end(), record.talker);
            return {};
          }};
}

}  // namespace Host

#endif  // VELAGNSS_APPS_SENTENCE_MEMBERS_H
