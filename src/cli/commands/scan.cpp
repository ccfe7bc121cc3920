#include "base/byte_sum.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/flow_session.h"
#include "cli/incomplete_output.h"
#include "cli/intake.h"
#include "cli/json/output.h"
#include "cli/labels.h"
#include "cli/table.h"
#include "platform/file_system.h"
#include "platform/user_environment.h"
#include "program/mac.h"
#include "removal/target_intake.h"
#include "scan/applications/protected_apps.h"
#include "scan/matching/default_selection.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "scan/permissions/permission_audit.h"
#include "scan/policy/removability.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace tidwen {

namespace {

constexpr const char* sortOption = "--sort";

/// The traces of one category.
struct Section {
    TraceCategory category;
    std::vector<Trace> traces;
    ByteSum size = {};
};

/// Categories in display order; by size, the largest first, and likewise the traces in each.
std::vector<Section> sections(const std::vector<Trace>& traces, bool isBySize) {
    std::map<TraceCategory, Section> byCategory;
    for (const auto& trace : traces) {
        auto& section = byCategory.try_emplace(trace.category, Section{trace.category, {}}).first->second;
        section.traces.push_back(trace);
        section.size.add(trace.sizeBytes, trace.isSizePartial);
    }
    std::vector<Section> result;
    for (auto& [category, section] : byCategory) {
        if (isBySize)
            std::ranges::stable_sort(section.traces, std::greater{},
                                     [](const Trace& trace) { return trace.sizeBytes.value_or(-1); });
        result.push_back(std::move(section));
    }
    if (isBySize)
        std::ranges::stable_sort(result, std::greater{},
                                 [](const Section& section) { return section.size.bytes; });
    return result;
}

/// A bar for the part's share of the whole.
std::string bar(std::int64_t part, std::int64_t whole) {
    constexpr std::int64_t columns = 20;
    std::string text;
    for (std::int64_t i = 0; i < columns && whole > 0; ++i)
        text += i * whole < part * columns ? "█" : "░";
    return text;
}

/// Only mark, tier and size are aligned; longer cells would push the rest too far right.
void printTraces(const ScanResult& result, bool isBySize, const CommandContext& context) {
    using enum Table::Align;
    Table table({left, left, right});
    const auto all = sections(result.traces, isBySize);
    for (const auto& section : all)
        for (const auto& trace : section.traces)
            table.add(
                resetsNothing(trace, result)
                    ? std::vector<StyledText>{{}, {}, {}}
                    : std::vector<StyledText>{{takenByDefault(trace, result) ? "[x]" : "[ ]", Style::faint},
                                              labels::risk(trace.risk, context.texts),
                                              {labels::size(trace, context.texts)}});
    auto lines = table.lines(2);
    std::size_t next = 0;
    for (const auto& section : all) {
        const bool isEmpty = resetsNothing(section.traces.front(), result);
        context.console.line(
            {{labels::category(section.category, context.texts), Style::strong},
             {isEmpty ? "" : "  " + labels::countAndSize(section.traces, context.texts), Style::faint},
             {isBySize ? "  " + bar(section.size.bytes, labels::total(result.traces).bytes) : ""}});
        for (const auto& trace : section.traces) {
            auto& line = lines[next++];
            line.push_back({"  "});
            line.push_back({displayName(trace, context.texts)});
            if (resetsNothing(trace, result)) {
                const auto* why =
                    result.permissions.grants.empty() ? "cli.scan.noPermissions" : "report.verify.pathGrant";
                line.push_back({"  " + context.text(why), Style::faint});
                context.console.line(line);
                continue;
            }
            line.push_back({"  " + labels::reason(trace.reason, context.texts), Style::faint});
            for (const auto& badge : labels::badges(trace, context.texts))
                line.push_back({"  [" + badge + "]", Style::caution});
            context.console.line(line);
        }
    }
}

void printPermissions(const PermissionAudit::Result& permissions, const CommandContext& context,
                      const UserEnvironment& user) {
    for (const auto scope : permissions.unreadable)
        context.console.line(context.text("cli.permissions.database %@",
                                          {PermissionAudit::databasePath(scope, user).string()}),
                             Style::caution);
    // A volume has no System Settings to grant access in.
    if (!permissions.unreadable.empty() && !context.arguments.volume)
        context.console.line(context.text("review.audit.unreadable"), Style::caution);
    if (permissions.grants.empty()) return;
    context.console.line(context.text("review.permissionAudit"), Style::strong);
    Table table;
    for (const auto& grant : permissions.grants)
        table.add({{permissionTitle(grant.service, context.texts)},
                   {context.text("cli.permission." + std::string(name(grant.state.kind)))},
                   {context.text("cli.permission.scope." + std::string(name(grant.scope))), Style::faint}});
    table.print(context.console, 2);
}

/// `isKnown`: the list of protected applications is readable.
void printNotices(const ScanResult& result, bool isKnown, const CommandContext& context) {
    if (result.isProtected && isKnown) {
        context.console.line(context.texts.text(describeProtected(result.target)), Style::caution);
        context.offer("cli.protect.takeOff %@", unprotectCommand(result.target, context));
    }
    if (result.immovable) {
        context.console.line(context.text("cli.scan.immovable"), Style::caution);
        context.console.line(context.texts.text(result.immovable->describe(result.target)), Style::faint);
        if (result.immovable->reason == ImmovableApplication::Reason::reachedThroughLink)
            context.offer(context.commandLine({"remove", result.immovable->place.string()}));
    }
    printOwners(result.owners, context);
    printUnsearchable(result, context);
    if (result.unreadableLocations.empty()) return;
    context.console.line(context.text("review.incomplete.title"), Style::caution);
    // Access to a volume depends on accounts; macOS has nothing to grant.
    const auto* body =
        context.arguments.volume ? "cli.scan.incomplete.body %lld" : "review.incomplete.body %lld";
    context.console.line(context.text(body, {std::to_string(result.unreadableLocations.size())}),
                         Style::faint);
    for (const auto& location : result.unreadableLocations)
        context.console.line("  " + location.string());
}

/// What there is to remove: not a reset of permissions that macOS has not recorded.
std::vector<Trace> removable(const ScanResult& result) {
    std::vector<Trace> traces;
    std::ranges::copy_if(result.traces, std::back_inserter(traces),
                         [&](const Trace& trace) { return !resetsNothing(trace, result); });
    return traces;
}

void printTotals(const ScanResult& result, bool isKnown, const CommandContext& context) {
    const auto traces = removable(result);
    context.console.line(context.text("cli.scan.found %@", {labels::countAndSize(traces, context.texts)}));
    if (result.isProtected)
        return context.console.line(
            context.text(isKnown ? "cli.scan.takenOfProtected" : "cli.scan.takenUnknown"));
    if (result.immovable) return context.console.line(context.text("cli.scan.takenNothing"));
    std::vector<Trace> taken;
    std::ranges::copy_if(traces, std::back_inserter(taken),
                         [&](const Trace& trace) { return takenByDefault(trace, result); });
    context.console.line(context.text("cli.scan.taken %@", {labels::countAndSize(taken, context.texts)}));
}

/// On a volume no password can be asked for, so what this account may not move stays.
void printRights(const std::vector<Trace>& traces, const CommandContext& context, const FileSystem& files) {
    if (!context.arguments.volume) return;
    const auto count = std::count_if(traces.begin(), traces.end(), [&](const Trace& trace) {
        const auto* item = movedPath(trace.action);
        return item && !files.isMovable(*item);
    });
    if (count > 0)
        context.console.line(context.text("cli.scan.notYours %lld", {std::to_string(count)}), Style::caution);
}

void print(const ScanResult& result, bool isKnown, bool isBySize, const CommandContext& context,
           const Mac& mac) {
    const auto& target = result.target;
    context.console.line({{target.name, Style::strong},
                          {target.version ? " " + *target.version : ""},
                          {"  " + target.bundleID, Style::faint}});
    context.console.line(isGone(target) ? context.text("cli.scan.gone") : target.bundleURL.string(),
                         Style::faint);
    printNotices(result, isKnown, context);
    printIncomplete(result.leftOut, result.skippedNames, context);
    printTraces(result, isBySize, context);
    printPermissions(result.permissions, context, mac.system.user);
    printTotals(result, isKnown, context);
    printRights(result.traces, context, mac.system.files);
}

bool hasDefaults(const ScanResult& result) {
    return std::ranges::any_of(removable(result),
                               [&](const Trace& trace) { return takenByDefault(trace, result); });
}

void offerRemoval(const CommandContext& context) {
    std::vector<std::string> words = {"remove"};
    words.insert(words.end(), context.arguments.operands.begin(), context.arguments.operands.end());
    context.offer("cli.orphans.remove %@", context.commandLine(words));
}

ExitStatus runScan(const CommandContext& context, Mac& mac) {
    const auto sort = context.arguments.values(sortOption);
    const bool isBySize = !sort.empty() && sort.back() == "size";
    if (!sort.empty() && !isBySize && sort.back() != "category")
        return context.misuse(invalidValue(sortOption, sort.back(), "category, size"));
    FlowSession session(context, mac);
    if (!session.scan(context.arguments.operands, ProtectedTargets::shown)) return ExitStatus::refused;
    session.letSignalsEnd();
    const auto& results = *std::get<stage::Review>(session.model().stage()).results;
    const auto problem = ProtectedApps(mac.system.defaults).problem();
    if (problem) context.refuse(*problem);
    if (context.arguments.json) {
        context.console.document(json::document(results, context.texts));
    } else {
        for (const auto& result : results) {
            if (&result != &results.front()) context.console.blankLine();
            print(result, !problem, isBySize, context, mac);
        }
        if (!problem && std::ranges::any_of(results, hasDefaults)) offerRemoval(context);
    }
    const bool areComplete = std::all_of(results.begin(), results.end(),
                                         [](const ScanResult& result) { return result.isComplete(); });
    return session.someRefused() || !areComplete || problem ? ExitStatus::someFailed : ExitStatus::done;
}

} // namespace

Command scanCommand() {
    return {.syntax = {.name = "scan",
                       .summary = "cli.help.scan",
                       .operandName = "APP",
                       .operandHelp = "cli.help.operand.app",
                       .minimumOperands = 1,
                       .maximumOperands = anyNumber,
                       .options = {{sortOption, "category|size", "cli.help.scan.sort"}}},
            .run = runScan};
}

} // namespace tidwen
