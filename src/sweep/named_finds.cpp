#include "sweep/named_finds.h"

#include "base/text.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/residue_matcher.h"
#include "sweep/orphan_scanner.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

namespace tidwen {
namespace {

constexpr std::size_t shortestName = 5;

/// Words that end many identifiers: they say what kind of program it is, not which.
constexpr auto plainWords = std::to_array<std::string_view>(
    {"agent",      "app",      "application", "assistant", "audio",    "backup",      "browser",
     "calendar",   "camera",   "client",      "cloud",     "cocoa",    "common",      "console",
     "control",    "daemon",   "database",    "debug",     "default",  "desktop",     "develop",
     "developer",  "display",  "download",    "editor",    "engine",   "export",      "extension",
     "extensions", "finder",   "framework",   "games",     "global",   "helper",      "images",
     "import",     "install",  "installer",   "keyboard",  "launcher", "license",     "library",
     "login",      "mac",      "main",        "macos",     "macosx",   "manager",     "media",
     "menubar",    "messages", "mobile",      "monitor",   "music",    "network",     "notes",
     "office",     "osx",      "panel",       "photo",     "photos",   "player",      "plugin",
     "plugins",    "preview",  "printer",     "projects",  "python",   "reader",      "recorder",
     "release",    "remote",   "scanner",     "screen",    "script",   "scripts",     "search",
     "server",     "service",  "services",    "settings",  "setup",    "shared",      "sounds",
     "support",    "system",   "templates",   "terminal",  "tools",    "uninstaller", "update",
     "updater",    "utility",  "version",     "video",     "viewer",   "widget"});

bool isPlainWord(std::string_view word) {
    return std::find(plainWords.begin(), plainWords.end(), word) != plainWords.end();
}

/// Names that identify exactly one group.
class GroupNames {
  public:
    GroupNames(const std::vector<OrphanGroup>& groups, const KnownOwners& owners) : owners_(owners) {
        for (std::size_t i = 0; i < groups.size(); ++i)
            for (const auto& name : {groups[i].name, nameInIdentifier(groups[i].bundleID)})
                add(canonicalForm(name), i);
    }

    /// The group's index; nullopt when no group, or more than one, has this name.
    std::optional<std::size_t> find(std::string_view canonicalName) const {
        const auto found = groups_.find(canonicalName);
        return found == groups_.end() ? std::nullopt : found->second;
    }

  private:
    void add(const std::string& name, std::size_t group) {
        if (!isTellingName(name) || owners_.mayMean(name)) return;
        const auto [known, isNew] = groups_.emplace(name, group);
        if (!isNew && known->second != group) known->second = std::nullopt;
    }

    const KnownOwners& owners_;
    std::map<std::string, std::optional<std::size_t>, std::less<>> groups_;
};

} // namespace

std::string nameInIdentifier(const std::string& identifier) {
    const auto last = identifier.rfind('.');
    if (last == identifier.npos) return identifier;
    auto name = identifier.substr(last + 1);
    if (!isPlainWord(canonicalForm(name))) return name;
    const auto before = last == 0 ? identifier.npos : identifier.rfind('.', last - 1);
    return before == identifier.npos ? name : identifier.substr(before + 1, last - before - 1);
}

bool isTellingName(std::string_view canonicalName) {
    return characterCount(canonicalName) >= shortestName && !isCommonName(canonicalName)
           && !isPlainWord(canonicalName);
}

void addNamedFinds(std::vector<OrphanGroup>& groups, const std::vector<NamedCandidate>& candidates,
                   const KnownOwners& owners) {
    const GroupNames names(groups, owners);
    for (const auto& candidate : candidates) {
        const auto found = names.find(canonicalForm(candidate.name));
        if (!found) continue;
        auto& group = groups[*found];
        group.traces.push_back(makeTrace(candidate.category, action::MovePath{candidate.path},
                                         {MatchReason::Kind::nameToken, candidate.name},
                                         Reversibility::reversible, candidate.path.string(), std::nullopt,
                                         candidate.requiresRoot));
        group.traces.back().mayHoldOthers = candidate.mayHoldOthers;
        if (canonicalForm(group.name) == canonicalForm(candidate.name)) group.name = candidate.name;
    }
}

} // namespace tidwen
