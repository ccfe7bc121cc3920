#include "operations/tool_receipts.h"

#include "base/path.h"
#include "base/property_list.h"
#include "operations/tool_lines.h"
#include "operations/tool_paths.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tidwen {

namespace {

/// The tool's output; nullopt when it could not be run.
std::optional<std::string> askPkgutil(ProcessRunner& processes, const std::vector<std::string>& arguments) {
    auto result = processes.run(toolPaths::pkgutil, arguments, std::chrono::seconds(30));
    if (!result || result->exitCode != 0) return std::nullopt;
    return std::move(result->standardOutput);
}

/// One that begins with "-" would be an option of the tool.
bool canBeAskedFor(std::string_view packageID) {
    return !packageID.empty() && !packageID.starts_with('-');
}

std::vector<std::string> lines(const std::string& output) {
    const auto views = linesOf(output);
    return {views.begin(), views.end()};
}

} // namespace

std::vector<std::string> ToolReceipts::packageIDs() const {
    const auto output = askPkgutil(processes_, {"--pkgs"});
    if (!output) return {};
    auto identifiers = lines(*output);
    std::erase_if(identifiers, [](const auto& id) { return !canBeAskedFor(id); });
    std::sort(identifiers.begin(), identifiers.end());
    identifiers.erase(std::unique(identifiers.begin(), identifiers.end()), identifiers.end());
    return identifiers;
}

std::optional<Receipt> ToolReceipts::read(const std::string& packageID) const {
    if (!canBeAskedFor(packageID)) return std::nullopt;
    const auto info = askPkgutil(processes_, {"--pkg-info-plist", packageID});
    if (!info) return std::nullopt;
    auto installBase = parsePackageInstallBase(*info);
    if (!installBase) return std::nullopt;
    const auto files = askPkgutil(processes_, {"--files", packageID});
    if (!files) return std::nullopt;
    return Receipt{packageID, std::move(*installBase), lines(*files)};
}

std::optional<Path> parsePackageInstallBase(std::string_view propertyList) {
    const auto info = parsePropertyList(propertyList);
    if (!info) return std::nullopt;
    const auto* volume = info->findString("volume");
    if (!volume || !volume->starts_with('/')) return std::nullopt;
    const auto* location = info->findString("install-location"); // absent, empty, with and without slashes
    return location ? Path(*volume + "/" + *location) : Path(*volume);
}

} // namespace tidwen
