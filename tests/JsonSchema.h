// The part of JSON Schema (draft 2020-12) that docs/velagnss.schema.json uses.
//
// Stricter than the standard: where members of an object are listed, it may have no others. Readers of our output must
// accept further members, but we do not write any that are not in the schema.
#ifndef VELAGNSS_TESTS_JSON_SCHEMA_H
#define VELAGNSS_TESTS_JSON_SCHEMA_H

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>

class JsonSchema {
 public:
  explicit JsonSchema(nlohmann::json root) : m_root(std::move(root)) {}

  // What is wrong with `value`; empty when nothing is.
  std::string Check(const nlohmann::json& value) const { return Check(value, m_root); }

 private:
  using Json = nlohmann::json;

  // The first error that `check(key, item)` finds in an object or array.
  template <class t_Check>
  static std::string First(const Json& items, const t_Check& check) {
    for (const auto& [key, item] : items.items())
      if (std::string error = check(key, item); !error.empty()) return error;
    return "";
  }

  std::string Check(const Json& value, const Json& schema) const {
    return First(schema,
                 [&](const std::string& name, const Json& rule) { return CheckRule(value, name, rule, schema); });
  }

  std::string CheckRule(const Json& value, const std::string& name, const Json& rule, const Json& schema) const {
    const auto failed = [&](bool isWrong) {
      return isWrong ? value.dump() + " breaks " + name + " " + rule.dump() : "";
    };
    const auto isMissing = [&](const auto&, const Json& member) {
      return value.contains(member.get<std::string>()) ? "" : member.dump() + " is missing";
    };
    if (name == "$ref") return Check(value, m_root.at(Json::json_pointer(rule.get<std::string>().substr(1))));
    if (name == "type") return failed(!HasType(value, rule.is_array() ? rule : Json::array({rule})));
    if (name == "const") return failed(value != rule);
    if (name == "enum") return failed(std::find(rule.begin(), rule.end(), value) == rule.end());
    if (name == "minimum") return failed(value.is_number() && value < rule);
    if (name == "maximum") return failed(value.is_number() && value > rule);
    if (name == "minItems") return failed(value.size() < rule);
    if (name == "maxItems") return failed(value.size() > rule);
    if (name == "pattern")
      return failed(value.is_string() &&
                    !std::regex_search(value.get<std::string>(), std::regex(rule.get<std::string>())));
    if (name == "items") return First(value, [&](const auto&, const Json& item) { return Check(item, rule); });
    if (name == "properties") {
      // Conditions, which have no type, name only the members that they look at.
      if (schema.contains("type"))
        for (const auto& member : value.items())
          if (!rule.contains(member.key())) return member.key() + " is not in the schema";
      return First(rule, [&](const std::string& key, const Json& part) {
        return value.contains(key) ? Check(value.at(key), part) : "";
      });
    }
    if (name == "required") return value.is_object() ? First(rule, isMissing) : "";
    if (name == "dependentRequired")
      return First(rule, [&](const std::string& key, const Json& names) {
        return value.contains(key) ? First(names, isMissing) : "";
      });
    if (name == "allOf") return First(rule, [&](const auto&, const Json& part) { return Check(value, part); });
    if (name == "anyOf" || name == "oneOf") {
      const auto forms =
          std::count_if(rule.begin(), rule.end(), [&](const Json& part) { return Check(value, part).empty(); });
      return failed(forms == 0 || (forms > 1 && name == "oneOf"));
    }
    if (name == "if") return Check(value, rule).empty() ? Check(value, schema.at("then")) : "";
    const bool isKnown = name == "then" || name == "title" || name == "description" || name.front() == '$';
    return isKnown ? "" : "the schema uses " + name + ", which this reader does not know";
  }

  static bool HasType(const Json& value, const Json& types) {
    return std::any_of(types.begin(), types.end(), [&](const Json& type) {
      return type == value.type_name() || (type == "integer" && value.is_number_integer());
    });
  }

  nlohmann::json m_root;
};

#endif  // VELAGNSS_TESTS_JSON_SCHEMA_H
