// Measures which share of real applications' leftovers a scan finds, and how often it takes another
// application's. Puts the leftovers of every application in the data on one volume and scans for each
// application in turn. Usage: attribution_bench FILE.jsonl (one application per line; bench/README.md
// describes the fields)

#include "base/log.h"
#include "base/path.h"
#include "base/property_list.h"
#include "base/text.h"
#include "base/texts.h"
#include "casks.h"
#include "platform/file_code_signatures.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/residue_matcher.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "scan/policy/trace_category.h"
#include "volume/volume_sources.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

using namespace tidwen;
using tidwen::bench::Cask;
using tidwen::bench::readCasks;
namespace fs = std::filesystem;

namespace {

struct NoReceipts : Receipts {
    std::vector<std::string> packageIDs() const override { return {}; }
    std::optional<Receipt> read(const std::string&) const override { return std::nullopt; }
};
struct NoKeychain : Keychain {
    std::vector<KeychainEntry> entries() const override { return {}; }
    std::int32_t deleteItems(KeychainItemClass, const std::string&) override { return keychainItemNotFound; }
};
struct NoExtensions : SystemExtensions {
    std::vector<SystemExtensionRecord> list() const override { return {}; }
};
struct NoLog : Log {
    void write(LogLevel, std::string_view) override {}
};

UserEnvironment user() {
    return {.home = Path("/Users/alice"), .userID = 501, .cacheFolder = {}, .temporaryFolder = {}};
}

AppTarget targetOf(const Cask& cask) {
    AppTarget target;
    target.bundleURL = Path("/Applications/" + cask.token + "/" + cask.bundleFile);
    target.bundleID = cask.bundleID;
    target.name = cask.name;
    target.executableName = cask.name;
    return target;
}

/// Creates folders, but files where only files of a certain kind are searched.
void lay(const fs::path& root, const Path& leftover) {
    const auto place = root / leftover.string().substr(1);
    const auto parent = leftover.parent().lastComponent();
    const bool isJob = parent.starts_with("Launch") && leftover.lowercasedExtension() == "plist";
    std::error_code ignored;
    fs::create_directories(
        isJob || parent == "DiagnosticReports" || parent == "CrashReporter" ? place.parent_path() : place,
        ignored);
    if (isJob)
        std::ofstream(place) << writeXmlPropertyList(PropertyListDictionary{{"Label", leftover.stem()}});
    else
        std::ofstream(place, std::ios::app).flush(); // fails if it is a folder
}

bool isNameTheIdentifier(const Path& leftover, const std::string& bundleID) {
    return lowercased(withoutWrappingExtension(leftover.lastComponent())) == lowercased(bundleID);
}

bool holds(const std::vector<Path>& paths, const Path& path) {
    return std::any_of(paths.begin(), paths.end(), [&](const Path& each) { return path.isWithin(each); });
}

struct Score {
    std::size_t paths = 0, found = 0, claimed = 0, foreign = 0, foreignUncontested = 0;
};

class Bench {
  public:
    Bench(const std::vector<Cask>& casks, const FileSystem& files) : casks_(casks), files_(files) {
        for (const auto& cask : casks)
            for (const auto& leftover : cask.leftovers)
                owners_.emplace(leftover, &cask);
        for (const auto& location : searchLocations(user()))
            locations_.emplace(location.url, location.style == SearchLocation::Style::vendorNestedChildren);
    }

    void run(const char* title, bool withHelpers, bool withOthers) {
        Score all, notIdentifier, inReach;
        for (const auto& cask : casks_) {
            const auto claimed = scan(cask, withHelpers, withOthers);
            std::vector<Path> paths;
            for (const auto& trace : claimed)
                if (const auto* path = movedPath(trace.action)) paths.push_back(*path);
            for (const auto& leftover : cask.leftovers) {
                const bool isFound = holds(paths, leftover);
                if (!isFound && std::getenv("MISS"))
                    std::printf("MISS %s\t%s\t%s\n", cask.bundleID.c_str(), cask.name.c_str(),
                                leftover.string().c_str());
                count(all, isFound);
                if (!isNameTheIdentifier(leftover, cask.bundleID)) count(notIdentifier, isFound);
                if (isInReach(leftover)) count(inReach, isFound);
            }
            for (const auto& trace : claimed)
                countClaim(all, cask, trace);
        }
        std::printf("%s\n", title);
        print("  recall, all paths", all.found, all.paths);
        print("  recall, name is not the identifier", notIdentifier.found, notIdentifier.paths);
        print("  recall, in a place that is searched", inReach.found, inReach.paths);
        print("  precision", all.claimed - all.foreign, all.claimed);
        print("  precision, uncontested alone", all.claimed - all.foreignUncontested, all.claimed);
    }

