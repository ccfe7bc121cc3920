#include "cli/incomplete_output.h"

#include "cli/console.h"

namespace tidwen {

void printIncomplete(std::uint64_t leftOut, const std::vector<Path>& skippedNames,
                     const CommandContext& context) {
    for (const auto& path : skippedNames)
        context.console.line(context.text("cli.skippedName %@", {path.string()}), Paint::caution);
    if (leftOut > 0)
        context.console.line(context.text("cli.leftOut %lld", {std::to_string(leftOut)}), Paint::caution);
}

void printUnseen(const Unseen& unseen, const CommandContext& context) {
    for (const auto& folder : unseen.unreadableLocations)
        context.console.line(context.text("cli.remove.unreadable %@", {folder.string()}), Paint::caution);
    printIncomplete(unseen.leftOut, {}, context);
}

} // namespace tidwen
