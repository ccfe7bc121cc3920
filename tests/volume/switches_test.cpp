#include "base/property_list.h"
#include "support/fixtures.h"
#include "volume/volume_sources.h"

#include <gmock/gmock.h>

namespace tidwen {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(VolumeLaunchd, SwitchesOneJobAndKeepsTheOthers) {
    test::TemporaryVolume volume;
    const auto user = test::alice();
    VolumeLaunchd launchd(volume.files(), user);
    const Path plist("/Library/LaunchDaemons/j.plist");
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.first", plist, true)) << "there was no list yet";
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.job", plist, true));
    EXPECT_TRUE(launchd.setEnabled(true, "com.example.job", plist, true));
    EXPECT_THAT(launchd.disabledOverrides(true),
                ElementsAre(Pair("com.example.first", true), Pair("com.example.job", false)));
    EXPECT_TRUE(launchd.disabledOverrides(false).empty());

    const std::string list = "/private/var/db/com.apple.xpc.launchd/disabled.501.plist";
    for (const char* damaged : {"garbage", "<plist><array/></plist>"}) {
        volume.write(list, damaged);
        EXPECT_FALSE(launchd.setEnabled(false, "com.example.job", plist, false));
        EXPECT_EQ(volume.read(list), damaged) << "a list that cannot be read is not written over";
    }
}

} // namespace
} // namespace tidwen
