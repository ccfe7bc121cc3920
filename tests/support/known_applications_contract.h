#pragma once

#include "base/text.h"
#include "platform/known_applications.h"

#include <future>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tidwen::test {

/// What every implementation answers; `registered` are identifiers of applications that it knows.
inline void expectToKnowOnly(const std::vector<std::string>& registered, const KnownApplications& known) {
    std::vector<std::string> strangers = {"", "com.corvella.no-such-application"};
    for (const auto& bundleID : registered) {
        strangers.push_back(bundleID + ".helper");
        strangers.push_back(bundleID.substr(0, bundleID.rfind('.')));
        EXPECT_TRUE(known.isKnown(bundleID)) << bundleID;
        EXPECT_TRUE(known.isKnown(lowercased(bundleID))) << bundleID << " in another letter case";
    }
    const auto ask = [&](const std::string& bundleID) { return known.isKnown(bundleID); };
    for (const auto& bundleID : strangers)
        EXPECT_FALSE(std::async(std::launch::async, ask, bundleID).get()) << bundleID;
}

} // namespace tidwen::test
