#include "scan/matching/residue_matcher.h"

#include "base/path.h"
#include "base/text.h"
#include "scan/applications/identifier_form.h"
#include "scan/applications/shared_names.h"

#include <algorithm>
#include <array>

namespace tidwen {

namespace {

using Kind = MatchReason::Kind;

constexpr std::array<std::string_view, 8> wrappingExtensions = {
    "plist", "savedstate", "binarycookies", "lockfile", "sfl2", "sfl3", "bom", "log"};

// Names of Apple's own applications or of components in many applications.
constexpr std::array<std::string_view, 44> genericNames = {
    "notes",       "mail",    "music",     "books",       "home",        "news",       "maps",
    "photos",      "files",   "safari",    "preview",     "calendar",    "contacts",   "reminders",
    "shortcuts",   "stocks",  "weather",   "clock",       "chess",       "dictionary", "fonts",
    "terminal",    "console", "automator", "calculator",  "messages",    "podcasts",   "system",
    "finder",      "dock",    "settings",  "preferences", "utilities",   "helper",     "agent",
    "daemon",      "service", "updater",   "installer",   "uninstaller", "launcher",   "app",
    "application", "tools"};

constexpr std::string_view nameSeparators = " -_.+";

constexpr std::array<std::string_view, 14> nameSuffixes = {
    "helper",        "agent",       "daemon",  "updater", "update", "service", "launcher",
    "crashreporter", "preferences", "support", "data",    "cache",  "caches",  "logs"};

constexpr std::size_t shortestName = 5;
constexpr std::size_t dottedFormComponents = 3;

template<class List>
bool contains(const List& list, std::string_view text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// A name, lower-cased and composed; on the stack for plain ASCII, like nearly all of the many thousand names
/// in a scan.
class FoldedName {
  public:
    explicit FoldedName(std::string_view text) {
        if (!foldInPlace(text)) {
            text_ = folded(text);
            view_ = text_;
        }
    }
    FoldedName(const FoldedName&) = delete;
    FoldedName& operator=(const FoldedName&) = delete;

    std::string_view view() const { return view_; }

  private:
    bool foldInPlace(std::string_view text) {
        if (text.size() > buffer_.size()) return false;
        unsigned bits = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            bits |= static_cast<unsigned char>(text[i]);
            buffer_[i] = asciiLower(text[i]);
        }
        view_ = std::string_view(buffer_.data(), text.size());
        return bits < 0x80;
    }

    std::array<char, 256> buffer_; // the maximum length of a name
    std::string text_;
    std::string_view view_;
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The prefix must be lower-case ASCII.
bool beginsIgnoringCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size()
           && std::equal(prefix.begin(), prefix.end(), text.begin(),
                         [](char a, char b) { return a == asciiLower(b); });
}

std::size_t componentCount(std::string_view identifier) {
    return 1 + static_cast<std::size_t>(std::count(identifier.begin(), identifier.end(), '.'));
}

/// The last part of the text whose consecutive whole components are the identifier; empty when there is none.
std::string_view dottedForm(std::string_view text, std::string_view identifier) {
    std::string_view last;
    for (auto at = text.find(identifier); at != text.npos; at = text.find(identifier, at + 1)) {
        const auto end = at + identifier.size();
        if ((at == 0 || text[at - 1] == '.') && (end == text.size() || text[end] == '.'))
            last = text.substr(at, identifier.size());
    }
    return last;
}

/// Whether a folded text has this canonical form; most texts differ in the first letter.
bool hasCanonicalForm(std::string_view text, std::string_view canonical) {
    std::size_t matched = 0;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) return canonicalForm(text) == canonical;
        if (!isDigit(c) && (c < 'a' || c > 'z')) continue;
        if (matched == canonical.size() || canonical[matched] != c) return false;
        ++matched;
    }
    return matched == canonical.size();
}

/// The canonical form when it is distinctive enough for matching, else empty. Common folder names are not,
/// nor is an identifier that a bundle gives as its name, because it belongs to another.
std::string distinctive(std::string_view name) {
    auto canonical = canonicalForm(name);
    const bool saysTooLittle = characterCount(canonical) < shortestName || contains(genericNames, canonical)
                               || isCommonName(canonical) || hasIdentifierForm(name);
    return saysTooLittle ? std::string() : canonical;
}

} // namespace

std::string_view withoutWrappingExtension(std::string_view candidate) {
    const auto point = candidate.rfind('.');
    if (point == candidate.npos || point == 0) return candidate;
    const auto extension = candidate.substr(point + 1);
    for (const auto wrapping : wrappingExtensions)
        if (extension.size() == wrapping.size() && asciiLower(extension[0]) == wrapping[0]
            && beginsIgnoringCase(extension, wrapping))
            return candidate.substr(0, point);
    return candidate;
}

