#pragma once

#include <gmock/gmock.h>

/// The matchers that most tests use, by their own names.
namespace tidwen {

using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;
using testing::Pair;
using testing::UnorderedElementsAre;

} // namespace tidwen
