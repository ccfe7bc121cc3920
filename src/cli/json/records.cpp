#include "cli/json/records.h"

#include "base/path.h"
#include "base/timestamp.h"
#include "scan/applications/launch_item.h"

#include <string>
#include <string_view>
#include <variant>

namespace tidwen::json {

namespace {

Value text(std::string_view name) {
    return std::string(name);
}

Value object(const LaunchItem& item) {
    Value result{
        {"label", item.label}, {"plist", item.plist.string()}, {"isSystemDomain", item.isSystemDomain}};
    put(result, "programPath", item.programPath);
    return result;
}

Value object(const TraceAction& action, const Texts& texts) {
    return std::visit(
        Overloaded{
            [](const action::MovePath& a) {
                return Value{{"kind", "movePath"}, {"url", a.url.string()}};
            },
            [](const action::BootoutAndMove& a) {
                return Value{{"kind", "bootoutAndMove"},
                             {"label", a.label},
                             {"plist", a.plist.string()},
                             {"isSystemDomain", a.isSystemDomain}};
            },
            [](const action::Bootout& a) {
                return Value{{"kind", "bootout"}, {"label", a.label}, {"isSystemDomain", a.isSystemDomain}};
            },
            [](const action::ResetPermissions& a) {
                return Value{{"kind", "resetPermissions"}, {"bundleID", a.bundleID}};
            },
            [](const action::DeleteKeychainItem& a) {
                return Value{{"kind", "deleteKeychainItem"},
                             {"service", a.service},
                             {"isSystemKeychain", a.isSystemKeychain}};
            },
            [&](const action::Guidance& a) {
                Value step{{"instruction", texts.text(a.step.instruction)}};
                if (a.step.settingsPane) step["settingsPane"] = text(name(*a.step.settingsPane));
                return Value{{"kind", "guidance"}, {"step", std::move(step)}};
            },
        },
        action);
}

Value object(const MatchReason& reason) {
    Value result{{"kind", text(name(reason.kind))}};
    if (reason.kind != MatchReason::Kind::declaredTarget) result["value"] = reason.value;
    if (reason.evidence != MatchReason::Evidence::itsName) result["evidence"] = text(name(reason.evidence));
    return result;
}

Value object(const AppUsage& usage) {
    Value evidence;
    switch (usage.evidence.kind) {
    case UsageEvidence::Kind::launchRecord:
        evidence["kind"] = "launchRecord";
        break;
    case UsageEvidence::Kind::appData:
        evidence["kind"] = "appData";
        break;
    case UsageEvidence::Kind::none:
        evidence["kind"] = "none";
        break;
    }
    if (usage.evidence.date) evidence["date"] = iso8601(*usage.evidence.date);
    Value result{{"evidence", std::move(evidence)}, {"isRunning", usage.isRunning}};
    put(result, "useCount", usage.useCount);
    return result;
}

Value object(const RemovalOperation::Kind& kind) {
    Value result = std::visit(
        Overloaded{
            [](const operation::QuitApplication& o) {
                return Value{{"bundleID", o.bundleID}};
            },
            [](const operation::ResetPermissions& o) {
                return Value{{"bundleID", o.bundleID}};
            },
            [](const operation::Bootout& o) {
                return Value{{"label", o.label}, {"isSystemDomain", o.isSystemDomain}};
            },
            [](const operation::Bootstrap& o) {
                return Value{{"plist", o.plist.string()}, {"isSystemDomain", o.isSystemDomain}};
            },
            [](const operation::Move& o) {
                return Value{{"source", o.source.string()}, {"destination", o.destination.string()}};
            },
            [](const operation::DeleteKeychainItem& o) {
                return Value{{"service", o.service}, {"isSystemKeychain", o.isSystemKeychain}};
            },
            [](const operation::UnregisterApp& o) {
                return Value{{"bundleURL", o.bundleURL.string()}};
            },
            [](const operation::FlushPreferences&) { return Value::object(); },
        },
        kind);
    result["kind"] = text(kindName(kind));
    return result;
}

} // namespace

Value value(const Path& path) {
    return path.string();
}

Value value(const AppTarget& target) {
    Value result{{"bundleID", target.bundleID},
                 {"name", target.name},
                 {"appGroups", target.appGroups},
                 {"embeddedLaunchdItems",
                  array(target.embeddedLaunchdItems, [](const LaunchItem& item) { return object(item); })},
                 {"loginItemBundleIDs", target.loginItemBundleIDs}};
    if (!target.bundleURL.isRoot()) result["bundleURL"] = target.bundleURL.string();
    put(result, "teamID", target.teamID);
    put(result, "version", target.version);
    put(result, "executableName", target.executableName);
    return result;
}

Value value(const InstalledApp& app) {
    Value result{{"url", app.url.string()},
                 {"name", app.name},
                 {"bundleID", app.bundleID},
                 {"isBackgroundAgent", app.isBackgroundAgent},
                 {"hasResidentHelper", app.hasResidentHelper}};
    put(result, "teamID", app.teamID);
    put(result, "version", app.version);
    put(result, "category", app.category);
    put(result, "sizeBytes", app.sizeBytes);
    if (app.isSizePartial) result["isSizePartial"] = true;
    if (app.usage) result["usage"] = object(*app.usage);
    return result;
}

Value value(const Trace& trace, const Texts& texts) {
    Value result{{"id", trace.id.string()},
                 {"category", text(name(trace.category))},
                 {"action", object(trace.action, texts)},
                 {"reason", object(trace.reason)},
                 {"reversibility", text(name(trace.reversibility))},
                 {"displayName", displayName(trace, texts)},
                 {"requiresRoot", trace.requiresRoot},
                 {"risk", text(name(trace.risk))}};
    put(result, "sizeBytes", trace.sizeBytes);
    if (trace.contestedBy) {
        result["contestedBy"] = trace.contestedBy->bundleID;
        result["contestedByPlace"] = trace.contestedBy->place.string();
    }
    if (trace.isSizePartial) result["isSizePartial"] = true;
    if (trace.isOnlyListed) result["isOnlyListed"] = true;
    if (trace.mayHoldOthers) result["mayHoldOthers"] = true;
    if (trace.ownerUnsure) result["ownerUnsure"] = true;
    return result;
}

Value value(const PermissionGrant& grant) {
    Value state{{"kind", text(name(grant.state.kind))}};
    if (grant.state.kind == PermissionGrant::State::Kind::unknown) state["value"] = grant.state.rawValue;
    return {{"service", grant.service},
            {"state", std::move(state)},
            {"scope", text(name(grant.scope))},
            {"isPathClient", grant.isPathClient}};
}

Value value(const PermissionAudit::Result& audit) {
    return {{"grants", array(audit.grants, [](const PermissionGrant& grant) { return value(grant); })},
            {"unreadable",
             array(audit.unreadable, [](PermissionGrant::Scope scope) { return text(name(scope)); })}};
}

Value value(const RemovalOperation& operation, const Texts& texts) {
    return {{"id", operation.id},
            {"kind", object(operation.kind)},
            {"requiresRoot", operation.requiresRoot},
            {"reversibility", text(name(operation.reversibility))},
            {"displayName", displayName(operation, texts)},
            {"traceID", operation.traceID.string()},
            {"bundleID", operation.bundleID}};
}

} // namespace tidwen::json
