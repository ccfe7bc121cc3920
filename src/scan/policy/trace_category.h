#pragma once

#include <array>

namespace tidwen {

/// The kind of leftover.
enum class TraceCategory {
    application,
    supportFiles,
    preferences,
    caches,
    containers,
    logs,
    launchItems,
    privilegedTools,
    receipts,
    keychain,
    permissions,
    systemExtensions,
    installers,
};
inline constexpr std::array allTraceCategories = {
    TraceCategory::application, TraceCategory::supportFiles,    TraceCategory::preferences,
    TraceCategory::caches,      TraceCategory::containers,      TraceCategory::logs,
    TraceCategory::launchItems, TraceCategory::privilegedTools, TraceCategory::receipts,
    TraceCategory::keychain,    TraceCategory::permissions,     TraceCategory::systemExtensions,
    TraceCategory::installers,
};

} // namespace tidwen
