#include "sweep/known_owners.h"

#include "base/parallel.h"
#include "base/text.h"
#include "scan/app_target.h"
#include "scan/bundle.h"
#include "scan/residue_matcher.h"
#include "scan/shared_names.h"

#include <algorithm>
#include <array>

namespace tidwen {
namespace {

// First pieces of identifiers in use; with an open list every dotted file name would look like one.
constexpr std::array<std::string_view, 36> firstPieces = {
    "com", "org", "net", "io", "app", "dev", "me",   "co",  "de", "uk", "fr",       "ch",
    "at",  "nl",  "se",  "jp", "cn",  "eu",  "us",   "ca",  "au", "it", "es",       "ru",
    "pl",  "br",  "in",  "tv", "fm",  "ai",  "info", "edu", "is", "no", "software", "tech"};

constexpr std::size_t shortestName = 5;
constexpr std::size_t teamLength = 10;
constexpr std::size_t uuidLength = 36;

template<class List>
bool contains(const List& list, std::string_view text) {
    return std::find(list.begin(), list.end(), text) != list.end();
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

/// "com.example" of "com.example.app"; empty without a second piece.
std::string_view vendorOf(std::string_view identifier) {
    const auto first = identifier.find('.');
    if (first == identifier.npos) return {};
    return identifier.substr(0, identifier.find('.', first + 1));
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

/// What one application owns.
struct Owned {
    std::vector<std::string> identifiers;
    std::vector<std::string> names;
    bool isComplete = false;
};

Owned readOwned(const FileSystem& files, const CodeSignatures& signatures, const Path& url,
                const StopToken& stop) {
    Owned owned;
    owned.names.push_back(url.stem());
    const auto bundle = Bundle::open(files, url);
    if (!bundle) return owned;
    const auto identifier = bundle->identifier();
    if (identifier) owned.identifiers.push_back(*identifier);
    owned.names.push_back(bundle->name());
    for (const auto* key : {"CFBundleName", "CFBundleExecutable"})
        if (const auto* name = bundle->infoString(key)) owned.names.push_back(*name);
    for (auto& embedded : embeddedBundleIDs(files, url, stop))
        owned.identifiers.push_back(std::move(embedded));
    for (const auto* folder : {"Contents/Library/LaunchAgents", "Contents/Library/LaunchDaemons"})
        for (const auto& job : listLaunchItems(files, url / folder, false, stop))
            owned.identifiers.push_back(job.label);
    for (const auto& group : signatures.read(url, bundle->executable()).applicationGroups)
        owned.identifiers.emplace_back(withoutGroupMarks(group));
    // One that was taken away in the middle may hold more than was seen.
    owned.isComplete = identifier && files.exists(bundle->contents / "Info.plist");
    return owned;
}

/// Labels of jobs that still work: their program is there, and not as the leftover of a removed application.
std::vector<std::string> livingJobs(const FileSystem& files, const UserEnvironment& user,
                                    const StopToken& stop) {
    std::vector<std::string> labels;
    for (const auto& folder : {user.libraryFolder() / "LaunchAgents", Path("/Library/LaunchAgents"),
                               Path("/Library/LaunchDaemons")})
        for (const auto& job : listLaunchItems(files, folder, false, stop)) {
            if (!job.programPath) continue;
            const Path program(*job.programPath);
            const bool isHelperTool = program.isWithinIgnoringCase(Path("/Library/PrivilegedHelperTools"));
            if (program.isAbsolute() && !isHelperTool && files.infoFollowingLinks(program))
                labels.push_back(job.label);
        }
    return labels;
}

} // namespace

bool isReverseDns(std::string_view identifier) {
    const auto parts = pieces(identifier);
    if (parts.size() < 3 || !contains(firstPieces, parts.front())) return false;
    return std::all_of(parts.begin(), parts.end(), [](std::string_view part) {
        return !part.empty() && std::all_of(part.begin(), part.end(), [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
        });
    });
}

std::string identifierInName(std::string_view name) {
    name = withoutWrappingExtension(name);
    if (name.ends_with(".sfl4")) name.remove_suffix(5);
    name = withoutGroupMarks(name);
    if (const auto dot = name.rfind('.'); dot != name.npos && isHardwareUuid(name.substr(dot + 1)))
        name = name.substr(0, dot);
    auto lower = lowercased(name);
    return isReverseDns(lower) ? lower : std::string();
}

KnownOwners KnownOwners::read(const FileSystem& files, const CodeSignatures& signatures,
                              const UserEnvironment& user, const std::vector<Path>& bundles,
                              const StopToken& stop) {
    std::vector<Owned> owned(bundles.size());
    parallelFor(bundles.size(), [&](std::size_t i) {
        if (!stop.stopRequested()) owned[i] = readOwned(files, signatures, bundles[i], stop);
    });
    KnownOwners owners;
    for (std::size_t i = 0; i < bundles.size(); ++i) {
        const auto& each = owned[i];
        if (each.isComplete) owners.known_.insert(bundles[i]);
        for (const auto& identifier : each.identifiers)
            owners.addIdentifier(identifier);
        for (const auto& name : each.names)
            owners.addName(name);
    }
    for (const auto& label : livingJobs(files, user, stop))
        owners.addIdentifier(label);
    owners.addIdentifier(tidwenBundleID);
    owners.close();
    return owners;
}

void KnownOwners::addIdentifier(std::string_view identifier) {
    auto lower = lowercased(identifier);
    if (lower.empty()) return;
    if (const auto vendor = vendorOf(lower); !vendor.empty()) vendors_.emplace(vendor);
    identifiers_.insert(std::move(lower));
}

void KnownOwners::addName(std::string_view name) {
    if (auto canonical = canonicalForm(name); characterCount(canonical) >= shortestName)
        names_.insert(std::move(canonical));
}

void KnownOwners::close() {
    index_ = IdentifierIndex({identifiers_.begin(), identifiers_.end()});
}

bool KnownOwners::claims(std::string_view identifier) const {
    if (identifier.starts_with("com.apple.") || identifier.find(".com.apple.") != identifier.npos)
        return true;
    if (isCommonIdentifier(identifier)) return true;
    if (vendors_.contains(vendorOf(identifier))) return true;
    for (auto rest = identifier;;) { // an owner's identifier may stand anywhere in it
        if (index_.longestContinued(rest) > 0) return true;
        const auto dot = rest.find('.');
        if (dot == rest.npos) break;
        rest.remove_prefix(dot + 1);
    }
    const auto parts = pieces(identifier);
    return std::any_of(parts.begin() + 1, parts.end(),
                       [&](std::string_view part) { return names_.contains(canonicalForm(part)); });
}

} // namespace tidwen
