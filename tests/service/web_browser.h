#pragma once
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "platform/http.h"
#include "support/child_process.h"

namespace orvalo::test {

// The real Chromium without a window, driven through its WebDriver. Elements are named by their CSS
// selector; one that is not there is a test failure. Closed at the end of the scope.
class WebBrowser {
 public:
  // `folder` takes the driver's output.
  WebBrowser(const std::string& folder, int width, int height);
  ~WebBrowser();
  WebBrowser(const WebBrowser&) = delete;
  WebBrowser& operator=(const WebBrowser&) = delete;

  bool Runs() const { return !session_.empty(); }

  void Open(const std::string& address);
  std::string Address();
  std::string Text(const std::string& element);  // as it is shown
  void Type(const std::string& element, const std::string& text);
  void Click(const std::string& element);
  nlohmann::json Cookies();
  nlohmann::json Evaluate(const std::string& expression);  // in the page

 private:
  nlohmann::json Ask(const std::string& method, const std::string& path,
                     const nlohmann::json& body = nullptr);
  std::string PathOf(const std::string& element);

  std::unique_ptr<ChildProcess> driver_;
  platform::HttpClient client_;
  std::string url_, session_;
};

}  // namespace orvalo::test
