// Measures how much faster the matcher judges a name than a plain implementation that compares it with every
// other application in turn, and checks that both always agree. Usage: matcher_bench [APPLICATIONS]

#include "base/path.h"
#include "base/text.h"
#include "scan/applications/app_target.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/other_applications.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/trace.h"
#include "stopwatch.h"

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace tidwen;

namespace {

/// A straightforward implementation of the rules: a loop over every helper and every other application. With
/// `arePrepared` the loop's strings are computed once, which is the best a loop can do.
class PlainMatcher {
  public:
    PlainMatcher(const AppTarget& target, const std::vector<InstalledIdentity>& installed,
                 const std::vector<std::string>& helpers, bool arePrepared)
        : identifier_(lowercased(target.bundleID)),
          name_(target.name),
          canonicalName_(canonicalForm(target.name)),
          arePrepared_(arePrepared) {
        for (const auto& app : installed)
            if (app.url != target.bundleURL)
                others_.emplace_back(lowercased(app.bundleID), "." + lowercased(app.bundleID));
        for (const auto& helper : helpers)
            helpers_.push_back(lowercased(helper));
    }

    std::optional<MatchReason::Kind> match(std::string_view candidate) const {
        const auto prepared = withoutWrappingExtension(candidate);
        const auto lower = lowercased(prepared);
        if (lower.starts_with("com.apple.") || lower.starts_with(tidwenBundleID)) return std::nullopt;
        if (isOwn(lower, identifier_)) return MatchReason::Kind::exactBundleID;
        for (const auto& helper : helpers_)
            if (isOwn(lower, helper)) return MatchReason::Kind::exactBundleID;
        if (claims(lower)) return std::nullopt;
        return isNamed(prepared, lower) ? std::optional(MatchReason::Kind::nameToken) : std::nullopt;
    }

    bool claims(const std::string& lower) const {
        for (const auto& [other, dotted] : others_) {
            const auto found = arePrepared_ ? lower.find(dotted) : lower.find("." + other);
            if (found != lower.npos || lower.starts_with(other)) return true;
        }
        return false;
    }

  private:
    static bool isOwn(const std::string& lower, const std::string& own) {
        return lower == own || lower.starts_with(own + ".") || lower.ends_with("." + own)
               || lower.find("." + own + ".") != lower.npos;
    }

    bool isNamed(std::string_view prepared, const std::string& lower) const {
        if (canonicalForm(prepared) == canonicalName_) return true;
        const auto name = lowercased(name_);
        if (!lower.starts_with(name)) return false;
        const auto rest = lower.substr(name.size());
        if (rest.empty() || std::string_view(" -_.+").find(rest[0]) == std::string_view::npos) return false;
        const auto suffix = canonicalForm(rest.substr(1));
        if (suffix.find_first_not_of("0123456789") == suffix.npos) return true;
        for (const auto* allowed :
             {"helper", "agent", "daemon", "updater", "update", "service", "launcher", "crashreporter",
              "preferences", "support", "data", "cache", "caches", "logs"})
            if (suffix == allowed) return true;
        return false;
    }

    std::string identifier_;
    std::string name_;
    std::string canonicalName_;
    std::vector<std::pair<std::string, std::string>> others_; ///< each also with a leading dot
    std::vector<std::string> helpers_;
    bool arePrepared_;
};

/// Invented names; deterministic.
class Names {
  public:
    std::string word() {
        static const char* const syllables[] = {"mar", "lin", "cor", "vel", "la", "tor",  "ni", "quen",
                                                "sa",  "bri", "do",  "pax", "um", "ferr", "is", "ol"};
        std::string word;
        for (auto count = 2 + pick(2); count > 0; --count)
            word += syllables[pick(std::size(syllables))];
        return word;
    }
    std::size_t pick(std::size_t count) { return random_() % count; }
    std::string element(const std::vector<std::string>& list) { return list[pick(list.size())]; }

