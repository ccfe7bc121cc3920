#include "scan/protected_apps.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

/// Holds one value, whatever the key.
class OneDefault : public Defaults {
  public:
    std::optional<PropertyListValue> value(const std::string& key) const override {
        return key == "tidwen.protectedBundleIDs" ? stored : std::nullopt;
    }
    bool setValue(const std::string&, const std::optional<PropertyListValue>& value) override {
        if (!refuses) stored = value;
        return !refuses;
    }
    std::optional<PropertyListValue> stored;
    bool refuses = false;
};

TEST(ProtectedApps, TogglesAndStoresSorted) {
    OneDefault defaults;
    ProtectedApps apps(defaults);
    for (const char* identifier : {"b", "a", "x", "C", "x"})
        apps.toggle(identifier);
    EXPECT_EQ(defaults.stored, (PropertyListArray{"C", "a", "b"}));
    defaults.refuses = true;
    EXPECT_FALSE(apps.toggle("b"));
    EXPECT_TRUE(apps.contains("b"));
    EXPECT_EQ(ProtectedApps(defaults).bundleIDs(), apps.bundleIDs());
    defaults.stored = PropertyListArray{"a", 1};
    EXPECT_TRUE(ProtectedApps(defaults).bundleIDs().empty());
}

TEST(ProtectedApps, PartitionComparesExactlyAndKeepsTheOrder) {
    OneDefault defaults;
    defaults.stored = PropertyListArray{"a", "c"};
    const AppTarget a{.bundleID = "a"}, upper{.bundleID = "A"}, b{.bundleID = "b"}, c{.bundleID = "c"};
    const auto parts = ProtectedApps(defaults).partition({c, upper, a, b});
    EXPECT_EQ(parts.protectedTargets, (std::vector{c, a}));
    EXPECT_EQ(parts.allowed, (std::vector{upper, b}));
}

} // namespace
} // namespace tidwen
