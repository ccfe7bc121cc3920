#include "sweep/installer_scanner.h"

#include "base/path.h"
#include "base/text.h"
#include "posix/posix_process_runner.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/size_measurer.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <string>

namespace tidwen {

namespace {

bool isInstallerName(const Path& path) {
    static const std::set<std::string> extensions = {"dmg", "pkg", "mpkg"};
    return extensions.contains(path.lowercasedExtension());
}

/// The leading part of a stem of only letters, spaces and dots: "Foo Bar" of "Foo Bar-2.3.1-arm64".
std::string_view leadingWords(std::string_view stem) {
    std::size_t end = 0;
    while (end < stem.size()) {
        auto next = end + 1; // one whole UTF-8 character
        while (next < stem.size() && (static_cast<unsigned char>(stem[next]) & 0xC0) == 0x80)
            ++next;
        const auto character = stem.substr(end, next - end);
        const bool isDigit = character.size() == 1 && character[0] >= '0' && character[0] <= '9';
        if (character != " " && character != "." && (isDigit || canonicalForm(character).empty())) break;
        end = next;
    }
    return stem.substr(0, end);
}

std::optional<InstallerFile> describe(const FileSystem& files, const Path& url,
                                      const std::vector<InstalledApp>& apps) {
    const auto info = files.info(url);
    if (!info) return std::nullopt; // removed since it was listed
    InstallerFile file{
        .url = url, .sizeBytes = std::nullopt, .addedAt = std::nullopt, .installedApp = std::nullopt};
    file.isFolder = info->kind == FileKind::directory;
    if (!file.isFolder) file.sizeBytes = static_cast<std::int64_t>(info->size);
    if (info->createdNanoseconds)
        file.addedAt = Timestamp(std::chrono::seconds(*info->createdNanoseconds / 1'000'000'000));
    file.found = foundItem(*info, TraceCategory::installers);
    file.installedApp = matchInstaller(url.lastComponent(), apps);
    return file;
}

} // namespace

Path installersFolder(const UserEnvironment& user) {
    return user.home / "Downloads";
}

void setSize(InstallerFile& file, const TreeSize& size) {
    file.sizeBytes = static_cast<std::int64_t>(size.allocatedBytes);
    file.isSizePartial = size.capped;
}

std::optional<TreeSize> measurePackage(const FileSystem& files, const Path& package, const StopToken& stop) {
    const auto size = files.treeSize(package, traceSizeEntryLimit, stop);
    if (!size || stop.stopRequested()) return std::nullopt;
    return *size;
}

void sortBySize(std::vector<InstallerFile>& files) {
    std::stable_sort(files.begin(), files.end(), [](const auto& a, const auto& b) {
        return a.sizeBytes.value_or(0) > b.sizeBytes.value_or(0);
    });
}

InstallerScanResult listInstallers(const FileSystem& files, const UserEnvironment& user,
                                   const std::vector<InstalledApp>& apps) {
    InstallerScanResult result;
    const auto folder = installersFolder(user);
    const auto entries = files.list(folder);
    if (!entries) {
        result.unreadable = true;
        return result;
    }
    for (const auto& entry : *entries) {
        const auto url = folder / entry.name;
        if (entry.name.starts_with('.') || !isInstallerName(url)) continue;
        if (!isValidUtf8(entry.name))
            result.skippedNames.push_back(url);
        else if (auto file = describe(files, url, apps))
            result.files.push_back(std::move(*file));
    }
    sortBySize(result.files);
    return result;
}

std::optional<InstalledApp> matchInstaller(std::string_view fileName, const std::vector<InstalledApp>& apps) {
    const auto stem = nfc((Path("/") / fileName).stem());
    const auto fullKey = canonicalForm(stem);
    if (fullKey.empty()) return std::nullopt;
    const auto leadKey = canonicalForm(leadingWords(stem));

    const InstalledApp* best = nullptr;
    std::size_t bestLength = 0;
    for (const auto& app : apps) {
        const auto appKey = canonicalForm(app.name);
        const auto length = characterCount(appKey);
        const bool matches = length > 4 ? fullKey.starts_with(appKey) : length >= 3 && leadKey == appKey;
        if (!matches || length <= bestLength) continue;
        best = &app;
        bestLength = length;
    }
    return best ? std::optional(*best) : std::nullopt;
}

Trace installerTrace(const InstallerFile& file) {
    auto trace = makeTrace(TraceCategory::installers, action::MovePath{file.url},
                           {MatchReason::Kind::declaredTarget, {}}, Reversibility::reversible,
                           file.url.string(), file.sizeBytes, false);
    trace.isSizePartial = file.isSizePartial;
    trace.found = file.found;
    return trace;
}

} // namespace tidwen