ResidueMatcher::ResidueMatcher(AppTarget target, OtherApplications others,
                               const std::vector<std::string>& helperBundleIDs,
                               const std::vector<std::string>& groupsOfLeaving)
    : target_(std::move(target)),
      others_(std::move(others)),
      identifier_(folded(target_.bundleID)),
      lowercasedName_(folded(target_.name)),
      canonicalName_(distinctive(target_.name)),
      canonicalExecutable_(distinctive(target_.executableName.value_or(""))),
      vendor_(vendorPiece(identifier_)) {
    isApples_ = isFromApple(identifier_);
    isTidwen_ = identifier_ == tidwenBundleID;
    if (!isIdentifier(identifier_) || isCommonIdentifier(identifier_)) identifier_.clear();
    identifierIsLong_ = componentCount(identifier_) >= dottedFormComponents;

    std::vector<std::string> helpers;
    for (const auto& declared : helperBundleIDs) {
        auto lower = folded(declared);
        embedded_.push_back(lower);
        if (!isIdentifier(lower)) unusableHelpers_.push_back(declared);
        if (!isIdentifier(lower) || others_.hasIdentifier(lower) || isCommonIdentifier(lower)
            || isGuarded(lower))
            continue;
        declaredHelpers_.emplace_back(lower, declared);
        helpers.push_back(std::move(lower));
    }
    std::sort(embedded_.begin(), embedded_.end());
    std::sort(declaredHelpers_.begin(), declaredHelpers_.end());
    helpers_ = IdentifierIndex(std::move(helpers));

    for (const auto& declared : target_.appGroups)
        if (!declared.empty() && !isGuarded(folded(declared))) groups_.push_back(declared);
    for (const auto& group : groupsOfLeaving)
        groupsOfLeaving_.push_back(GroupName::of(group));
}

bool ResidueMatcher::isGuarded(std::string_view lowercased) const {
    return (!isApples_ && isApplesIdentifier(lowercased))
           || (!isTidwen_
               && (lowercased.starts_with(tidwenBundleID)
                   || withoutGroupPrefixes(lowercased).starts_with(tidwenBundleID)));
}

bool ResidueMatcher::isOffLimits(std::string_view candidate) const {
    return isGuarded(FoldedName(candidate).view());
}

std::optional<MatchReason> ResidueMatcher::matchIdentifier(std::string_view candidate) const {
    const FoldedName name(candidate);
    if (isGuarded(name.view())) return std::nullopt;
    const auto lower = withoutWrappingExtension(name.view());
    if (!ownIdentifierIn(lower).empty()) return MatchReason{Kind::exactBundleID, target_.bundleID};
    if (const auto* helper = helperIn(lower)) return MatchReason{Kind::exactBundleID, *helper};
    if (others_.claims(lower)) return std::nullopt;
    if (matchesName(lower)) return MatchReason{Kind::nameToken, target_.name};
    return std::nullopt;
}

/// The part that is the target's identifier: the whole text or a dotted form in it; empty when there is none.
std::string_view ResidueMatcher::ownIdentifierIn(std::string_view lowercased) const {
    if (identifier_.empty()) return {};
    if (lowercased == identifier_) return lowercased;
    return identifierIsLong_ ? dottedForm(lowercased, identifier_) : std::string_view();
}

std::optional<MatchReason> ResidueMatcher::matchExecutable(std::string_view candidate) const {
    if (canonicalExecutable_.empty()) return std::nullopt;
    const FoldedName name(candidate);
    if (isGuarded(name.view())
        || !hasCanonicalForm(withoutWrappingExtension(name.view()), canonicalExecutable_))
        return std::nullopt;
    return MatchReason{Kind::executableName, *target_.executableName};
}

std::optional<MatchReason> ResidueMatcher::matchAppGroup(std::string_view candidate) const {
    if (groups_.empty()) return std::nullopt;
    const auto name = GroupName::of(candidate);
    if (isGuarded(name.lowercased)) return std::nullopt;
    for (const auto& declared : groups_)
        if (name == GroupName::of(declared)) {
            const bool isShared = std::ranges::find(groupsOfLeaving_, name) != groupsOfLeaving_.end()
                                  || others_.declaringGroup(declared);
            return MatchReason{isShared ? Kind::sharedAppGroup : Kind::appGroup, declared};
        }
    return std::nullopt;
}

