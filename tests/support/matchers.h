#pragma once

#include <functional>
#include <gmock/gmock.h>
#include <vector>

namespace tidwen {

// The most common matchers, without their namespace.

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;
using testing::Pair;
using testing::UnorderedElementsAre;

/// A field of each item, or the result of a function of it.
template<class Items, class Of>
auto eachOf(const Items& items, const Of& of) {
    std::vector<std::decay_t<decltype(std::invoke(of, *items.begin()))>> all;
    for (const auto& item : items)
        all.push_back(std::invoke(of, item));
    return all;
}

} // namespace tidwen
