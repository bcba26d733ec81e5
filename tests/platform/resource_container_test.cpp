#include "platform/resource_container.h"

#include <gtest/gtest.h>
TEST(ResourceContainer, Smoke) {
  const auto& c = orvalo::platform::ResourceContainer::BuiltIn();
  ASSERT_TRUE(c.Read("strings.json"));
  EXPECT_FALSE(c.Read(""));
  EXPECT_FALSE(c.Read("../language/x"));
}