  private:
    std::mt19937 random_{20240229};
};

std::vector<InstalledIdentity> installedApplications(Names& names, std::size_t count) {
    static const std::vector<std::string> domains = {"com", "com", "com", "org", "net", "io", "app", "de"};
    std::vector<std::string> vendors;
    for (std::size_t i = 0; i < count / 3 + 1; ++i)
        vendors.push_back(names.word());
    std::vector<InstalledIdentity> installed;
    for (std::size_t i = 0; i < count; ++i) {
        const auto product = names.word();
        installed.push_back({Path("/Applications/" + product + std::to_string(i) + ".app"),
                             names.element(domains) + "." + names.element(vendors) + "." + product, product});
    }
    return installed;
}

/// Typical names in Library folders: mostly based on identifiers, the system's own, and plain names.
std::vector<std::string> candidateNames(Names& names, const std::vector<InstalledIdentity>& installed,
                                        const AppTarget& target) {
    static const std::vector<std::string> endings = {
        "", ".plist", ".savedState", ".binarycookies", ".helper", "-2", "x"};
    std::vector<std::string> candidates;
    for (int i = 0; i < 20'000; ++i) {
        const auto& other = installed[names.pick(installed.size())];
        switch (names.pick(10)) {
        case 0:
            candidates.push_back("com.apple." + names.word() + names.element(endings));
            break;
        case 1:
            candidates.push_back("ABCDE12345." + other.bundleID + ".shared");
            break;
        case 2:
            candidates.push_back(names.word() + " " + names.word());
            break;
        case 3:
            candidates.push_back(other.name + names.element(endings));
            break;
        case 4:
            candidates.push_back("com." + names.word() + "." + names.word() + names.element(endings));
            break;
        case 5:
            candidates.push_back((names.pick(4) ? "Caffe " : "Caf\xC3\xA9 ") + names.word());
            break;
        case 6:
            candidates.push_back((names.pick(4) ? names.word() : target.name) + names.element(endings));
            break;
        case 7:
            candidates.push_back((names.pick(4) ? "org." : target.bundleID) + names.element(endings));
            break;
        default:
            candidates.push_back(other.bundleID + names.element(endings));
            break;
        }
    }
    return candidates;
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 500;
    Names names;
    const auto installed = installedApplications(names, count + 1);
    AppTarget target;
    target.bundleURL = installed.back().url;
    target.bundleID = installed.back().bundleID;
    target.name = "Marlin Notes";
    const std::vector<std::string> helpers = {target.bundleID + ".login", "com.corvella.share.extension"};
    const auto candidates = candidateNames(names, installed, target);

    const PlainMatcher plain(target, installed, helpers, false);
    const PlainMatcher prepared(target, installed, helpers, true);
    std::vector<OwningBundle> owners;
    for (const auto& app : installed)
        owners.push_back({.url = app.url,
                          .place = app.url,
                          .bundleID = app.bundleID,
                          .name = app.name,
                          .names = {app.name}});
    const OtherApplications others(std::move(owners), target.bundleID);
    const ResidueMatcher matcher(target, others, helpers);

    std::size_t differences = 0;
    std::size_t matches = 0;
    std::vector<std::string> lower;
    for (const auto& candidate : candidates) {
        const auto expected = plain.match(candidate);
        const auto found = matcher.matchIdentifier(candidate);
        lower.push_back(lowercased(withoutWrappingExtension(candidate)));
        matches += expected.has_value();
        differences += expected != (found ? std::optional(found->kind) : std::nullopt);
        differences += plain.claims(lower.back()) != others.claims(lower.back());
    }
    std::printf("%zu other applications, %zu names, %zu of them the target's, %zu answers differ\n",
                installed.size() - 1, candidates.size(), matches, differences);

    std::size_t sum = 0; // keeps the compiler from dropping the work
    const auto judgeAll = [&](auto judge) {
        return [&, judge] {
            for (const auto& name : lower)
                sum += judge(name);
        };
    };
    const auto seconds = tidwen::bench::secondsOf(
        7, {judgeAll([&](const std::string& name) { return plain.claims(name); }),
            judgeAll([&](const std::string& name) { return prepared.claims(name); }),
            judgeAll([&](const std::string& name) { return others.claims(name); }),
            judgeAll([&](const std::string& name) { return plain.match(name).has_value(); }),
            judgeAll([&](const std::string& name) { return prepared.match(name).has_value(); }),
            judgeAll([&](const std::string& name) { return matcher.matchIdentifier(name).has_value(); })});
    const auto each = [&](std::size_t work) {
        return seconds[work] * 1e9 / static_cast<double>(lower.size());
    };
    std::printf("nanoseconds a name            plain loop   loop over prepared strings   Tidwen\n");
    std::printf("is it another application's   %10.0f   %26.0f   %6.0f\n", each(0), each(1), each(2));
    std::printf("all rules                     %10.0f   %26.0f   %6.0f\n", each(3), each(4), each(5));
    using tidwen::bench::printRatio;
    bool holds = printRatio("another application's, against prepared strings", each(1) / each(2), ">=", 30);
    holds &= printRatio("all rules, against the plain loop", each(3) / each(5), ">=", 30);
    std::printf("%-58s %8.2f\n", "all rules, against prepared strings", each(4) / each(5));
    return differences == 0 && holds && sum > 0 ? 0 : 1;
}
