#include "platform/automation.h"

#include <gtest/gtest.h>

namespace orvalo::platform {
namespace {

class NothingDispatch : public Dispatch {
 public:
  HResult GetIdOfName(std::u16string_view, LocaleId, MemberId*) override { return kUnknownName; }
  HResult Invoke(MemberId, LocaleId, InvokeKind, std::span<const Variant>, Variant*) override {
    return kMemberNotFound;
  }
};

TEST(ClassRegistryTest, CreatesByNameAndSaysWhyNot) {
  ClassRegistry registry;
  int made = 0;
  registry.Register("Vendor.Class", [&made] {
    ++made;
    return std::make_unique<NothingDispatch>();
  });
  registry.Register("Vendor.Empty", [] { return nullptr; });
  registry.Register("Vendor.NoFactory", nullptr);

  const struct {
    const char* name;
    HResult why;
  } cases[] = {
      {"Vendor.Class", kOk},           {"vENDOR.cLASS", kOk},
      {"Vendor.Empty", kFail},         {"Vendor.NoFactory", kFail},
      {"", kClassNotRegistered},       {"Vendor.Class ", kClassNotRegistered},
      {"Vendor", kClassNotRegistered},
  };
  for (const auto& [name, why] : cases) {
    HResult result = 12345;
    EXPECT_EQ(registry.Create(name, &result) != nullptr, Succeeded(why)) << name;
    EXPECT_EQ(result, why) << name;
  }
  EXPECT_EQ(made, 2);
  registry.Register("VENDOR.empty", [] { return std::make_unique<NothingDispatch>(); });
  EXPECT_NE(registry.Create("Vendor.Empty"), nullptr) << "the new factory makes it";
}

}  // namespace
}  // namespace orvalo::platform
