#pragma once
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "service/http_message.h"

namespace orvalo::service {

// One call of the protocol as its handler gets it: checked as far as its access asks.
struct Call {
  const ServedRequest& request;
  nlohmann::json body;       // an object; an empty one when the request had no body
  std::int64_t account = 0;  // 0 for open calls
  std::string id;            // what stands for "*" in the route's path
  std::string key;           // the idempotency key, 16 bytes; empty unless the access asks for it
};

enum class Access {
  kOpen,     // anybody
  kPage,     // anybody, with a browser: the body is what a form sends, not JSON
  kSession,  // a session is needed
  kKeyed,    // and an idempotency key
};

struct Route {
  std::string method;
  std::string path;  // one "*" stands for an id: anything without a slash
  Access access;
  std::function<ServedReply(const Call&)> handler;
  bool takes_long = false;  // it waits for something scarce
};

// Finds the handler for a method and a path. Filled before it serves; then any thread.
class Router {
 public:
  struct Match {
    const Route* route = nullptr;  // null: none
    std::string id;
    std::string other_methods;  // that the path is served with, for the header "Allow"
  };

  void Add(Route route) { routes_.push_back(std::move(route)); }
  Match Find(std::string_view method, std::string_view path) const;
  const std::vector<Route>& routes() const { return routes_; }

 private:
  std::vector<Route> routes_;
};

}  // namespace orvalo::service
