#pragma once
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct mg_connection;
struct mg_context;

namespace orvalo::test {

struct RecordedRequest {
  std::string method, path, body;
  std::map<std::string, std::string> headers;  // names in lower case
  int remote_port = 0;                         // tells the client's connections apart
  std::string query = "";                      // without the "?"

  std::string header(const std::string& name) const {
    const auto place = headers.find(name);
    return place == headers.end() ? "" : place->second;
  }
};

struct ScriptedReply {
  int status = 200;
  std::string body;
  std::string content_type = "application/json";
  std::string raw = "";  // sent byte for byte in place of a reply, then cut off
  bool cut = false;      // the work is done, but the connection ends without a reply
  std::function<void()> wait = nullptr;  // called before the reply goes out
};

// An HTTP server on a loopback port of its own that answers as a function says and keeps the
// requests. The function is called for one request at a time; replies overlap.
class ScriptedHttpServer {
 public:
  using Script = std::function<ScriptedReply(const RecordedRequest&)>;

  explicit ScriptedHttpServer(Script script);
  ~ScriptedHttpServer();
  ScriptedHttpServer(const ScriptedHttpServer&) = delete;
  ScriptedHttpServer& operator=(const ScriptedHttpServer&) = delete;

  int port() const { return port_; }
  std::string address() const { return "http://127.0.0.1:" + std::to_string(port_); }
  std::vector<RecordedRequest> requests() const;
  void SetScript(Script script);

 private:
  static int Handle(mg_connection* connection, void* server);
  ScriptedReply Record(RecordedRequest request);

  mutable std::mutex mutex_;
  Script script_;
  std::vector<RecordedRequest> requests_;
  mg_context* context_ = nullptr;
  int port_ = 0;
};

}  // namespace orvalo::test
