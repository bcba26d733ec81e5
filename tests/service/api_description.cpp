#include "service/api_description.h"

#include <algorithm>
#include <sstream>

#include "service/running_service.h"
#include "support/temporary_folder.h"

namespace orvalo::test {
namespace {

using nlohmann::json;

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

}  // namespace

WireReply ParseReply(const std::string& bytes) {
  WireReply reply;
  const auto end = bytes.find("\r\n\r\n");
  if (end == std::string::npos) return reply;
  std::istringstream head(bytes.substr(0, end));
  std::string line;
  std::getline(head, line);
  reply.status = std::atoi(line.substr(line.find(' ') + 1).c_str());
  while (std::getline(head, line)) {
    if (line.ends_with('\r')) line.pop_back();
    const auto colon = line.find(": ");
    reply.headers[Lower(line.substr(0, colon))] = line.substr(colon + 2);
  }
  reply.body = bytes.substr(end + 4);
  return reply;
}

WireReply Exchange(int port, const std::string& method, const std::string& target,
                   const std::vector<std::pair<std::string, std::string>>& headers,
                   const std::string& body) {
  auto request = method + " " + target + " HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n";
  for (const auto& [name, value] : headers) request.append(name + ": " + value + "\r\n");
  if (!body.empty()) request += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  return ParseReply(RawExchange(port, request + "\r\n" + body));
}

bool ApiDescription::Call::needs_session() const {
  return node["security"] == json::array({{{"session", json::array()}}});
}

bool ApiDescription::Call::needs_key() const {
  const auto parameters = node.value("parameters", json::array());
  return std::any_of(parameters.begin(), parameters.end(), [](const json& parameter) {
    return parameter.value("$ref", "").ends_with("/IdempotencyKey");
  });
}

json ApiDescription::Call::request() const {
  return node.value("/requestBody/content/application~1json"_json_pointer, json());
}

ApiDescription::ApiDescription(const std::string& file)
    : document_(json::parse(Slurp(file))), schemas_(document_) {
  for (const auto& [path, item] : document_.at("paths").items()) {
    for (const auto& [method, node] : item.items()) {
      if (method == "servers") continue;
      Call call{method, path, item.contains("servers"), node};
      for (auto& letter : call.method) letter = static_cast<char>(letter - 32);
      if (!node.contains("security")) call.node["security"] = document_.at("security");
      calls_.emplace(call.method + " " + path, std::move(call));
    }
  }
}

std::string ApiDescription::Fault(const Call& call, const WireReply& reply) const {
  return FaultAmong(call.node.at("responses"), reply);
}

std::string ApiDescription::FaultOfOther(const WireReply& reply) const {
  return FaultAmong(document_.at("x-any-request").at("responses"), reply);
}

std::string ApiDescription::FaultAmong(const json& responses, const WireReply& reply) const {
  const auto place = responses.find(std::to_string(reply.status));
  if (place == responses.end()) return "status " + std::to_string(reply.status);
  const auto& response = schemas_.Resolved(*place);
  if (auto fault = FaultOfHeaders(response, reply); !fault.empty()) return fault;
  if (!response.contains("content")) return reply.body.empty() ? "" : "a body";
  const auto type = reply.headers.at("content-type");
  const auto content = response["content"].find(type);
  if (content == response["content"].end()) return "Content-Type: " + type;
  const auto body = type == "application/json" ? reply.json() : json(reply.body);
  return schemas_.Fault(content->at("schema"), body);
}

std::string ApiDescription::FaultOfHeaders(const json& response, const WireReply& reply) const {
  auto others = reply.headers;
  for (const char* usual : {"content-type", "content-length", "connection"}) others.erase(usual);
  const auto described = response.value("headers", json::object());
  for (const auto& [name, reference] : described.items()) {
    const auto& header = schemas_.Resolved(reference);
    const auto place = others.find(Lower(name));
    if (place == others.end()) {
      if (header.at("required")) return "no header " + name;
      continue;
    }
    const auto& schema = header.at("schema");
    const auto value = schema.at("type") == "integer" ? json::parse(place->second, nullptr, false)
                                                      : json(place->second);
    if (auto fault = schemas_.Fault(schema, value); !fault.empty()) return name + fault;
    others.erase(place);
  }
  return others.empty() ? "" : "the header " + others.begin()->first;
}

std::vector<int> ApiDescription::Codes(const json& response) const {
  static const json::json_pointer codes(
      "/content/application~1json/schema/allOf/1/properties/error/properties/code/enum");
  const auto& resolved = schemas_.Resolved(response);
  return resolved.contains(codes) ? resolved[codes].get<std::vector<int>>() : std::vector<int>();
}

std::set<std::string> ApiDescription::Outcomes() const {
  std::set<std::string> outcomes;
  for (const auto& [name, call] : calls_) {
    for (const auto& [status, response] : call.node["responses"].items()) {
      const auto codes = Codes(response);
      if (codes.empty()) outcomes.insert(name + " " + status);
      for (const int code : codes) {
        outcomes.insert(name + " " + status + " " + std::to_string(code));
      }
    }
  }
  return outcomes;
}

}  // namespace orvalo::test
