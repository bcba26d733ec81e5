#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <regex>
#include <sstream>

#include "service/api_description.h"
#include "service/running_service.h"

namespace orvalo::test {
namespace {

using nlohmann::json;
using testing::ContainerEq;

constexpr char kDescription[] = ORVALO_SOURCE_FOLDER "/docs/openapi.json";
constexpr char kGuide[] = ORVALO_SOURCE_FOLDER "/docs/gateway-protocol.md";
constexpr char kJson[] = "application/json";
constexpr std::size_t kTooMuch = 1'500'000;  // bytes in a body

// Every schema of the document is one that the checks of this file can be trusted with.
TEST(OpenApi, HasSchemasThatSayWhatIsMissingAndWhatIsTooMuch) {
  const ApiDescription description(kDescription);
  const auto& schemas = description.schemas();
  const std::function<void(const json&, const std::string&)> check = [&](const json& node,
                                                                         const std::string& place) {
    if (node.is_object() && node.contains("$ref")) (void)schemas.Resolved(node);
    if (!node.is_structured()) return;
    for (const auto& [name, part] : node.items()) {
      if (name == "schema" || place.ends_with("components/schemas")) {
        EXPECT_EQ(schemas.FaultOfSchema(part), "") << place << "/" << name;
      } else {
        check(part, place + "/" + name);
      }
    }
  };
  check(description.document(), "");
  for (const auto& [name, call] : description.calls()) {
    const auto request = call.request();
    if (request.is_null()) continue;
    EXPECT_EQ(schemas.Fault(request.at("schema"), request.at("example")), "") << name;
  }
}

// The service's own table, the guide's and the description's.
TEST(OpenApi, HasTheErrorCodesOfServiceAndGuide) {
  const ApiDescription description(kDescription);
  std::map<int, int> served, guided, described;
  for (const auto code : service::AllErrorCodes()) {
    served[static_cast<int>(code)] = service::HttpStatusOf(code);
  }
  const auto guide = Slurp(kGuide);
  const std::regex row("\n\\| (\\d+) \\| (\\d+) \\|");
  for (std::sregex_iterator next(guide.begin(), guide.end(), row), end; next != end; ++next) {
    guided[std::stoi((*next)[1])] = std::stoi((*next)[2]);
  }
  const auto& document = description.document();
  const auto add = [&](const json& responses) {
    for (const auto& [status, response] : responses.items()) {
      for (const int code : description.Codes(response)) {
        EXPECT_EQ(described.emplace(code, std::stoi(status)).first->second, std::stoi(status));
      }
    }
  };
  for (const auto& [name, call] : description.calls()) add(call.node.at("responses"));
  auto any = document.at("x-any-request").at("responses");
  for (const char* without_code_of_its_own : {"408", "505"}) any.erase(without_code_of_its_own);
  add(any);
  EXPECT_THAT(served, ContainerEq(guided));
  EXPECT_THAT(served, ContainerEq(described));
  std::set<int> all;
  for (const auto& [code, status] : served) all.insert(code);
  EXPECT_EQ(
      document.at("/components/schemas/Error/properties/error/properties/code/enum"_json_pointer)
          .get<std::set<int>>(),
      all);
}

TEST(OpenApi, HasTheCallsAndExamplesOfTheGuide) {
  const ApiDescription description(kDescription);
  std::istringstream guide(Slurp(kGuide));
  std::set<std::string> guided, described;
  std::string call, request;
  int examples = 0;
  for (std::string line; std::getline(guide, line);) {
    if (line.starts_with("### ")) {
      call = line.substr(4, line.find(' ', line.find('/')) - 4);
      if (const auto id = call.find("/ID"); id != std::string::npos) call.replace(id, 3, "/{id}");
      if (const auto key = call.find("/KEY"); key != std::string::npos) {
        call.replace(key, 4, "/{key}");
      }
      if (line.find('/') != std::string::npos) guided.insert(call);
      request.clear();
    } else if (line.starts_with("    ") && !call.empty()) {
      const auto arrow = line.find("→");
      request += line.substr(0, arrow);
      if (arrow == std::string::npos) continue;
      if (request.find('{') != std::string::npos) {
        const auto schema = description.calls().at(call).request().at("schema");
        EXPECT_EQ(description.schemas().Fault(schema, json::parse(request)), "") << call;
        ++examples;
      }
      call.clear();
    }
  }
  for (const auto& [name, one] : description.calls()) {
    if (one.path.starts_with("/v1/")) described.insert(name);
  }
  EXPECT_THAT(guided, ContainerEq(described));
  EXPECT_EQ(examples, 5);
}

std::string PathWithStars(const ApiDescription::Call& call) {
  return std::regex_replace(call.path, std::regex("\\{[a-z]+\\}"), "*");
}

// What a request has other than the example that the description gives of it.
struct Change {
  std::optional<std::string> body = {}, id = {}, token = {}, key = {};
  std::string type = kJson, query = "", cookie = "";
};

// The description and a service on which its examples come true: account "demo" with the voucher,
// and a message and a batch for the calls that need one.
class OpenApiTest : public testing::Test {
 protected:
  OpenApiTest() {
    running_.options.operations.emplace();
    running_.Restart();
    running_.service().accounts().Add("demo", "demo@example.org", "demo", 10'000'000);
    running_.service().vouchers().Add("1234567890123456", 50'000);
    token_ = Ask("POST /v1/session").json().value("token", "");
    const auto key = ids_["/v1/submissions/"] = NewKey();
    ids_["/v1/messages/"] = Ask("POST /v1/messages", {.key = key}).json().value("id", "");
    ids_["/v1/batches/"] = Ask("POST /v1/batches").json().value("batch", "");
  }

  int port(bool of_operations = false) {
    auto& service = running_.service();
    return of_operations ? service.operations_port() : service.port();
  }

  // Makes the call and holds the reply against the description.
  WireReply Ask(const std::string& name, const Change& change = {}) {
    const auto& call = description_.calls().at(name);
    const auto example = call.request();
    const auto body = change.body.value_or(example.is_null() ? "" : example.at("example").dump());
    auto path = call.path;
    if (const auto brace = path.find('{'); brace != std::string::npos) {
      path.replace(brace, path.find('}') - brace + 1,
                   change.id.value_or(ids_[path.substr(0, brace)]));
    }
    std::vector<std::pair<std::string, std::string>> headers;
    if (!body.empty()) headers.emplace_back("Content-Type", change.type);
    if (!change.cookie.empty()) headers.emplace_back("Cookie", change.cookie);
    if (call.needs_key()) headers.emplace_back("Idempotency-Key", change.key.value_or(NewKey()));
    if (call.needs_session()) {
      headers.emplace_back("Authorization", "Bearer " + change.token.value_or(token_));
    }
    auto reply =
        Exchange(port(call.of_operations), call.method, path + change.query, headers, body);
    EXPECT_EQ(description_.Fault(call, reply), "") << name << "\n"
                                                   << body.substr(0, 200) << "\n"
                                                   << reply.body;
    const auto code = CodeOf(reply);
    seen_.insert(fmt::format("{} {}{}", name, reply.status, code ? fmt::format(" {}", code) : ""));
    return reply;
  }

  static int CodeOf(const WireReply& reply) { return JsonReply{reply.status, reply.json()}.code(); }

  void ExpectCode(int code, const std::string& name, const Change& change) {
    EXPECT_EQ(CodeOf(Ask(name, change)), code) << name;
  }

  void Succeed();
  void BeRefused();
  void BeRefusedEverywhere();
  void VisitThePage();
  void BeEngineAndMonitor();
  void MeetOverload();

  const ApiDescription description_{kDescription};
  RunningService running_;
  std::string token_;
  // Ids that are in use, by what stands before them in a path: a call with another kind of id needs
  // one here.
  std::map<std::string, std::string> ids_;
  std::set<std::string> seen_;  // as ApiDescription::Outcomes has them
};

TEST_F(OpenApiTest, DescribesEachCallAndNoOther) {
  std::set<std::string> served, described;
  const auto add = [&](const service::Router& router, const char* where) {
    for (const auto& route : router.routes()) {
      const bool keyed = route.access == service::Access::kKeyed;
      const bool session = keyed || route.access == service::Access::kSession;
      served.insert(fmt::format("{} {}{}{}{}", route.method, where, route.path,
                                session ? " session" : "", keyed ? " key" : ""));
    }
  };
  add(running_.service().router(), "");
  add(running_.service().operations_router(), "operations:");
  for (const auto& [name, call] : description_.calls()) {
    described.insert(fmt::format(
        "{} {}{}{}{}", call.method, call.of_operations ? "operations:" : "", PathWithStars(call),
        call.needs_session() ? " session" : "", call.needs_key() ? " key" : ""));
  }
  EXPECT_THAT(served, ContainerEq(described));
}

void OpenApiTest::Succeed() {
  for (const auto& [name, call] : description_.calls()) {
    if (!call.path.starts_with("/v1/") || name == "POST /v1/batches/{id}/end") continue;
    const auto key = NewKey();
    const auto reply = Ask(name, {.key = key});
    EXPECT_EQ(reply.status, 200) << name;
    if (!call.needs_key()) continue;
    EXPECT_TRUE(Ask(name, {.key = key}).headers.contains("idempotent-replay")) << name;
  }
  const auto mixed = Ask("POST /v1/batches/{id}/recipients",
                         {.body = R"({"to":["27821110001","27829900","12"]})"});
  EXPECT_EQ(mixed.json().at("results").size(), 3u);
  EXPECT_EQ(Ask("POST /v1/batches/{id}/end").status, 200);
  ExpectCode(207, "POST /v1/batches/{id}/end", {});
  ExpectCode(207, "POST /v1/batches/{id}/recipients", {});
  ExpectCode(607, "POST /v1/vouchers", {});
}

void OpenApiTest::BeRefused() {
  const std::string none(32, '0'), long_text = json{{"text", std::string(161, 'a')}}.dump();
  for (const char* name :
       {"GET /v1/messages/{id}", "POST /v1/batches/{id}/recipients", "POST /v1/batches/{id}/end"}) {
    ExpectCode(205, name, {.id = none});
  }
  ExpectCode(209, "GET /v1/submissions/{key}", {.id = none});
  ExpectCode(101, "GET /v1/submissions/{key}", {.id = none + "0"});
  ExpectCode(101, "GET /v1/messages", {.query = "?limit=0"});
  EXPECT_TRUE(Ask("GET /v1/messages", {.query = "?limit=1"}).json().contains("next"));
  ExpectCode(201, "POST /v1/messages", {.body = R"({"to":"0012","text":""})"});
  ExpectCode(203, "POST /v1/messages", {.body = R"({"to":"123",)" + long_text.substr(1)});
  ExpectCode(204, "POST /v1/messages", {.body = R"({"to":"123","text":"","type":3})"});
  ExpectCode(208, "POST /v1/messages", {.body = R"({"to":"27829900","text":""})"});
  ExpectCode(203, "POST /v1/batches", {.body = long_text});
  ExpectCode(204, "POST /v1/batches", {.body = R"({"text":"","type":3})"});
  const json dear{{"to", "123"}, {"text", std::string(20'000, 'a')}, {"concat", 255}};
  ExpectCode(202, "POST /v1/messages",
             {.body = dear.dump(), .token = running_.Caller("bob").token});
  ExpectCode(606, "POST /v1/vouchers", {.body = R"({"number":""})"});
  ExpectCode(601, "POST /v1/password-recovery", {.body = R"({"user":"demo","email":""})"});
  for (int i = 0; i < 11; ++i) {
    Ask("POST /v1/session", {.body = R"({"client_id":"","user":"eve","password":""})"});
    Ask("POST /v1/password-recovery", {.body = R"({"user":"eve","email":""})"});
  }
  for (int i = 0; i < 21; ++i) Ask("POST /v1/vouchers", {.body = R"({"number":""})"});
}

// What the description promises of whole kinds of calls.
void OpenApiTest::BeRefusedEverywhere() {
  const auto used = NewKey();
  Ask("POST /v1/vouchers", {.body = R"({"number":"none"})", .key = used});
  for (const auto& [name, call] : description_.calls()) {
    if (call.needs_session()) ExpectCode(111, name, {.token = std::string(64, 'a')});
    if (call.needs_key()) {
      ExpectCode(206, name, {.key = used});
      for (const char* key : {"", "0123456789abcdef0123456789abcde"}) {
        ExpectCode(101, name, {.key = key});
      }
    }
    if (call.node.contains("requestBody")) {
      ExpectCode(103, name, {.body = std::string(kTooMuch, ' ')});
    }
    if (call.request().is_null()) continue;
    ExpectCode(104, name, {.type = "text/plain"});
    ExpectCode(101, name, {.body = "{"});
  }
}

void OpenApiTest::VisitThePage() {
  const auto token = Ask("POST /v1/page-token").json().value("token", "");
  const auto handed = Ask("GET /account", {.query = "?session_id=" + token});
  ASSERT_EQ(handed.status, 303);
  const auto set = handed.headers.at("set-cookie");
  const auto cookie = set.substr(0, set.find(';'));
  const auto page = Ask("GET /account", {.cookie = cookie}).body;
  std::smatch secret;
  ASSERT_TRUE(std::regex_search(page, secret, std::regex("name=\"form\" value=\"([^\"]*)\"")));
  const Change form{.body = "form=" + secret.str(1) + "&once=1&number=1234567890123456",
                    .type = "application/x-www-form-urlencoded",
                    .cookie = cookie};
  for (const auto& [name, status] : {std::pair("POST /account/voucher", 303),
                                     {"POST /account/sign-out", 200},
                                     {"POST /account/voucher", 403},
                                     {"POST /account/sign-out", 403},
                                     {"GET /account", 403},
                                     {"GET /account/style.css", 200}}) {
    EXPECT_EQ(Ask(name, form).status, status) << name;
  }
}

void OpenApiTest::BeEngineAndMonitor() {
  const Change good{.id = std::string(32, '0'), .query = "?to=27821110001&type=1"};
  const auto ask = [&](int report) {
    EXPECT_EQ(Ask("GET /reports/{key}", good).status, report);
    EXPECT_EQ(Ask("GET /reports/{key}", {.id = good.id, .query = "?type=64&to=1"}).status, 404);
    for (const char* name : {"GET /metrics", "GET /health", "GET /ready"}) Ask(name);
  };
  ask(503);
  ids_["/v1/batches/"] =
      Ask("POST /v1/batches", {.body = json{{"text", std::string(160, '^')}}.dump()})
          .json()
          .value("batch", "");
  running_.options.kannel.emplace();
  running_.options.kannel->urls = {"http://127.0.0.1:9/sendsms"};
  running_.options.kannel->sender = "Orvalo";
  running_.Restart();
  ask(200);
  ExpectCode(203, "POST /v1/batches/{id}/recipients", {});  // it counts the parts otherwise
  running_.options.kannel.reset();
}

void OpenApiTest::MeetOverload() {
  running_.options.simulation.fail_after = 1;
  running_.Restart();
  EXPECT_EQ(Ask("POST /v1/messages").status, 200);
  for (const char* name :
       {"POST /v1/messages", "POST /v1/batches/{id}/recipients", "GET /v1/health", "GET /ready"}) {
    EXPECT_EQ(Ask(name).status, 503) << name;
  }
  running_.service().database().Write([](service::Connection& connection) {
    connection.database().exec(
        "CREATE TRIGGER broken BEFORE INSERT ON submission BEGIN SELECT RAISE(ABORT,'broken'); "
        "END");
  });
  ExpectCode(500, "POST /v1/batches", {});
  running_.options.rate_limit = 0;
  running_.Restart();
  for (const auto& [name, call] : description_.calls()) {
    if (call.needs_session()) ExpectCode(113, name, {});
  }
}

// Each reply is one that is described, and each that is described comes.
TEST_F(OpenApiTest, DescribesEachReplyAndNoOther) {
  Succeed();
  BeRefusedEverywhere();
  BeRefused();
  VisitThePage();
  BeEngineAndMonitor();
  MeetOverload();
  auto unseen = description_.Outcomes();
  for (const auto& outcome : seen_) unseen.erase(outcome);
  // What no request leads to by itself: a failing disk, and more logins than there is time for.
  std::erase_if(unseen, [](const std::string& outcome) {
    return outcome.ends_with(" 500") || outcome == "POST /v1/session 429 113";
  });
  EXPECT_EQ(unseen, std::set<std::string>());
}

// What is none of the calls.
TEST_F(OpenApiTest, DescribesWhatElseARequestMayGet) {
  running_.options.http.patience.body = std::chrono::milliseconds(100);
  running_.Restart();
  std::set<std::string> statuses, described;
  const auto expect = [&](int status, const WireReply& reply) {
    EXPECT_EQ(reply.status, status);
    EXPECT_EQ(description_.FaultOfOther(reply), "") << reply.body;
    statuses.insert(std::to_string(status));
  };
  std::map<std::string, std::string> methods;
  for (const auto& [name, call] : description_.calls()) {
    auto& allow = methods[call.path];
    allow += (allow.empty() ? "" : ", ") + call.method;
  }
  for (const auto& [name, call] : description_.calls()) {
    for (const std::string method : {"GET", "POST", "PUT", "DELETE", "PATCH"}) {
      if (description_.calls().contains(method + " " + call.path)) continue;
      const auto path = PathWithStars(call);
      const auto reply = Exchange(port(call.of_operations), method, path, {}, "");
      if (call.of_operations) {
        EXPECT_EQ(std::pair(reply.status, reply.body), std::pair(405, std::string()));
      } else {
        expect(405, reply);
      }
      ASSERT_TRUE(reply.headers.contains("allow")) << method << " " << path;
      EXPECT_EQ(reply.headers.at("allow"), methods[call.path]);
    }
  }
  for (const char* path : {"/", "/v1/nothing", "/v1/messages/", "/v1/messages/a/b"}) {
    expect(404, Exchange(port(), "GET", path, {}, ""));
  }
  EXPECT_EQ(Exchange(port(true), "GET", "/nothing", {}, "").status, 404);
  const std::pair<std::string, std::string> session("Authorization", "Bearer " + token_);
  expect(415, Exchange(port(), "GET", "/v1/ping", {session}, "{}"));
  expect(400, Exchange(port(), "GET", "/v1/ping", {session, {"Content-Type", kJson}}, "["));
  expect(413, Exchange(port(), "GET", "/v1/ping", {{"Much", std::string(20'000, 'a')}}, ""));
  expect(505, ParseReply(RawExchange(port(), "GET /v1/ping HTTP/9.9\r\n\r\n")));
  expect(408, ParseReply(RawExchange(
                  port(), "POST /v1/session HTTP/1.1\r\nContent-Length: 999\r\n\r\n", 400)));
  for (const auto& [status, response] :
       description_.document().at("x-any-request").at("responses").items()) {
    described.insert(status);
  }
  EXPECT_THAT(statuses, ContainerEq(described));
}

// Values for a member at the limits of its schema, and such as it has no place for.
struct Edges {
  std::vector<json> within, beyond;
};

Edges EdgesOf(const json& rule) {
  Edges edges;
  const std::string type = rule.at("type");
  edges.beyond.push_back(type == "string" ? json(5) : json("5"));
  if (rule.contains("enum")) edges.beyond.push_back(4);
  if (rule.contains("pattern")) edges.beyond.push_back("x");
  for (const auto& [limit, further] : {std::pair("minimum", -1), std::pair("maximum", 1)}) {
    if (!rule.contains(limit)) continue;
    edges.within.push_back(rule[limit]);
    edges.beyond.push_back(rule[limit].get<int>() + further);
  }
  if (rule.contains("maxLength")) {
    const std::size_t most = rule["maxLength"];
    edges.within.push_back(std::string(most, '1'));
    edges.beyond.push_back(std::string(most + 1, '1'));
  }
  if (type == "array") {
    const std::size_t most = rule.at("maxItems");
    edges.within.push_back(std::vector<std::string>(most, "12"));
    edges.beyond.push_back(std::vector<std::string>(most + 1, "12"));
    edges.beyond.push_back(json::array());
    for (auto& item : EdgesOf(rule.at("items")).beyond) edges.beyond.push_back({item});
  }
  return edges;
}

TEST_F(OpenApiTest, LimitsRequestsAsTheServiceDoes) {
  const auto& schemas = description_.schemas();
  for (const auto& [name, call] : description_.calls()) {
    const auto request = call.request();
    if (request.is_null()) continue;
    const auto& schema = schemas.Resolved(request.at("schema"));
    const auto expect = [&, name = name](const json& body, bool fits) {
      EXPECT_EQ(schemas.Fault(schema, body).empty(), fits) << body;
      const auto status = Ask(name, {.body = body.dump()}).status;
      EXPECT_EQ(status != 400 && status != 413 && status != 422, fits)
          << name << " " << body.dump().substr(0, 200);
    };
    auto more = request.at("example");
    more["unheard_of"] = 1;
    expect(more, true);
    for (const auto& required : schema.at("required")) {
      auto less = request["example"];
      less.erase(required.get<std::string>());
      expect(less, false);
    }
    for (const auto& [member, rule] : schema.at("properties").items()) {
      const auto edges = EdgesOf(rule);
      auto body = request["example"];
      for (const auto& value : edges.within) expect((body[member] = value, body), true);
      for (const auto& value : edges.beyond) expect((body[member] = value, body), false);
    }
  }
}

}  // namespace
}  // namespace orvalo::test
