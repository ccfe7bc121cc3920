#pragma once

#include "base/property_list.h"
#include "platform/defaults.h"
#include "support/matchers.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <string>

namespace tidwen::test {

/// What every store of settings keeps. `open` opens one that is empty at first, as another process would.
inline void expectToKeepEveryValue(const std::function<std::unique_ptr<Defaults>()>& open) {
    const PropertyListDictionary values{
        {"text", "Größe <&> \U0001F5D1"},
        {"control characters", std::string("a\x01\x1b\0z", 5)},
        {"switch", true},
        {"number", -7},
        {"list", PropertyListArray{"com.example.a", PropertyListDictionary{{"tag", PropertyListArray{}}}}},
    };
    for (const auto& [key, value] : values)
        EXPECT_TRUE(open()->setValue(key, value)) << key;
    for (const auto& [key, value] : values)
        EXPECT_THAT(open()->value(key), testing::Optional(value)) << key;
    EXPECT_TRUE(open()->setValue("text", std::nullopt));
    EXPECT_EQ(open()->value("text"), std::nullopt);
    EXPECT_THAT(open()->value("switch"), testing::Optional(PropertyListValue(true)));
    EXPECT_TRUE(open()->setValue("switch", std::nullopt));

    const auto one = open(), other = open();
    EXPECT_TRUE(one->setValue("a", 1));
    EXPECT_TRUE(other->setValue("b", 2));
    EXPECT_THAT(one->value("b"), testing::Optional(PropertyListValue(2)));
    EXPECT_TRUE(one->setValue("b", 3));
    EXPECT_THAT(other->value("b"), testing::Optional(PropertyListValue(3)));
    EXPECT_THAT(open()->value("a"), testing::Optional(PropertyListValue(1)));
}

} // namespace tidwen::test
