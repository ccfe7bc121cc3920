#include "scan/search_location.h"

#include "support/fixtures.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

TEST(SearchLocation, SaysWhatEachFolderNeeds) {
    const auto locations = searchLocations(test::alice());
    ASSERT_EQ(locations.size(), 35u + 23u);
    for (std::size_t i = 0; i < locations.size(); ++i) {
        const auto& [url, category, style, isSystemDomain, requiresRoot, requiresFullDiskAccess] =
            locations[i];
        EXPECT_EQ(requiresFullDiskAccess, i < 33) << url.string();
        EXPECT_EQ(requiresRoot, i >= 35 && url != Path("/Users/Shared")) << url.string();
        EXPECT_EQ(isSystemDomain, url == Path("/Library/LaunchDaemons")) << url.string();
    }
}

TEST(SearchLocation, UnusableTemporaryFoldersAreLeftOut) {
    auto user = test::alice();
    user.cacheFolder = Path("relative/C");
    user.temporaryFolder = Path("/private/var/folders/\xff/T");
    EXPECT_EQ(userLocations(user).size(), 33u);
}

} // namespace
} // namespace tidwen