std::optional<Claimant> ResidueMatcher::contestedBy(std::string_view candidate,
                                                    const MatchReason& reason) const {
    if (reason.kind == Kind::sharedAppGroup) return others_.declaringGroup(reason.value);
    if (reason.kind == Kind::declaredTarget) return std::nullopt;
    if (others_.copyOfTarget()) return others_.copyOfTarget();

    // An identifier is a stronger claim than any name. Of two identifiers, the target's must be more
    // specific, not just longer: a prefix ("group.", a team) before another application's identifier is
    // easily declared, and so is a group of that name. The name of a helper may continue another
    // application's identifier; that application then has the claim.
    const auto unwrapped = withoutWrappingExtension(candidate);
    const auto lower = folded(unwrapped);
    const auto canonical = canonicalForm(lower);
    const bool isExact = reason.kind == Kind::exactBundleID;
    const bool isGroup = reason.kind == Kind::appGroup;
    const auto own = isExact || isGroup ? ownIdentifierIn(lower) : std::string_view();
    if (auto other = others_.rivalOf(own, lower)) return other;
    // What looks like a wrapping may end another's identifier: "com.example.notes.log".
    if (unwrapped.size() != candidate.size()) {
        const auto whole = folded(candidate);
        const auto ownInWhole = isExact || isGroup ? ownIdentifierIn(whole) : std::string_view();
        if (auto other = others_.rivalOf(ownInWhole, whole)) return other;
        if (auto other = others_.embeddedRivalOf(ownInWhole, whole)) return other;
    }
    // An application's data may have its name, whatever form that has.
    if (auto namesake = others_.named(canonical)) return namesake;
    // Applications with the same name match the same forms of it ("Name Helper", "name-2").
    if (reason.kind == Kind::nameToken)
        if (auto namesake = others_.named(canonicalName_)) return namesake;
    // A group belongs to all who declare it, wherever they store something under its name.
    if (auto declarer = others_.declaringGroup(unwrapped, own.size() != lower.size())) return declarer;
    if (auto declarer = others_.groupRivalOf(own, lower)) return declarer;
    if (isGroup) return others_.embeddedRivalOf(own, lower);
    if (!isExact) return others_.ofVendor(canonical);
    return own.empty() ? others_.embedding(folded(reason.value)) : others_.embeddedRivalOf(own, lower);
}

std::optional<Attribution> ResidueMatcher::withContest(std::string_view candidate,
                                                       std::optional<MatchReason> reason) const {
    if (!reason) return std::nullopt;
    auto contested = contestedBy(candidate, *reason);
    return Attribution{std::move(*reason), std::move(contested)};
}

std::optional<Attribution> ResidueMatcher::attributeIdentifier(std::string_view candidate) const {
    return withContest(candidate, matchIdentifier(candidate));
}

std::optional<Attribution> ResidueMatcher::attribute(std::string_view candidate) const {
    auto found = attributeIdentifier(candidate);
    return found ? found : withContest(candidate, matchExecutable(candidate));
}

std::optional<Attribution> ResidueMatcher::attributeGroup(std::string_view candidate) const {
    if (auto found = withContest(candidate, matchAppGroup(candidate))) return found;
    auto found = attribute(candidate);
    if (found && !found->contestedBy) found->contestedBy = others_.declaringGroup(candidate);
    return found;
}

std::optional<Claimant> ResidueMatcher::otherOwnerOf(std::string_view candidate) const {
    if (const auto own = attributeIdentifier(candidate)) return own->contestedBy;
    const auto lower = folded(withoutWrappingExtension(candidate));
    auto other = others_.longestContinued(lower);
    return other ? other : others_.embedding(lower);
}

bool ResidueMatcher::isOwnIdentifier(std::string_view bundleID) const {
    const auto lower = folded(bundleID);
    if (lower.empty() || isGuarded(lower)) return false;
    const bool continues =
        identifierIsLong_ && lower.starts_with(identifier_) && lower[identifier_.size()] == '.';
    return lower == identifier_ || continues || std::ranges::binary_search(embedded_, lower);
}

bool ResidueMatcher::mayClaimBundle(std::string_view fileName) const {
    return attribute(Path(std::string(fileName)).stem()).has_value();
}

/// The helper identifier, as declared, that the candidate equals or contains in a dotted form.
const std::string* ResidueMatcher::helperIn(std::string_view lowercased) const {
    if (declaredHelpers_.empty()) return nullptr;
    for (std::size_t start = 0;;) {
        const auto rest = lowercased.substr(start);
        const auto found = rest.substr(0, helpers_.longestContinued(rest));
        const bool isWhole = !found.empty() && found.size() == lowercased.size();
        if (isWhole || (!found.empty() && componentCount(found) >= dottedFormComponents))
            return &std::lower_bound(
                        declaredHelpers_.begin(), declaredHelpers_.end(), found,
                        [](const auto& entry, std::string_view wanted) { return entry.first < wanted; })
                        ->second;
        const auto dot = lowercased.find('.', start);
        if (dot == lowercased.npos) return nullptr;
        start = dot + 1;
    }
}

bool ResidueMatcher::matchesName(std::string_view lowercased) const {
    if (canonicalName_.empty()) return false;
    if (hasCanonicalForm(lowercased, canonicalName_)) return true;
    if (!lowercased.starts_with(lowercasedName_)) return false;
    const auto rest = lowercased.substr(lowercasedName_.size());
    if (rest.empty() || nameSeparators.find(rest.front()) == nameSeparators.npos) return false;
    const auto suffix = canonicalForm(rest.substr(1));
    return std::all_of(suffix.begin(), suffix.end(), isDigit) || contains(nameSuffixes, suffix);
}

} // namespace tidwen
