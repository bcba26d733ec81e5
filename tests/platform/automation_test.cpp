#include "platform/automation.h"

#include <gtest/gtest.h>

#include <stdexcept>

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
  EXPECT_NE(registry.Create("VENDOR.CLASS"), nullptr) << "the reason may be left out";
}

TEST(ClassRegistryTest, ANewFactoryTakesThePlaceOfTheOldOne) {
  ClassRegistry registry;
  registry.Register("A.B", []() -> std::unique_ptr<Dispatch> { throw std::runtime_error("old"); });
  EXPECT_THROW(registry.Create("A.B"), std::runtime_error);
  registry.Register("a.b", [] { return std::make_unique<NothingDispatch>(); });
  EXPECT_NE(registry.Create("A.B"), nullptr);
}

}  // namespace
}  // namespace orvalo::platform