  private:
    static void count(Score& score, bool isFound) {
        ++score.paths;
        score.found += isFound;
    }

    static void print(const char* what, std::size_t part, std::size_t whole) {
        std::printf("%-44s %6.2f %%   %5zu of %5zu\n", what,
                    whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole), part,
                    whole);
    }

    /// A find that is only in the lists of others, or contains such an item, counts as wrong.
    void countClaim(Score& score, const Cask& cask, const Trace& trace) const {
        const auto* path = movedPath(trace.action);
        if (!path || trace.category == TraceCategory::application) return;
        ++score.claimed;
        if (holds(cask.leftovers, *path)) return;
        for (auto owner = owners_.lower_bound(*path); owner != owners_.end(); ++owner) {
            if (!owner->first.string().starts_with(path->string())) return;
            if (!owner->first.isWithin(*path) || holds(cask.leftovers, owner->first)
                || isKin(cask, *owner->second))
                continue;
            ++score.foreign;
            score.foreignUncontested += !trace.contestedBy;
            return;
        }
    }

    static bool isKin(const Cask& a, const Cask& b) {
        return a.family == b.family || lowercased(a.bundleID) == lowercased(b.bundleID);
    }

    bool isInReach(const Path& leftover) const {
        if (locations_.contains(leftover.parent())) return true;
        const auto vendor = locations_.find(leftover.parent().parent());
        return vendor != locations_.end() && vendor->second;
    }

    std::vector<Trace> scan(const Cask& cask, bool withHelpers, bool withOthers) const {
        auto target = targetOf(cask);
        if (withHelpers) target.loginItemBundleIDs = cask.helpers;
        std::vector<OwningBundle> installed;
        if (withOthers)
            for (const auto& other : casks_)
                if (!isKin(other, cask))
                    installed.push_back({.url = targetOf(other).bundleURL,
                                         .place = targetOf(other).bundleURL,
                                         .bundleID = other.bundleID,
                                         .name = other.name,
                                         .names = {other.name}});
        NoReceipts receipts;
        NoKeychain keychain;
        NoExtensions extensions;
        const FileCodeSignatures signatures(files_);
        NoLog log;
        Texts texts;
        ResidueScanner scanner({files_, receipts, keychain, extensions, texts, log}, user(),
                               std::make_shared<const BundleSnapshot>(
                                   files_, signatures, std::move(installed), BundleCoverage{}));
        return scanner.scan(target).traces;
    }

    const std::vector<Cask>& casks_;
    const FileSystem& files_;
    std::multimap<Path, const Cask*> owners_;
    std::map<Path, bool> locations_; ///< → whether it has vendors' folders
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: attribution_bench FILE.jsonl\n"), 2;
    const auto casks = readCasks(argv[1]);
    std::string folder = (fs::temp_directory_path() / "tidwen-attribution-XXXXXX").string();
    if (casks.empty() || !::mkdtemp(folder.data()))
        return std::fprintf(stderr, "no data or no place for it\n"), 1;
    for (const auto& cask : casks)
        for (const auto& leftover : cask.leftovers)
            lay(folder, leftover);
    if (const auto files = RootedFileSystem::open(folder)) {
        Bench bench(casks, **files);
        std::printf("%zu applications\n", casks.size());
        bench.run("each alone on its Mac, nothing known of what its bundle holds", false, false);
        bench.run("all installed together, nothing known of what the bundles hold", false, true);
        bench.run("each alone, other identifiers seen with it taken for helpers in its bundle", true, false);
        bench.run("all installed together, likewise", true, true);
    }
    fs::remove_all(folder);
}
