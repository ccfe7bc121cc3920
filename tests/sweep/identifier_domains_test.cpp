#include "sweep/identifier_domains.h"

#include <gtest/gtest.h>

namespace tidwen {
namespace {

TEST(IdentifierDomains, TellWhoMadeAnApplication) {
    struct Case {
        const char* identifier;
        const char* maker;
    };
    const Case cases[] = {
        {"com.marlinworks.notes", "com.marlinworks"},
        {"com.marlinworks.notes.helper", "com.marlinworks"},
        {"com.marlinworks", "com.marlinworks"},
        {"uk.co.tidepool.app", "uk.co.tidepool"},
        {"io.github.zander.kip", "io.github.zander"},
        {"com.github.zander", "com.github.zander"},
        {"com.github.zander.kip", "com.github.zander"},
        {"com.githubber.kip", "com.githubber"},
        {"com.electron.kip", "com.electron.kip"},
        {"com.github", ""},
        {"com", ""},
        {"zander.kip", "zander.kip"},
        {"", ""},
        {"..", ""},
    };
    for (const auto& each : cases)
        EXPECT_EQ(makerOf(each.identifier), each.maker) << each.identifier;
}

TEST(IdentifierDomains, KnowTheRegisteredTopLevelDomains) {
    for (const char* known : {"com", "xyz", "cz", "company", "rocks"})
        EXPECT_TRUE(isTopLevelDomain(known)) << known;
    for (const char* unknown : {"", "plist", "co.uk", "zander"})
        EXPECT_FALSE(isTopLevelDomain(unknown)) << unknown;
}

} // namespace
} // namespace tidwen
