#include "sweep/known_owners.h"

#include "base/path_key.h"
#include "base/text.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle_names.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/residue_matcher.h"
#include "sweep/identifier_domains.h"

#include <algorithm>
#include <array>

namespace tidwen {
namespace {

constexpr std::size_t shortestName = 5;
constexpr std::size_t teamLength = 10;
constexpr std::size_t uuidLength = 36;

// Extensions of people's own files.
constexpr auto documentExtensions = std::to_array<std::string_view>(
    {"7z",  "aif",  "aiff", "bak",  "bz2", "csv", "doc",  "docx", "gif", "gz",    "heic", "html",
     "iso", "jpeg", "jpg",  "json", "m4a", "m4v", "md",   "mov",  "mp3", "mp4",   "old",  "pdf",
     "png", "ppt",  "pptx", "psd",  "rar", "rtf", "svg",  "tar",  "tgz", "tif",   "tiff", "tmp",
     "txt", "wav",  "xls",  "xlsx", "xml", "xz",  "yaml", "yml",  "zip", "sqlite"});

/// "photo.backup.2024.jpg" begins with a top-level domain, too; the traditional domains are no words.
bool isWord(std::string_view topLevelDomain) {
    return topLevelDomain.size() > 3;
}

bool isDocument(std::string_view lastPiece) {
    return std::find(documentExtensions.begin(), documentExtensions.end(), lastPiece)
           != documentExtensions.end();
}

std::vector<std::string_view> pieces(std::string_view text) {
    std::vector<std::string_view> result;
    for (std::size_t start = 0; start <= text.size();) {
        const auto dot = std::min(text.find('.', start), text.size());
        result.push_back(text.substr(start, dot - start));
        start = dot + 1;
    }
    return result;
}

bool isTeam(std::string_view text) {
    return text.size() == teamLength && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
           });
}

bool isHardwareUuid(std::string_view text) {
    return text.size() == uuidLength && text[8] == '-' && text[13] == '-' && text[18] == '-'
           && text[23] == '-';
}

std::string_view withoutGroupMarks(std::string_view name) {
    if (const auto dot = name.find('.'); dot != name.npos && isTeam(name.substr(0, dot)))
        name.remove_prefix(dot + 1);
    if (name.starts_with("group.")) name.remove_prefix(6);
    return name;
}

} // namespace

bool isReverseDns(std::string_view identifier) {
    const auto parts = pieces(identifier);
    if (parts.size() < 3 || !isTopLevelDomain(parts.front())) return false;
    if (isWord(parts.front()) && isDocument(parts.back())) return false;
    return std::all_of(parts.begin(), parts.end(), [](std::string_view part) {
        return !part.empty() && std::all_of(part.begin(), part.end(), [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
        });
    });
}

namespace {

/// The name without what wraps an identifier in it, in lower case.
std::string bareName(std::string_view name) {
    name = withoutWrappingExtension(name);
    if (name.ends_with(".sfl4")) name.remove_suffix(5);
    name = withoutGroupMarks(name);
    if (const auto dot = name.rfind('.'); dot != name.npos && isHardwareUuid(name.substr(dot + 1)))
        name = name.substr(0, dot);
    return lowercased(name);
}

} // namespace

std::string identifierInName(std::string_view name) {
    auto bare = bareName(name);
    return isReverseDns(bare) ? bare : std::string();
}

std::string looseIdentifierInName(std::string_view name) {
    auto bare = bareName(name);
    const bool isLoose = isIdentifier(bare) && !isReverseDns(bare) && !isDocument(pieces(bare).back());
    return isLoose && !makerOf(bare).empty() ? bare : std::string();
}

KnownOwners::KnownOwners(const BundleSnapshot& bundles) {
    for (std::size_t i = 0; i < bundles.bundles().size(); ++i) {
        const auto& bundle = bundles.bundles()[i];
        const auto& contents = bundles.contents(i);
        addIdentifier(bundle.bundleID);
        for (const auto& embedded : contents.embeddedIDs)
            addIdentifier(embedded);
        for (const auto& job : contents.jobs) {
            addIdentifier(job.label);
            addPrograms({job.argumentPaths.begin(), job.argumentPaths.end()});
            if (job.programPath && job.programPath->starts_with('/')) addPrograms({Path(*job.programPath)});
        }
        for (const auto& group : contents.groups)
            addIdentifier(withoutGroupMarks(group));
        // Helpers have names like "Updater" or "Agent", which do not identify an owner.
        for (const auto& name : contents.embeddedNames)
            if (auto canonical = canonicalForm(name); !canonical.empty()) {
                addWord(canonical);
                folders_.insert(std::move(canonical));
            }
        for (const auto& name : bundle.names)
            addName(name, bundle.isApplication);
        for (const auto& path : {bundle.url, bundle.place})
            bundles_.insert(pathKey(path).string());
        for (const auto& path : bundle.foundAs)
            bundles_.insert(pathKey(path).string());
        if (bundle.isApplication && bundle.isReadable)
            for (const auto& path : {bundle.url, bundle.place})
                inUse_.insert(pathKey(path).string());
    }
    addIdentifier(tidwenBundleID);
    index_ = IdentifierIndex({identifiers_.begin(), identifiers_.end()});
}

