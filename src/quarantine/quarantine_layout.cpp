#include "quarantine/quarantine_layout.h"

#include "base/numbered_name.h"
#include "base/path.h"
#include "base/text.h"
#include "platform/unfinished_names.h"
#include "scan/policy/path_policy.h"

#include <algorithm>
#include <fmt/core.h>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

constexpr std::string_view purgedPrefix = ".tidwen-purged-";

/// Runs of the same second need distinct names; more attempts than this indicate another fault.
constexpr int maxFolderAttempts = 100;

/// The length of the longest folder name without its label.
constexpr std::size_t longestSurrounding = std::string_view("Tidwen -  - 2026-11-14 17-26-00 (100)").size();

/// Removes C0, DEL and C1, which would let a name look like another one in a terminal or a list.
std::string withoutControls(std::string_view text) {
    std::string clean;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            clean += '-';
            ++i;
        } else {
            clean += byte < 0x20 || byte == 0x7F ? '-' : text[i];
        }
    }
    return clean;
}

/// Names with a special meaning in a path or in a quarantine folder.
bool meansSomethingElse(const std::string& label) {
    const auto folded = lowercased(label);
    return label == "." || label == ".." || folded == manifestFileName || folded == journalFileName
           || folded == reserveFileName;
}

std::string label(const std::vector<AppRecord>& apps) {
    if (apps.empty()) return "App";
    if (apps.size() == 1) return safeLabel(apps.front().name);
    return fmt::format("{} apps", apps.size());
}

/// False without a Trash. A Trash that is a link would redirect what is moved or purged to an unchecked
/// place.
FileResult<bool> trashExists(const Path& trash, const FileSystem& files) {
    const auto info = files.info(trash);
    if (info && info->kind == FileKind::symbolicLink)
        return tl::unexpected(FileError{.fault = FileFault::throughLink, .path = trash});
    if (info) return true;
    if (info.error().fault == FileFault::missing) return false;
    return tl::unexpected(info.error());
}

} // namespace

bool isRunDocument(std::string_view name) {
    if (name.starts_with(unfinishedReplacementPrefix)) name.remove_prefix(unfinishedReplacementPrefix.size());
    return name == manifestFileName || name == journalFileName || name == reserveFileName;
}

std::string nameWhilePurged(const std::string& entry) {
    return shortened(std::string(purgedPrefix) + entry, longestFileName);
}

bool isNameWhilePurged(std::string_view entry) {
    return entry.starts_with(purgedPrefix);
}

bool isPartlyPurged(const Path& item, const Path& root, const FileSystem& files) {
    return item != root && item.isWithin(root)
           && files.exists(root / nameWhilePurged(item.components()[root.components().size()]));
}

std::string safeLabel(std::string_view applicationName) {
    auto name = validUtf8(applicationName);
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == ':' || c == '\\'; }, '-');
    name = withoutControls(trimmed(name));
    name = trimmed(shortened(std::move(name), longestFileName - longestSurrounding));
    return name.empty() || meansSomethingElse(name) ? "App" : name;
}

bool hasRunName(const Path& folder) {
    constexpr std::string_view stamp = " - 0000-00-00 00-00-00";
    auto name = folder.lastComponent();
    if (const auto number = name.rfind(" ("); number != name.npos && name.ends_with(')')) name.resize(number);
    if (!name.starts_with(quarantineFolderPrefix) || name.size() < stamp.size()) return false;
    std::string end = name.substr(name.size() - stamp.size());
    std::ranges::replace_if(
        end, [](char c) { return '0' <= c && c <= '9'; }, '0');
    return end == stamp;
}

QuarantineLayout makeLayout(const std::vector<AppRecord>& apps, Timestamp date, const UserEnvironment& user) {
    const auto folder = fmt::format("{}{} - {}", quarantineFolderPrefix, label(apps), folderStamp(date));
    return {.root = user.trash() / folder, .isBatch = apps.size() > 1};
}

FileResult<QuarantineLayout> createQuarantineFolder(const std::vector<AppRecord>& apps, Timestamp date,
                                                    const UserEnvironment& user, FileSystem& files) {
    if (auto trash = trashExists(user.trash(), files); !trash) return tl::unexpected(trash.error());
    if (auto created = files.createDirectories(user.trash()); !created)
        return tl::unexpected(created.error());

    auto layout = makeLayout(apps, date, user);
    const Path plain = layout.root;
    for (int attempt = 1;; ++attempt) {
        if (attempt > 1) layout.root = Path(fmt::format("{} ({})", plain.string(), attempt));
        const auto created = files.createDirectory(layout.root);
        if (created) return layout;
        if (created.error().fault != FileFault::exists || attempt == maxFolderAttempts)
            return tl::unexpected(created.error());
    }
}

FileResult<std::vector<Path>> listQuarantineFolders(const UserEnvironment& user, const FileSystem& files) {
    const auto there = trashExists(user.trash(), files);
    if (!there) return tl::unexpected(there.error());
    std::vector<Path> folders;
    if (!*there) return folders;

    const auto entries = files.list(user.trash());
    if (!entries) return tl::unexpected(entries.error());
    for (const auto& entry : *entries)
        if (entry.kind == FileKind::directory && entry.name.starts_with(quarantineFolderPrefix))
            folders.push_back(user.trash() / entry.name);
    return folders;
}

} // namespace tidwen
