#include "app/style/palette.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

TEST(Colors, HaveEnoughContrastWhereverTheyMeet) {
    for (const auto appearance : {Appearance::light, Appearance::dark})
        for (const auto& pair : usedColorPairs) {
            const Colors colors(appearance);
            EXPECT_GE(contrast(colors[pair.front], colors[pair.ground]), pair.contrast)
                << static_cast<int>(appearance) << ": " << static_cast<int>(pair.front) << " on "
                << static_cast<int>(pair.ground);
        }
}

} // namespace
} // namespace tidwen
