#include "service/router.h"

namespace orvalo::service {
namespace {

bool PathFits(std::string_view pattern, std::string_view path, std::string& id) {
  const auto star = pattern.find('*');
  if (star == std::string_view::npos) return pattern == path;
  const auto before = pattern.substr(0, star), after = pattern.substr(star + 1);
  if (path.size() <= before.size() + after.size() || !path.starts_with(before) ||
      !path.ends_with(after)) {
    return false;
  }
  const auto middle = path.substr(star, path.size() - before.size() - after.size());
  if (middle.find('/') != std::string_view::npos) return false;
  id = middle;
  return true;
}

}  // namespace

Router::Match Router::Find(std::string_view method, std::string_view path) const {
  Match match;
  for (const auto& route : routes_) {
    if (!PathFits(route.path, path, match.id)) continue;
    if (route.method == method) {
      match.route = &route;
      return match;
    }
    match.other_methods += (match.other_methods.empty() ? "" : ", ") + route.method;
  }
  return match;
}

}  // namespace orvalo::service
