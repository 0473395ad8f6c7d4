// The part of JSON Schema (draft 2020-12) that docs/velagnss.schema.json uses.
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

  static bool HasType(const Json& value, const std::string& type) {
    if (type == "integer") return value.is_number_integer();
    if (type == "number") return value.is_number();
    return type == value.type_name();
  }

  static std::string CheckType(const Json& value, const Json& types) {
    if (types.is_string()) return HasType(value, types) ? "" : value.dump() + " is no " + types.dump();
    const bool fits = std::any_of(types.begin(), types.end(), [&](const Json& type) { return HasType(value, type); });
    return fits ? "" : value.dump() + " is none of " + types.dump();
  }

  std::string Check(const Json& value, const Json& schema) const {
    std::string error;
    for (auto rule = schema.begin(); rule != schema.end() && error.empty(); ++rule)
      error = CheckRule(value, schema, rule.key(), rule.value());
    return error;
  }

  std::string CheckRule(const Json& value, const Json& schema, const std::string& name, const Json& rule) const {
    const auto failed = [&](bool isWrong) { return isWrong ? value.dump() + " against " + name + rule.dump() : ""; };
    if (name == "$ref") return Check(value, m_root.at(Json::json_pointer(rule.get<std::string>().substr(1))));
    if (name == "type") return CheckType(value, rule);
    if (name == "const") return failed(value != rule);
    if (name == "enum") return failed(std::find(rule.begin(), rule.end(), value) == rule.end());
    if (name == "minimum") return failed(value.is_number() && value < rule);
    if (name == "maximum") return failed(value.is_number() && value > rule);
    if (name == "minItems") return failed(value.size() < rule);
    if (name == "maxItems") return failed(value.size() > rule);
    if (name == "pattern")
      return failed(value.is_string() && !std::regex_search(value.get<std::string>(), Regex(rule)));
    if (name == "items") return CheckAll(value, rule);
    if (name == "properties") return CheckProperties(value, rule);
    if (name == "required") return CheckRequired(value, rule);
    if (name == "additionalProperties") return CheckNoOthers(value, schema.at("properties"));
    if (name == "dependentRequired") return CheckDependent(value, rule);
    if (name == "allOf") return CheckAllOf(value, rule);
    if (name == "anyOf" || name == "oneOf") return CheckAnyOf(value, rule, name == "oneOf");
    if (name == "if") return Check(value, rule).empty() ? Check(value, schema.at("then")) : "";
    const bool isKnown = name == "then" || name == "title" || name == "description" || name.front() == '$';
    return isKnown ? "" : "the schema uses " + name + ", which this reader does not know";
  }

  static std::regex Regex(const Json& rule) { return std::regex(rule.get<std::string>(), std::regex::ECMAScript); }

  std::string CheckAll(const Json& values, const Json& schema) const {
    std::string error;
    for (const Json& value : values)
      if (error.empty()) error = Check(value, schema);
    return error;
  }
  std::string CheckProperties(const Json& value, const Json& properties) const {
    std::string error;
    for (auto member = properties.begin(); member != properties.end() && error.empty(); ++member)
      if (value.contains(member.key())) error = Check(value.at(member.key()), member.value());
    return error;
  }
  static std::string CheckRequired(const Json& value, const Json& names) {
    for (const Json& name : names)
      if (!value.contains(name.get<std::string>())) return name.dump() + " is missing";
    return "";
  }
  static std::string CheckNoOthers(const Json& value, const Json& properties) {
    for (auto member = value.begin(); member != value.end(); ++member)
      if (!properties.contains(member.key())) return member.key() + " is not in the schema";
    return "";
  }
  static std::string CheckDependent(const Json& value, const Json& rule) {
    for (auto member = rule.begin(); member != rule.end(); ++member)
      if (value.contains(member.key())) return CheckRequired(value, member.value());
    return "";
  }
  std::string CheckAllOf(const Json& value, const Json& schemas) const {
    std::string error;
    for (const Json& schema : schemas)
      if (error.empty()) error = Check(value, schema);
    return error;
  }
  std::string CheckAnyOf(const Json& value, const Json& schemas, bool exactlyOne) const {
    std::string errors;
    int fitting = 0;
    for (const Json& schema : schemas) {
      const std::string error = Check(value, schema);
      errors += error + "; ";
      if (error.empty()) ++fitting;
    }
    return fitting == 1 || (fitting > 1 && !exactlyOne) ? "" : std::to_string(fitting) + " forms fit: " + errors;
  }

  nlohmann::json m_root;
};

#endif  // VELAGNSS_TESTS_JSON_SCHEMA_H
