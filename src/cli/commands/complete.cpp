#include "base/text.h"
#include "base/timestamp.h"
#include "cli/command.h"
#include "cli/commands/startup_labels.h"
#include "cli/commands/terminal_history.h"
#include "cli/console.h"
#include "cli/labels.h"
#include "inventory/installed_applications.h"
#include "platform/defaults.h"
#include "program/mac.h"
#include "program/resources.h"
#include "quarantine/manifest_subject.h"
#include "scan/matching/trace.h"
#include "settings/app_preferences.h"
#include "settings/app_tags.h"

#include <string>

namespace tidwen {

namespace {

/// Prints completions for one place of a command line: one word per line, followed by a tab and its meaning.
class Words {
  public:
    explicit Words(const CommandContext& context) : context_(context) {}

    void add(const std::string& word, const std::string& meaning = {}) const {
        if (!word.empty())
            context_.console.document(printable(word) + (meaning.empty() ? "" : "\t" + printable(meaning))
                                      + "\n");
    }

    void applications(const Mac& mac) const {
        const auto& system = mac.system;
        for (const auto& app :
             readIdentities(system.files, findApplicationBundles(system.files, system.user))) {
            add(app.name, app.bundleID);
            add(app.bundleID, app.name);
        }
    }

    void runs(Mac& mac) const {
        TerminalHistory history(context_, mac);
        const auto& entries = history.load(TerminalHistory::Sizes::leftOut);
        for (std::size_t i = 0; i < entries.size(); ++i)
            add(std::to_string(i + 1), subjectText(entries[i].manifest, context_.texts) + ", "
                                           + displayDate(entries[i].manifest.createdAt));
    }

    /// The values of a setting.
    void values(const std::string& setting, Defaults& defaults) const {
        const AppPreferences preferences(
            defaults, availableLanguages(findResources(context_.arguments.program.c_str())));
        for (const auto& description : preferenceDescriptions())
            if (description.name == setting)
                for (const auto& value : preferences.values(description))
                    add(value);
    }

  private:
    const CommandContext& context_;
};

ExitStatus runComplete(const CommandContext& context, Host& host, Mac* mac) {
    const auto& operands = context.arguments.operands;
    const auto& place = operands.front();
    const Words words(context);
    if (place == "APP" && mac) words.applications(*mac);
    if (place == "RUN" && mac) words.runs(*mac);
    if (place == "JOB" && mac)
        for (const auto& label : startupLabels(context, *mac))
            words.add(label);
    if (place == "NAME")
        for (const auto& setting : preferenceDescriptions())
            words.add(std::string(setting.name));
    if (place == "VALUE" && operands.size() > 1) words.values(operands[1], host.defaults);
    if (place == "TAG")
        for (const auto& tag : AppTags(host.defaults, context.texts).all())
            words.add(tag);
    if (place == "TIERS")
        for (const auto risk : {TraceRisk::safe, TraceRisk::review, TraceRisk::sensitive})
            words.add(std::string(name(risk)), labels::risk(risk, context.texts).text);
    return ExitStatus::done;
}

} // namespace

Command completeCommand() {
    return {.syntax = {.name = "complete",
                       .summary = "cli.help.complete",
                       .operandName = "PLACE",
                       .operandHelp = "cli.help.complete.operand",
                       .minimumOperands = 1,
                       .maximumOperands = 2,
                       .isHidden = true},
            .run = runComplete};
}

} // namespace tidwen
