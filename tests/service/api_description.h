#pragma once
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "support/json_schema.h"

namespace orvalo::test {

// A reply as it came over the wire; the names of the headers in lower case.
struct WireReply {
  int status = 0;
  std::map<std::string, std::string> headers;
  std::string body;

  nlohmann::json json() const { return nlohmann::json::parse(body, nullptr, false); }
};

// Sends a request to a port of this machine, on a connection of its own.
WireReply Exchange(int port, const std::string& method, const std::string& target,
                   const std::vector<std::pair<std::string, std::string>>& headers,
                   const std::string& body);
WireReply ParseReply(const std::string& bytes);

// docs/openapi.json: its calls, known as "POST /v1/messages", and what it says of their replies.
// Never changes; any thread.
class ApiDescription {
 public:
  struct Call {
    std::string method, path;
    bool of_operations = false;  // of the listener for engines and monitors
    nlohmann::json node;

    bool needs_session() const;
    bool needs_key() const;
    // The request's schema and example; null when there is none, or it is no JSON.
    nlohmann::json request() const;
  };

  // Throws when it cannot be read.
  explicit ApiDescription(const std::string& file);
  ApiDescription(const ApiDescription&) = delete;
  ApiDescription& operator=(const ApiDescription&) = delete;

  const nlohmann::json& document() const { return document_; }
  const JsonSchemas& schemas() const { return schemas_; }
  const std::map<std::string, Call>& calls() const { return calls_; }

  // "" when the reply is one that the description has for this call; else what is not.
  std::string Fault(const Call& call, const WireReply& reply) const;
  // The same for what any request may get that is none of the calls.
  std::string FaultOfOther(const WireReply& reply) const;

  // The error codes that a response may bring; none when it is no error.
  std::vector<int> Codes(const nlohmann::json& response) const;
  // All replies it has: "POST /v1/messages 422 203", without a code for what is no error.
  std::set<std::string> Outcomes() const;

 private:
  std::string FaultAmong(const nlohmann::json& responses, const WireReply& reply) const;
  std::string FaultOfHeaders(const nlohmann::json& response, const WireReply& reply) const;

  const nlohmann::json document_;
  const JsonSchemas schemas_;
  std::map<std::string, Call> calls_;
};

}  // namespace orvalo::test
