#include "scan/applications/launch_item.h"

#include "base/property_list.h"
#include "base/stop_token.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/property_list_file.h"

#include <algorithm>
#include <string_view>

namespace tidwen {
namespace {

// The largest jobs seen have a few kilobytes.
constexpr PropertyListLimits jobLimits = {.bytes = 1u << 20, .nodes = 20'000, .depth = 32};

// A Mac has some hundred jobs; launchd itself would not read a folder with more in time.
constexpr std::size_t maximumJobs = 5'000;

std::optional<std::string> programPath(const PropertyListValue& job) {
    if (const auto* program = job.findString("Program")) return *program;
    const auto* arguments = job.find("ProgramArguments");
    const auto strings = arguments ? arguments->asStrings() : std::nullopt;
    if (!strings || strings->empty()) return std::nullopt;
    return strings->front();
}

/// Adds the parts of a text that may be paths: from a slash after a character that cannot be part of a path,
/// to every character that may end it. Names may contain spaces, so a part may continue after one.
void addPathsIn(std::string_view text, std::vector<std::string>& paths) {
    constexpr std::size_t most = 64, longest = 4096;
    constexpr std::string_view marks = " \t\n\"'`=:;,|&<>()";
    text = text.substr(0, longest);
    for (auto start = text.find('/'); start != text.npos; start = text.find('/', start + 1)) {
        if (start > 0 && marks.find(text[start - 1]) == marks.npos) continue;
        for (auto end = start; end != text.npos && paths.size() < most;) {
            end = text.find_first_of(marks, end + 1);
            std::string part(text.substr(start, end - start));
            // In a shell's text a backslash precedes a space that is part of the name.
            if (part.ends_with('\\')) continue;
            std::erase(part, '\\');
            if (part.size() > 1) paths.push_back(std::move(part));
        }
    }
}

std::vector<std::string> argumentPaths(const PropertyListValue& job) {
    constexpr std::size_t mostTexts = 64;
    std::vector<std::string> paths;
    const auto* arguments = job.find("ProgramArguments");
    const auto texts =
        (arguments ? arguments->asStrings() : std::nullopt).value_or(std::vector<std::string>());
    for (std::size_t i = 1; i < std::min(texts.size(), mostTexts); ++i)
        addPathsIn(texts[i], paths);
    if (const auto* folder = job.findString("WorkingDirectory"); folder && folder->starts_with('/'))
        paths.push_back(*folder);
    const auto* variables = job.find("EnvironmentVariables");
    if (const auto* each = variables ? variables->asDictionary() : nullptr)
        for (std::size_t left = mostTexts; const auto& [name, value] : *each) {
            if (left-- == 0) break;
            if (const auto* text = value.asString()) addPathsIn(*text, paths);
        }
    return paths;
}

bool isVisiblePropertyList(const Path& file) {
    return !file.lastComponent().starts_with('.') && file.lowercasedExtension() == "plist";
}

bool isDanglingLink(const FileSystem& files, const Path& item) {
    const auto info = files.info(item);
    return info && info->kind == FileKind::symbolicLink && !files.infoFollowingLinks(item);
}

/// macOS shows the folders of its data volume at the root of the start volume as well; a job may name either.
std::string onStartVolume(const std::string& path) {
    constexpr std::string_view dataVolume = "/System/Volumes/Data";
    const bool isOnIt = path.starts_with(dataVolume) && path.substr(dataVolume.size()).starts_with('/');
    return isOnIt ? path.substr(dataVolume.size()) : path;
}

} // namespace

std::optional<LaunchItem> readLaunchItem(const FileSystem& files, const Path& plist, bool isSystemDomain) {
    const auto job = readPropertyList(files, plist, jobLimits);
    const auto* label = job ? job->findString("Label") : nullptr;
    if (!label || label->empty()) return std::nullopt;
    auto program = programPath(*job);
    if (program) program = onStartVolume(*program);
    auto arguments = argumentPaths(*job);
    std::ranges::transform(arguments, arguments.begin(), onStartVolume);
    return LaunchItem{.label = *label,
                      .plist = plist,
                      .isSystemDomain = isSystemDomain,
                      .programPath = std::move(program),
                      .argumentPaths = std::move(arguments)};
}

std::vector<std::string> readAssociatedBundleIDs(const FileSystem& files, const Path& plist) {
    const auto job = readPropertyList(files, plist, jobLimits);
    const auto* associated = job ? job->find("AssociatedBundleIdentifiers") : nullptr;
    if (!associated) return {};
    auto identifiers = associated->asStrings().value_or(std::vector<std::string>());
    if (const auto* one = job->findString("AssociatedBundleIdentifiers")) identifiers.push_back(*one);
    for (auto& identifier : identifiers)
        identifier = lowercased(identifier);
    return identifiers;
}

bool declaresDisabled(const FileSystem& files, const Path& plist) {
    const auto job = readPropertyList(files, plist, jobLimits);
    const auto* flag = job ? job->find("Disabled") : nullptr;
    return flag && flag->asBool().value_or(false);
}

std::vector<Path> placesOfProgram(const FileSystem& files, const LaunchItem& job) {
    auto named = job.argumentPaths;
    if (job.programPath) named.push_back(*job.programPath);
    std::vector<Path> places;
    for (const auto& each : named) {
        const Path place = Path(each).standardized();
        if (!place.isAbsolute() || place.isRoot() || !mayBeThere(files, place)) continue;
        places.push_back(place);
        if (auto real = files.resolve(place); real && *real != place) places.push_back(std::move(*real));
    }
    return places;
}

std::vector<LaunchItem> listLaunchItems(const FileSystem& files, const Path& folder, bool isSystemDomain,
                                        const StopToken& stop, std::vector<Path>* unreadable) {
    std::vector<LaunchItem> items;
    const auto miss = [&](const Path& place) {
        if (unreadable) unreadable->push_back(place);
    };
    const auto entries = files.list(folder);
    if (!entries) {
        if (!isAbsence(entries.error()) || isDanglingLink(files, folder)) miss(folder);
        return items;
    }
    const auto* budget = BudgetedFiles::budgetOf(files);
    for (const auto& entry : *entries) {
        if (stop.stopRequested()) break;
        const Path file = folder / entry.name;
        if (!isVisiblePropertyList(file)) continue;
        if (items.size() == maximumJobs || (budget && budget->isExhausted())) {
            if (budget) budget->leaveOut();
            miss(folder);
            break;
        }
        if (auto item = readLaunchItem(files, file, isSystemDomain))
            items.push_back(std::move(*item));
        else if (unreadable && isUnreadableJob(files, file))
            miss(file);
    }
    return items;
}

bool isUnreadableJob(const FileSystem& files, const Path& plist) {
    const auto info = files.infoFollowingLinks(plist);
    if (!info) return !isAbsence(info.error()) || isDanglingLink(files, plist);
    return info->kind == FileKind::regular && !readPropertyList(files, plist, jobLimits);
}

} // namespace tidwen
