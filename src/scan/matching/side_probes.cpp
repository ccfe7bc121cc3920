#include "scan/matching/side_probes.h"

#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <optional>
#include <string>

namespace tidwen {

namespace {

std::string displayName(const KeychainEntry& entry, const Texts& texts) {
    auto name = entry.service;
    if (entry.itemCount >= 2)
        name += " " + texts.text("keychain.itemCount %lld", {std::to_string(entry.itemCount)});
    if (entry.isSystemKeychain) name += " " + texts.text("keychain.systemSuffix");
    return name;
}

} // namespace

void probeKeychain(const ScanContext& context, const Keychain& keychain, const Texts& texts,
                   TraceCollector& traces) {
    for (const auto& entry : keychain.entries()) {
        if (context.stop.stopRequested()) return;
        auto found = context.matcher.attributeIdentifier(entry.service);
        if (!found) continue;
        if (found->reason.kind == MatchReason::Kind::nameToken) found->reason.value = entry.service;
        auto trace = makeTrace(TraceCategory::keychain,
                               action::DeleteKeychainItem{entry.service, entry.isSystemKeychain},
                               std::move(found->reason), Reversibility::irreversibleDestructive,
                               displayName(entry, texts), std::nullopt, entry.isSystemKeychain);
        trace.contestedBy = std::move(found->contestedBy);
        traces.add(std::move(trace));
    }
}

void probeSystemExtensions(const ScanContext& context, const SystemExtensions& extensions, const Texts& texts,
                           TraceCollector& traces) {
    for (const auto& record : extensions.list()) {
        if (context.stop.stopRequested()) return;
        auto found = context.matcher.attributeIdentifier(record.bundleID);
        if (!found || found->reason.kind != MatchReason::Kind::exactBundleID) continue;
        const auto& name = record.name.empty() ? record.bundleID : record.name;
        auto trace = makeTrace(TraceCategory::systemExtensions,
                               action::Guidance{{texts.text("guidance.systemExtension %@", {name}),
                                                 SettingsPane::loginItemsAndExtensions}},
                               {MatchReason::Kind::exactBundleID, record.bundleID}, Reversibility::manualOnly,
                               name, std::nullopt, false);
        trace.contestedBy = std::move(found->contestedBy);
        traces.add(std::move(trace));
    }
}

} // namespace tidwen
