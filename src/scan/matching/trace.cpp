#include "scan/matching/trace.h"

#include "base/texts.h"
#include "platform/file_system.h"

namespace tidwen {

TraceRisk traceRisk(TraceCategory category, MatchReason::Kind reason, bool requiresRoot) {
    switch (category) {
    case TraceCategory::privilegedTools:
    case TraceCategory::keychain:
    case TraceCategory::systemExtensions:
        return TraceRisk::sensitive;
    case TraceCategory::permissions:
        return TraceRisk::review;
    default:
        break;
    }
    if (requiresRoot) return TraceRisk::sensitive;

    switch (reason) {
    case MatchReason::Kind::sharedAppGroup:
    case MatchReason::Kind::nameToken:
    case MatchReason::Kind::executableName:
        return TraceRisk::review;
    case MatchReason::Kind::exactBundleID:
    case MatchReason::Kind::receipt:
    case MatchReason::Kind::appGroup:
    case MatchReason::Kind::declaredTarget:
        return TraceRisk::safe;
    }
    return TraceRisk::sensitive;
}

Trace makeTrace(TraceCategory category, TraceAction action, MatchReason reason, Reversibility reversibility,
                std::string displayName, std::optional<std::int64_t> sizeBytes, bool requiresRoot) {
    const TraceRisk risk = traceRisk(category, reason.kind, requiresRoot);
    return {.id = Uuid::random(),
            .category = category,
            .action = std::move(action),
            .reason = std::move(reason),
            .reversibility = reversibility,
            .displayName = std::move(displayName),
            .sizeBytes = sizeBytes,
            .requiresRoot = requiresRoot,
            .risk = risk,
            .contestedBy = std::nullopt};
}

std::string displayName(const Trace& trace, const Texts& texts) {
    const auto* item = std::get_if<action::DeleteKeychainItem>(&trace.action);
    auto name = trace.displayName;
    if (item && trace.itemCount >= 2)
        name += " " + texts.text("keychain.itemCount %lld", {std::to_string(trace.itemCount)});
    if (item && item->isSystemKeychain) name += " " + texts.text("keychain.systemSuffix");
    return name;
}

void setSize(Trace& trace, const TreeSize& size) {
    trace.sizeBytes = static_cast<std::int64_t>(size.allocatedBytes);
    trace.innerItems = size.entries;
    trace.isSizePartial = size.capped;
}

FoundItem foundItem(const FileInfo& info, TraceCategory category) {
    using enum FoundItem::Part;
    if (info.kind != FileKind::regular || category == TraceCategory::launchItems) return {info, item};
    // Applications, and the preference daemon for them, write a new file and rename it.
    return {info, category == TraceCategory::installers ? content : kind};
}

const Path* movedPath(const TraceAction& action) {
    if (const auto* move = std::get_if<action::MovePath>(&action)) return &move->url;
    if (const auto* job = std::get_if<action::BootoutAndMove>(&action)) return &job->plist;
    return nullptr;
}

std::string_view name(TraceCategory category) {
    switch (category) {
    case TraceCategory::application:
        return "application";
    case TraceCategory::supportFiles:
        return "supportFiles";
    case TraceCategory::preferences:
        return "preferences";
    case TraceCategory::caches:
        return "caches";
    case TraceCategory::containers:
        return "containers";
    case TraceCategory::logs:
        return "logs";
    case TraceCategory::launchItems:
        return "launchItems";
    case TraceCategory::privilegedTools:
        return "privilegedTools";
    case TraceCategory::receipts:
        return "receipts";
    case TraceCategory::keychain:
        return "keychain";
    case TraceCategory::permissions:
        return "permissions";
    case TraceCategory::systemExtensions:
        return "systemExtensions";
    case TraceCategory::installers:
        return "installers";
    }
    return {};
}

std::string_view name(MatchReason::Kind kind) {
    switch (kind) {
    case MatchReason::Kind::exactBundleID:
        return "exactBundleID";
    case MatchReason::Kind::receipt:
        return "receipt";
    case MatchReason::Kind::appGroup:
        return "appGroup";
    case MatchReason::Kind::sharedAppGroup:
        return "sharedAppGroup";
    case MatchReason::Kind::nameToken:
        return "nameToken";
    case MatchReason::Kind::executableName:
        return "executableName";
    case MatchReason::Kind::declaredTarget:
        return "declaredTarget";
    }
    return {};
}

std::string_view name(MatchReason::Evidence evidence) {
    switch (evidence) {
    case MatchReason::Evidence::itsName:
        return "name";
    case MatchReason::Evidence::record:
        return "record";
    case MatchReason::Evidence::label:
        return "label";
    case MatchReason::Evidence::program:
        return "program";
    case MatchReason::Evidence::embedded:
        return "embedded";
    }
    return {};
}

std::string_view name(Reversibility reversibility) {
    switch (reversibility) {
    case Reversibility::reversible:
        return "reversible";
    case Reversibility::irreversibleHarmless:
        return "irreversibleHarmless";
    case Reversibility::irreversibleDestructive:
        return "irreversibleDestructive";
    case Reversibility::manualOnly:
        return "manualOnly";
    }
    return {};
}

std::string_view name(TraceRisk risk) {
    switch (risk) {
    case TraceRisk::safe:
        return "safe";
    case TraceRisk::review:
        return "review";
    case TraceRisk::sensitive:
        return "sensitive";
    }
    return {};
}

std::string_view name(SettingsPane pane) {
    switch (pane) {
    case SettingsPane::fullDiskAccess:
        return "fullDiskAccess";
    case SettingsPane::loginItemsAndExtensions:
        return "loginItemsAndExtensions";
    case SettingsPane::privacyAndSecurity:
        return "privacyAndSecurity";
    }
    return {};
}

std::optional<TraceRisk> parseTraceRisk(std::string_view text) {
    for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive})
        if (name(risk) == text) return risk;
    return std::nullopt;
}

std::string_view address(SettingsPane pane) {
    switch (pane) {
    case SettingsPane::fullDiskAccess:
        return "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
    case SettingsPane::loginItemsAndExtensions:
        return "x-apple.systempreferences:com.apple.LoginItems-Settings.extension";
    case SettingsPane::privacyAndSecurity:
        return "x-apple.systempreferences:com.apple.preference.security";
    }
    return {};
}

} // namespace tidwen
