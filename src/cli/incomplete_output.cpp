#include "cli/incomplete_output.h"

#include "base/path.h"
#include "cli/console.h"
#include "scan/applications/bundle_coverage.h"

#include <algorithm>
#include <string>

namespace tidwen {

void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context) {
    for (const auto& path : skippedNames)
        context.console.line(context.text("cli.skippedName %@", {path.string()}), Style::caution);
    if (leftOut > 0)
        context.console.line(context.text("cli.leftOut %lld", {std::to_string(leftOut)}), Style::caution);
}

void printUnreadable(const std::vector<Path>& places, const CommandContext& context) {
    if (places.empty()) return;
    context.console.line(context.text("cli.remove.unreadable"), Style::caution);
    for (const auto& place : places)
        context.console.line("  " + place.string());
}

/// Most of other users' homes is inaccessible, so only a few names are printed.
void printOwners(const BundleCoverage& owners, const CommandContext& context) {
    constexpr std::size_t mostShown = 5;
    std::vector<Path> places = owners.absent;
    places.insert(places.end(), owners.unreadable.begin(), owners.unreadable.end());
    places.insert(places.end(), owners.uncounted.begin(), owners.uncounted.end());
    places.insert(places.end(), owners.damaged.begin(), owners.damaged.end());
    if (places.empty()) return;
    context.console.line(context.text("cli.scan.owners.title"), Style::caution);
    context.console.line(context.text("cli.scan.owners.body"), Style::faint);
    for (std::size_t i = 0; i < std::min(places.size(), mostShown); ++i)
        context.console.line("  " + places[i].string());
    if (places.size() > mostShown) context.console.line("  …");
}

void printUnsearchable(const ScanResult& result, const CommandContext& context) {
    const auto print = [&](const char* title, const char* body, const std::string& word) {
        context.console.line(context.text(title), Style::caution);
        context.console.line(context.text(body, {word}), Style::faint);
    };
    if (result.nameMatchingDisabled)
        print("review.genericName.title", "review.genericName.body %@", result.target.name);
    if (result.identifierMatchingDisabled)
        print("review.noIdentifier.title", "review.noIdentifier.body %@", result.target.bundleID);
    for (const auto& helper : result.unusableHelpers)
        print("review.noIdentifier.title", "review.noIdentifier.body %@", helper);
}

void printUnseen(const Unseen& unseen, const CommandContext& context) {
    printOwners(unseen.owners, context);
    printUnreadable(unseen.unreadableLocations, context);
    printIncomplete(unseen.leftOut, {}, context);
}

} // namespace tidwen
