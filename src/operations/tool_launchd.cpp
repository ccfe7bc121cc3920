#include "operations/tool_launchd.h"

#include "base/text.h"
#include "operations/tool_arguments.h"
#include "operations/tool_lines.h"
#include "operations/tool_paths.h"

namespace tidwen {

std::map<std::string, bool> ToolLaunchd::disabledOverrides(bool isSystemDomain) const {
    const auto result = processes_.run(
        toolPaths::launchctl, {"print-disabled", toolArguments::launchdDomain(isSystemDomain, userID_)},
        std::chrono::seconds(10));
    if (!result || result->exitCode != 0) return {};
    return parseDisabledServices(result->standardOutput);
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
