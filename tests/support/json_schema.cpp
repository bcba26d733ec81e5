#include "support/json_schema.h"

#include <algorithm>
#include <functional>
#include <map>
#include <regex>

#include "platform/code_page.h"

namespace orvalo::test {
namespace {

using nlohmann::json;

// What a keyword asks of a value. `schema` is the whole that the keyword's `rule` stands in.
struct Question {
  const JsonSchemas& schemas;
  const json& schema;
  const json& rule;
  const json& value;
};

std::string Unless(bool fits, const Question& asked, const char* what) {
  return fits ? "" : ": " + asked.value.dump().substr(0, 200) + what + asked.rule.dump();
}

std::string Below(const std::string& place, const std::string& fault) {
  if (fault.empty()) return "";
  return place + (fault.starts_with(':') ? "" : "/") + fault;
}

bool IsOfType(const json& value, const std::string& type) {
  return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
         (type == "string" && value.is_string()) || (type == "boolean" && value.is_boolean()) ||
         (type == "integer" && value.is_number_integer());
}

std::string CheckRequired(const Question& asked) {
  for (const auto& name : asked.rule) {
    if (asked.value.is_object() && !asked.value.contains(name)) return ": no " + name.dump();
  }
  return "";
}

std::string CheckProperties(const Question& asked) {
  for (const auto& [name, schema] : asked.rule.items()) {
    if (!asked.value.is_object() || !asked.value.contains(name)) continue;
    auto fault = Below(name, asked.schemas.Fault(schema, asked.value[name]));
    if (!fault.empty()) return fault;
  }
  return "";
}

std::string CheckAdditional(const Question& asked) {
  if (asked.rule.get<bool>() || !asked.value.is_object()) return "";
  for (const auto& [name, member] : asked.value.items()) {
    if (!asked.schema.at("properties").contains(name)) return ": \"" + name + "\" is not described";
  }
  return "";
}

std::string CheckItems(const Question& asked) {
  for (std::size_t i = 0; asked.value.is_array() && i < asked.value.size(); ++i) {
    auto fault = Below(std::to_string(i), asked.schemas.Fault(asked.rule, asked.value[i]));
    if (!fault.empty()) return fault;
  }
  return "";
}

std::string CheckAllOf(const Question& asked) {
  for (const auto& schema : asked.rule) {
    auto fault = asked.schemas.Fault(schema, asked.value);
    if (!fault.empty()) return fault;
  }
  return "";
}

std::string CheckOneOf(const Question& asked) {
  const auto fitting = std::count_if(asked.rule.begin(), asked.rule.end(), [&](const json& schema) {
    return asked.schemas.Fault(schema, asked.value).empty();
  });
  return Unless(fitting == 1, asked, " does not fit one of ");
}

// The same for a limit on a number, on a text's length and on an array's.
template <bool kMost>
std::string CheckLimit(const Question& asked) {
  const auto& value = asked.value;
  const auto size =
      value.is_string()
          ? static_cast<std::int64_t>(platform::CountCharacters(value.get<std::string>()))
      : value.is_array()          ? static_cast<std::int64_t>(value.size())
      : value.is_number_integer() ? value.get<std::int64_t>()
                                  : asked.rule.get<std::int64_t>();
  const auto limit = asked.rule.get<std::int64_t>();
  return Unless(kMost ? size <= limit : size >= limit, asked, kMost ? " > " : " < ");
}

std::string CheckPattern(const Question& asked) {
  return Unless(
      !asked.value.is_string() || std::regex_search(asked.value.get<std::string>(),
                                                    std::regex(asked.rule.get<std::string>())),
      asked, " is not like ");
}

std::string Accept(const Question&) { return ""; }

using Check = std::function<std::string(const Question&)>;

const std::map<std::string, Check>& Keywords() {
  static const std::map<std::string, Check> keywords{
      {"description", Accept},
      {"$ref",
       [](const Question& asked) {
         return asked.schemas.Fault(asked.schemas.Resolved(asked.schema), asked.value);
       }},
      {"type",
       [](const Question& asked) {
         return Unless(IsOfType(asked.value, asked.rule), asked, " is no ");
       }},
      {"enum",
       [](const Question& asked) {
         const auto& rule = asked.rule;
         return Unless(std::find(rule.begin(), rule.end(), asked.value) != rule.end(), asked,
                       " is none of ");
       }},
      {"required", CheckRequired},
      {"properties", CheckProperties},
      {"additionalProperties", CheckAdditional},
      {"items", CheckItems},
      {"allOf", CheckAllOf},
      {"oneOf", CheckOneOf},
      {"minimum", CheckLimit<false>},
      {"minLength", CheckLimit<false>},
      {"minItems", CheckLimit<false>},
      {"maximum", CheckLimit<true>},
      {"maxLength", CheckLimit<true>},
      {"maxItems", CheckLimit<true>},
      {"pattern", CheckPattern}};
  return keywords;
}

std::string FaultOfObject(const json& schema) {
  if (!schema.contains("properties")) return ": an object without \"properties\"";
  if (!schema.contains("additionalProperties") || !schema["additionalProperties"].is_boolean()) {
    return ": an object that does not say whether it has other members";
  }
  for (const auto& name : schema.value("required", json::array())) {
    if (!schema["properties"].contains(name)) return ": required, but not there: " + name.dump();
  }
  return "";
}

}  // namespace

const json& JsonSchemas::Resolved(const json& node) const {
  if (!node.contains("$ref")) return node;
  return document_.at(json::json_pointer(node["$ref"].get<std::string>().substr(1)));
}

std::string JsonSchemas::Fault(const json& schema, const json& value) const {
  for (const auto& [keyword, rule] : schema.items()) {
    const auto check = Keywords().find(keyword);
    if (check == Keywords().end()) return ": the keyword \"" + keyword + "\" is not known";
    auto fault = check->second({*this, schema, rule, value});
    if (!fault.empty()) return fault;
  }
  return "";
}

std::string JsonSchemas::FaultOfSchema(const json& schema) const {
  if (schema.value("type", "") == "object") {
    if (auto fault = FaultOfObject(schema); !fault.empty()) return fault;
  }
  for (const auto& [keyword, rule] : schema.items()) {
    if (!Keywords().contains(keyword)) return ": the keyword \"" + keyword + "\" is not known";
    if (keyword == "$ref") Resolved(schema);
    if (keyword == "items") {
      if (auto fault = FaultOfSchema(rule); !fault.empty()) return Below(keyword, fault);
    }
    if (keyword != "properties" && keyword != "allOf" && keyword != "oneOf") continue;
    for (const auto& [name, part] : rule.items()) {
      if (auto fault = FaultOfSchema(part); !fault.empty()) return Below(name, fault);
    }
  }
  return "";
}

}  // namespace orvalo::test
