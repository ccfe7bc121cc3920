#include "scan/matching/side_probes.h"

#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <optional>
#include <string>

namespace tidwen {

void probeKeychain(const ScanContext& context, const Keychain& keychain, TraceCollector& traces) {
    for (const auto& entry : keychain.entries()) {
        if (context.stop.stopRequested()) return;
        auto found = context.matcher.attributeIdentifier(entry.service);
        if (!found) continue;
        if (found->reason.kind == MatchReason::Kind::nameToken) found->reason.value = entry.service;
        auto trace = makeTrace(TraceCategory::keychain,
                               action::DeleteKeychainItem{entry.service, entry.isSystemKeychain},
                               std::move(found->reason), Reversibility::irreversibleDestructive,
                               entry.service, std::nullopt, entry.isSystemKeychain);
        trace.itemCount = entry.itemCount;
        trace.contestedBy = std::move(found->contestedBy);
        traces.add(std::move(trace));
    }
}

void probeSystemExtensions(const ScanContext& context, const SystemExtensions& extensions,
                           TraceCollector& traces) {
    for (const auto& record : extensions.list()) {
        if (context.stop.stopRequested()) return;
        auto found = context.matcher.attributeIdentifier(record.bundleID);
        if (!found || found->reason.kind != MatchReason::Kind::exactBundleID) continue;
        const auto& name = record.name.empty() ? record.bundleID : record.name;
        auto trace = makeTrace(TraceCategory::systemExtensions,
                               action::Guidance{{{"guidance.systemExtension %@", {name}},
                                                 SettingsPane::loginItemsAndExtensions}},
                               {MatchReason::Kind::exactBundleID, record.bundleID}, Reversibility::manualOnly,
                               name, std::nullopt, false);
        trace.contestedBy = std::move(found->contestedBy);
        traces.add(std::move(trace));
    }
}

} // namespace tidwen
