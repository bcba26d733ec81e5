#include "service/web_browser.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <chrono>
#include <regex>
#include <thread>

#include "support/temporary_folder.h"

namespace orvalo::test {

namespace {
constexpr int kPatience = 15'000;  // milliseconds, for an element of a page on its way
}  // namespace

WebBrowser::WebBrowser(const std::string& folder, int width, int height) {
  const auto out = folder + "/driver";
  driver_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{"/usr/bin/chromedriver", "--port=0"}, out, folder + "/driver-err");
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  std::smatch port;
  for (std::string said; url_.empty() && std::chrono::steady_clock::now() < give_up;) {
    said = Slurp(out);
    if (std::regex_search(said, port, std::regex("successfully on port (\\d+)"))) {
      url_ = "http://127.0.0.1:" + port.str(1);
    } else {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  const auto answer =
      Ask("POST", "/session",
          {{"capabilities",
            {{"alwaysMatch",
              {{"goog:chromeOptions",
                {{"args",
                  {"--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                   fmt::format("--window-size={},{}", width, height)}}}}}}}}});
  if (answer.is_object()) session_ = "/session/" + answer.value("sessionId", "");
  if (Runs()) Ask("POST", session_ + "/timeouts", {{"implicit", kPatience}});
}

WebBrowser::~WebBrowser() {
  if (Runs()) Ask("DELETE", session_);
}

void WebBrowser::Open(const std::string& address) {
  Ask("POST", session_ + "/url", {{"url", address}});
}

std::string WebBrowser::Address() { return Ask("GET", session_ + "/url").get<std::string>(); }

std::string WebBrowser::Text(const std::string& element) {
  return Ask("GET", PathOf(element) + "/text").get<std::string>();
}

void WebBrowser::Type(const std::string& element, const std::string& text) {
  Ask("POST", PathOf(element) + "/value", {{"text", text}});
}

void WebBrowser::Click(const std::string& element) {
  Ask("POST", PathOf(element) + "/click", nlohmann::json::object());
}

nlohmann::json WebBrowser::Cookies() { return Ask("GET", session_ + "/cookie"); }

nlohmann::json WebBrowser::Evaluate(const std::string& expression) {
  return Ask("POST", session_ + "/execute/sync",
             {{"script", "return " + expression}, {"args", nlohmann::json::array()}});
}

nlohmann::json WebBrowser::Ask(const std::string& method, const std::string& path,
                               const nlohmann::json& body) {
  platform::HttpRequest request;
  request.method = method;
  request.url = url_ + path;
  request.timeout_ms = 60'000;
  if (!body.is_null()) {
    request.body = body.dump();
    request.headers.emplace_back("Content-Type", "application/json");
  }
  const auto reply = client_.Perform(request);
  const auto answer = nlohmann::json::parse(reply.body, nullptr, false);
  EXPECT_EQ(reply.status, 200) << method << ' ' << path << ": " << reply.error << reply.body;
  return answer.is_object() ? answer.value("value", nlohmann::json()) : nlohmann::json();
}

std::string WebBrowser::PathOf(const std::string& element) {
  const auto found =
      Ask("POST", session_ + "/element", {{"using", "css selector"}, {"value", element}});
  const bool one = found.is_object() && !found.empty() && found.front().is_string();
  return session_ + "/element/" + (one ? found.front().get<std::string>() : "none");
}

}  // namespace orvalo::test
