#pragma once
#include <nlohmann/json.hpp>
#include <string>

namespace orvalo::test {

// Checks JSON against the schemas of an API description, as far as ours uses them: a keyword that
// is not known here is a fault, never overlooked. Texts are measured in characters. Any thread.
class JsonSchemas {
 public:
  // What "$ref" leads into; must live as long.
  explicit JsonSchemas(const nlohmann::json& document) : document_(document) {}

  // What of the value does not fit, with its place: "error/code: 999 is none of [101]"; "" for
  // nothing.
  std::string Fault(const nlohmann::json& schema, const nlohmann::json& value) const;

  // What makes the schema itself useless: a keyword that is not known here, an object that does not
  // say which members it has and whether others may stand beside them, a required member that is
  // not described. "" for nothing.
  std::string FaultOfSchema(const nlohmann::json& schema) const;

  // The node, or what it refers to. Throws nlohmann::json::exception when that is nowhere.
  const nlohmann::json& Resolved(const nlohmann::json& node) const;

 private:
  const nlohmann::json& document_;
};

}  // namespace orvalo::test