void KnownOwners::add(const std::vector<std::string>& identifiers) {
    for (const auto& identifier : identifiers)
        addIdentifier(identifier);
    index_ = IdentifierIndex({identifiers_.begin(), identifiers_.end()});
}

void KnownOwners::addWithoutMaker(const std::vector<std::string>& identifiers) {
    for (const auto& identifier : identifiers)
        if (auto lower = lowercased(identifier); isReverseDns(lower)) identifiers_.insert(std::move(lower));
    index_ = IdentifierIndex({identifiers_.begin(), identifiers_.end()});
}

void KnownOwners::addPrograms(const std::vector<Path>& programs) {
    for (const auto& program : programs)
        inUse_.insert(pathKey(program.standardized()).string());
}

void KnownOwners::addIdentifier(std::string_view identifier) {
    auto lower = lowercased(identifier);
    if (lower.empty()) return;
    if (const auto maker = makerOf(lower); !maker.empty()) {
        makers_.emplace(maker);
        folders_.insert(canonicalForm(maker.substr(maker.rfind('.') + 1)));
    }
    const auto parts = pieces(lower);
    for (auto part = parts.begin() + 1; part < parts.end(); ++part)
        addWord(canonicalForm(*part));
    identifiers_.insert(std::move(lower));
}

void KnownOwners::addWord(const std::string& canonicalName) {
    if (characterCount(canonicalName) >= shortestName) words_.insert(canonicalName);
}

void KnownOwners::addName(std::string_view name, bool isApplication) {
    auto canonical = canonicalForm(name);
    if (canonical.empty()) return;
    if (hasIdentifierForm(name)) identifiers_.insert(lowercased(name)); // its data may be called so
    addWord(canonical);
    if (isApplication) folders_.insert(canonical);
    if (characterCount(canonical) >= shortestName) names_.insert(std::move(canonical));
}

bool KnownOwners::claims(std::string_view identifier) const {
    if (isApplesIdentifier(identifier) || identifier.find(".com.apple.") != identifier.npos) return true;
    if (isCommonIdentifier(identifier)) return true;
    if (makers_.contains(makerOf(identifier))) return true;
    for (auto rest = identifier;;) { // an owner's identifier may be at any component
        if (index_.longestContinued(rest) > 0) return true;
        const auto dot = rest.find('.');
        if (dot == rest.npos) break;
        rest.remove_prefix(dot + 1);
    }
    const auto parts = pieces(identifier);
    return std::any_of(parts.begin() + 1, parts.end(),
                       [&](std::string_view part) { return names_.contains(canonicalForm(part)); });
}

bool KnownOwners::ownsFolder(std::string_view name) const {
    return folders_.contains(canonicalForm(name));
}

bool KnownOwners::mayMean(std::string_view canonicalName) const {
    if (folders_.contains(canonicalName)) return true;
    const auto longer = words_.lower_bound(canonicalName);
    if (longer != words_.end() && longer->starts_with(canonicalName)) return true;
    for (auto length = shortestName; length < canonicalName.size(); ++length)
        if (words_.contains(canonicalName.substr(0, length))) return true;
    return false;
}

bool KnownOwners::ownsPlace(const Path& path) const {
    const auto key = pathKey(path.standardized()).string();
    for (auto end = key.find('/', 1); end != key.npos; end = key.find('/', end + 1))
        if (bundles_.contains(std::string_view(key).substr(0, end))) return true;
    const auto parts = path.standardized().components();
    return std::any_of(parts.begin(), parts.end(), [&](const std::string& part) {
        const auto identifier = identifierInName(part);
        return !identifier.empty() && claims(identifier);
    });
}

bool KnownOwners::holdsWhatIsInUse(const Path& item) const {
    auto key = pathKey(item).string();
    if (inUse_.contains(key)) return true;
    key += '/';
    const auto next = inUse_.lower_bound(key);
    return next != inUse_.end() && next->starts_with(key);
}

} // namespace tidwen
