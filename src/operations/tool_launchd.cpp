#include "operations/tool_launchd.h"

#include "base/path.h"
#include "base/shell_word.h"
#include "base/text.h"
#include "operations/administrator_prompt.h"
#include "operations/tool_arguments.h"
#include "operations/tool_lines.h"
#include "operations/tool_paths.h"
#include "posix/posix_process_runner.h"
#include "scan/policy/path_policy.h"

#include <array>
#include <chrono>
#include <map>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {
namespace {

constexpr std::chrono::seconds switchTimeout{30};
constexpr std::chrono::seconds administratorTimeout{120};

using Command = std::vector<std::string>;
using Outcome = tl::expected<void, LaunchdError>;

Outcome failed(const ProcessResult& result) {
    return tl::unexpected(LaunchdError{LaunchdError::Kind::failed,
                                       {"startup.toggle.failed %@", {trimmed(result.standardError)}}});
}

Outcome failed(const ProcessRunnerError& error) {
    return tl::unexpected(LaunchdError{LaunchdError::Kind::process, describe(error)});
}

/// The first command decides; loading what is loaded, or unloading what is not, is not a failure.
std::array<Command, 2> switchCommands(bool on, const std::string& domain, const std::string& label,
                                      const Path& plist) {
    const auto target = domain + "/" + label;
    if (on) return {Command{"enable", target}, Command{"bootstrap", domain, plist.string()}};
    return {Command{"disable", target}, Command{"bootout", target}};
}

std::string shellLine(const Command& command) {
    std::string line = shellWord(toolPaths::launchctl);
    for (const auto& word : command)
        line += " " + shellWord(word);
    return line;
}

} // namespace

std::map<std::string, bool> ToolLaunchd::disabledOverrides(bool isSystemDomain) const {
    const auto result = processes_.run(
        toolPaths::launchctl, {"print-disabled", toolArguments::launchdDomain(isSystemDomain, userID_)},
        std::chrono::seconds(10));
    if (!result || result->exitCode != 0) return {};
    return parseDisabledServices(result->standardOutput);
}

Outcome ToolLaunchd::setEnabled(bool on, const std::string& label, const Path& plist, bool isSystemDomain) {
    // A label with a meaning to launchctl could change the whole session.
    if (!toolArguments::isLabel(label) || !toolArguments::isBatchPath(plist))
        return tl::unexpected(LaunchdError{LaunchdError::Kind::failed, {blockedBySafetyPolicyKey}});
    const auto commands =
        switchCommands(on, toolArguments::launchdDomain(isSystemDomain, userID_), label, plist);
    if (isSystemDomain)
        return switchAsAdministrator(shellLine(commands[0]) + " && { " + shellLine(commands[1])
                                     + " || true; }");
    const auto first = processes_.run(toolPaths::launchctl, commands[0], switchTimeout);
    if (!first) return failed(first.error());
    if (meansNoSession(first->exitCode))
        return tl::unexpected(LaunchdError{LaunchdError::Kind::failed, {noSessionKey}});
    if (first->exitCode != 0) return failed(*first);
    (void)processes_.run(toolPaths::launchctl, commands[1], switchTimeout);
    return {};
}

Outcome ToolLaunchd::switchAsAdministrator(const std::string& script) {
    const auto result = runAsAdministrator(processes_, script, administratorTimeout);
    if (result) return result->exitCode == 0 ? Outcome() : failed(*result);
    if (result.error().kind == AdminScriptRunnerError::Kind::authorizationCancelled)
        return tl::unexpected(
            LaunchdError{LaunchdError::Kind::authorizationCancelled, {"startup.toggle.cancelled"}});
    return tl::unexpected(LaunchdError{LaunchdError::Kind::failed, result.error().describe()});
}

std::map<std::string, bool> parseDisabledServices(std::string_view output) {
    constexpr std::string_view arrow = "=>";
    std::map<std::string, bool> services;
    for (const auto line : linesOf(output)) {
        const auto middle = line.find(arrow);
        if (middle == line.npos || line.find(arrow, middle + arrow.size()) != line.npos) continue;

        const auto value = trimmed(line.substr(middle + arrow.size()));
        const bool isDisabled = value == "disabled" || value == "true";
        if (!isDisabled && value != "enabled" && value != "false") continue;

        auto label = trimmed(line.substr(0, middle));
        label.erase(0, label.find_first_not_of('"'));
        label.erase(label.find_last_not_of('"') + 1);
        if (!label.empty()) services.insert_or_assign(std::move(label), isDisabled);
    }
    return services;
}

} // namespace tidwen
