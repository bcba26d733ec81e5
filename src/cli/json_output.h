#pragma once
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "store/records.h"

namespace orvalo {
class Program;
}

namespace orvalo::cli {

struct Context;

// Results as JSON: arrays of objects whose members are the names of the columns, in their order.
// Text that is not UTF-8 comes with replacement characters.
using Json = nlohmann::ordered_json;

// Every column, and the names of status and type.
Json MessageJson(const Program& program, const MessageRow& row);
Json ContactJson(const ContactRow& contact, const std::vector<std::string>& groups);
Json GroupJson(const GroupRow& group, std::int32_t members);

// An array that is printed while it is made. It must be ended.
class JsonArray {
 public:
  explicit JsonArray(std::ostream& out) : out_(out) {}
  void Add(const Json& value);
  void End();

 private:
  std::ostream& out_;
  bool empty_ = true;
};

void PrintJson(std::ostream& out, const Json& value);

// What a command did away with: objects of one member. Only as JSON; in words it goes without
// saying.
void PrintIds(const Context& context, const char* name, const std::vector<std::int32_t>& ids);

}  // namespace orvalo::cli
