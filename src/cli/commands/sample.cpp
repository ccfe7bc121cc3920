#include "base/byte_sum.h"
#include "base/path.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/json/output.h"
#include "sample/sample_contents.h"
#include "sample/sample_volume.h"

#include <cstdint>
#include <string>

namespace tidwen {

namespace {

ExitStatus runSample(const CommandContext& context) {
    const std::string& folder = context.arguments.operands.front();
    const auto sample = writeSampleVolume(folder);
    if (!sample) {
        context.refuse(sample.error().reason);
        return sample.error().nothingWritten ? ExitStatus::refused : ExitStatus::someFailed;
    }
    if (context.arguments.json) {
        context.console.document(json::document(json::Sample{sample->root, Path(std::string(sample::home)),
                                                             sample->applications, sample->bytes}));
        return ExitStatus::done;
    }
    context.console.line(
        context.text("cli.sample.done %@ %lld %@",
                     {folder, std::to_string(sample->applications),
                      sizeText(static_cast<std::int64_t>(sample->bytes), false, context.texts)}));
    Arguments arguments = context.arguments;
    arguments.volume = folder;
    const CommandContext onSample{arguments, context.texts, context.console};
    onSample.offer("cli.next %@", onSample.commandLine({"apps"}));
    return ExitStatus::done;
}

} // namespace

Command sampleCommand() {
    return {.syntax = {.name = "sample",
                       .summary = "cli.help.sample",
                       .operandName = "DIR",
                       .operandHelp = "cli.help.sample.operand",
                       .minimumOperands = 1,
                       .maximumOperands = 1},
            .run = runSample};
}

} // namespace tidwen
