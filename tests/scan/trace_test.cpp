#include "scan/trace.h"

#include <gtest/gtest.h>
#include <tuple>

namespace tidwen {
namespace {

using Category = TraceCategory;
using Reason = MatchReason::Kind;
using Risk = TraceRisk;

TEST(Trace, RiskFollowsCategoryThenRootThenReason) {
    const std::tuple<Category, Reason, bool, Risk> cases[] = {
        {Category::application, Reason::declaredTarget, false, Risk::safe},
        {Category::caches, Reason::exactBundleID, false, Risk::safe},
        {Category::caches, Reason::exactBundleID, true, Risk::sensitive},
        {Category::supportFiles, Reason::nameToken, false, Risk::review},
        {Category::supportFiles, Reason::nameToken, true, Risk::sensitive},
        {Category::logs, Reason::executableName, false, Risk::review},
        {Category::containers, Reason::appGroup, false, Risk::safe},
        {Category::containers, Reason::sharedAppGroup, false, Risk::review},
        {Category::receipts, Reason::receipt, false, Risk::safe},
        {Category::privilegedTools, Reason::exactBundleID, false, Risk::sensitive},
        {Category::keychain, Reason::exactBundleID, false, Risk::sensitive},
        {Category::systemExtensions, Reason::exactBundleID, false, Risk::sensitive},
        {Category::permissions, Reason::declaredTarget, false, Risk::review},
    };
    for (const auto& [category, reason, requiresRoot, expected] : cases)
        EXPECT_EQ(traceRisk(category, reason, requiresRoot), expected) << name(category);
}

} // namespace
} // namespace tidwen
