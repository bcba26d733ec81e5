#include "platform/automation.h"

#include <utility>

namespace orvalo::platform {
namespace {

std::string LowerAsciiClassName(std::string name) {
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

}  // namespace

void ClassRegistry::Register(const std::string& class_name, Factory factory) {
  factories_[LowerAsciiClassName(class_name)] = std::move(factory);
}

std::unique_ptr<Dispatch> ClassRegistry::Create(const std::string& class_name, HResult* why) const {
  std::unique_ptr<Dispatch> made;
  HResult result = kClassNotRegistered;
  if (const auto place = factories_.find(LowerAsciiClassName(class_name));
      place != factories_.end()) {
    if (place->second) made = place->second();
    result = made ? kOk : kFail;
  }
  if (why != nullptr) *why = result;
  return made;
}

}  // namespace orvalo::platform
