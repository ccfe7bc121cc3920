#include "cli/intake.h"

#include "base/path.h"
#include "base/text.h"
#include "cli/suggestion.h"
#include "inventory/installed_applications.h"
#include "scan/applications/app_target.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/protected_apps.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace tidwen {

namespace {

std::string joined(const std::vector<std::string>& parts) {
    std::string result;
    for (const auto& part : parts)
        result += (result.empty() ? "" : ", ") + part;
    return result;
}

} // namespace

std::vector<Path> ApplicationFinder::withIdentifier(const std::string& wanted) const {
    std::vector<Path> found;
    for (const auto& app : installed_)
        if (folded(app.bundleID) == wanted) found.push_back(app.url);
    return found;
}

std::vector<Path> ApplicationFinder::withName(const std::string& wanted) const {
    std::vector<Path> found;
    for (const auto& app : installed_)
        if (folded(app.name) == wanted || folded(app.url.lastComponent()) == wanted
            || folded(app.url.stem()) == wanted)
            found.push_back(app.url);
    return found;
}

std::vector<std::string> ApplicationFinder::similarNames(const std::string& wanted) const {
    constexpr std::size_t enough = 5;
    std::vector<std::string> names;
    // A single character matches nearly every name.
    if (wanted.size() < 2) return names;
    for (const auto& app : installed_) {
        const auto name = app.url.stem();
        const bool isSimilar = folded(name).find(wanted) != std::string::npos
                               || folded(app.bundleID).find(wanted) != std::string::npos;
        if (isSimilar && names.size() < enough) names.push_back(name);
    }
    if (!names.empty()) return names;
    std::vector<std::string> known;
    for (const auto& app : installed_)
        known.insert(known.end(), {app.url.stem(), app.bundleID});
    if (auto meant = closest(wanted, known)) names.push_back(std::move(*meant));
    return names;
}

bool ApplicationFinder::leadsNowhere(const Path& path) const {
    const auto itself = files_.info(path);
    return itself && itself->kind == FileKind::symbolicLink && !files_.infoFollowingLinks(path);
}

/// A link in /Applications is not an installed application, but appears as one.
std::optional<Path> ApplicationFinder::linkCalled(const std::string& wanted) const {
    const Path folder("/Applications");
    const auto entries = files_.list(folder);
    if (!entries) return std::nullopt;
    for (const auto& [name, kind] : *entries)
        if (kind == FileKind::symbolicLink && (folded(name) == wanted || folded(name) == wanted + ".app"))
            return folder / name;
    return std::nullopt;
}

/// A ".." goes up from where a link before it leads, as it does for every other program.
Path ApplicationFinder::placeCalled(const std::string& path) const {
    Path named(path);
    if (!named.hasTraversal()) return named.standardized();
    const auto parts = named.components();
    const auto last = std::ranges::find(parts.rbegin(), parts.rend(), "..").base();
    Path above("/");
    for (auto part = parts.begin(); part != last; ++part)
        above = above / *part;
    const auto real = files_.resolve(above);
    if (!real) return named;
    Path place = *real;
    for (auto part = last; part != parts.end(); ++part) // a link there is the item that is named
        place = place / *part;
    return place;
}

/// A Mac's disk takes other letter cases and compositions of a name for the same; the disk that a volume lies
/// on may not.
std::optional<Path> ApplicationFinder::spelledAs(const Path& path) const {
    const auto wanted = folded(path.string());
    std::vector<Path> found;
    for (const auto& app : installed_)
        if (folded(app.url.string()) == wanted) found.push_back(app.url);
    return found.size() == 1 ? std::optional(found.front()) : std::nullopt;
}

tl::expected<Path, Message> ApplicationFinder::find(const std::string& word) const {
    if (word.starts_with('/')) {
        const auto path = placeCalled(word);
        if (leadsNowhere(path)) return tl::unexpected(Message{"cli.app.away"});
        if (files_.exists(path)) return path;
        if (auto onVolume = hostPaths_.macPath(word)) return std::move(*onVolume);
        if (auto installed = spelledAs(path)) return std::move(*installed);
        return tl::unexpected(Message{"cli.app.missing"});
    }
    const auto wanted = folded(word);
    auto found = withIdentifier(wanted);
    if (found.empty()) found = withName(wanted);
    if (found.size() == 1) return found.front();
    if (found.size() > 1) {
        std::vector<std::string> paths;
        paths.reserve(found.size());
        for (const auto& path : found)
            paths.push_back(path.string());
        return tl::unexpected(Message{"cli.app.ambiguous %@", {joined(paths)}});
    }
    if (const auto link = linkCalled(wanted)) {
        if (leadsNowhere(*link)) return tl::unexpected(Message{"cli.app.away"});
        return *link;
    }
    if (const auto onVolume = hostPaths_.macPath(word)) return *onVolume;
    if (const auto similar = similarNames(wanted); !wanted.empty() && !similar.empty())
        return tl::unexpected(Message{"cli.app.similar %@", {joined(similar)}});
    return tl::unexpected(Message{"cli.app.unknown"});
}

tl::expected<std::string, Message> ApplicationFinder::identifierOf(const Path& bundle) const {
    for (const auto& app : installed_)
        if (app.url == bundle && !app.bundleID.empty()) return app.bundleID;
    const auto read = readIdentities(files_, {bundle});
    if (read.empty() || read.front().bundleID.empty()) return tl::unexpected(Message{"cli.app.noIdentifier"});
    return read.front().bundleID;
}

tl::expected<NamedIdentifier, Message> ApplicationFinder::findIdentifier(const std::string& word) const {
    std::set<std::string> spellings;
    for (const auto& app : installed_)
        if (folded(app.bundleID) == folded(word) && !word.empty()) spellings.insert(app.bundleID);
    if (spellings.contains(word)) return NamedIdentifier{word, true};
    if (spellings.size() == 1) return NamedIdentifier{*spellings.begin(), true};
    if (spellings.size() > 1)
        return tl::unexpected(
            Message{"cli.identifier.ambiguous %@", {joined({spellings.begin(), spellings.end()})}});
    const auto bundle = find(word);
    if (!bundle && isIdentifier(word)) return NamedIdentifier{word, false};
    if (!bundle) return tl::unexpected(bundle.error());
    return identifierOf(*bundle).map([](const std::string& id) { return NamedIdentifier{id, true}; });
}

std::string unprotectCommand(const AppTarget& target, const CommandContext& context) {
    return context.commandLine({"protect", "remove", target.bundleID});
}

NamedBundles findBundles(const std::vector<std::string>& words, const ApplicationFinder& finder) {
    NamedBundles named;
    named.bundles.reserve(words.size());
    for (const auto& word : words) {
        if (auto bundle = finder.find(word))
            named.bundles.push_back(std::move(*bundle));
        else if (isIdentifier(word) && bundle.error().key != "cli.app.ambiguous %@")
            named.gone.push_back({word, bundle.error()});
        else
            named.failures.push_back({word.empty() ? "“”" : word, bundle.error()});
    }
    return named;
}

TargetIntake loadTargets(const std::vector<std::string>& words, const ApplicationFinder& finder,
                         const AppTargetLoader& loader, const Protection& protection) {
    auto named = findBundles(words, finder);
    for (auto& gone : named.gone) // a request names bundles
        named.failures.push_back({gone.bundleID, std::move(gone.otherwise)});
    auto intake = checkProtection(tidwen::loadTargets(named.bundles, loader), protection);
    intake.failures.insert(intake.failures.begin(), std::make_move_iterator(named.failures.begin()),
                           std::make_move_iterator(named.failures.end()));
    return intake;
}

} // namespace tidwen
