// Measures which share of removed applications' leftovers the sweep finds, and whether it claims what an
// installed one uses. Puts 120 installed and 300 removed applications of the data on a volume like a real
// disk: bundles with helpers, containers with their records, jobs with their programs, packages with their
// receipts. Usage: sweep_recall_bench FILE.jsonl [SEEDS]; MISS=1 also lists what is missed.

#include "base/log.h"
#include "base/path.h"
#include "base/property_list.h"
#include "base/text.h"
#include "casks.h"
#include "platform/file_code_signatures.h"
#include "platform/user_environment.h"
#include "posix/rooted_file_system.h"
#include "sample/bill_of_materials_writer.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "scan/policy/search_location.h"
#include "stopwatch.h"
#include "sweep/orphan_scanner.h"
#include "volume/volume_sources.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

using namespace tidwen;
using tidwen::bench::Cask;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t installedCount = 120;
constexpr std::size_t removedCount = 300;

struct NoLog : Log {
    void write(LogLevel, std::string_view) override {}
};

UserEnvironment user() {
    return {.home = Path("/Users/alice"), .userID = 501, .cacheFolder = {}, .temporaryFolder = {}};
}

bool isPattern(const Path& path) {
    return path.string().find_first_of("*?{[") != std::string::npos;
}

/// The volume while applications are added to it.
class Disk {
  public:
    explicit Disk(fs::path root) : root_(std::move(root)) {}

    void install(const Cask& cask) {
        const auto contents = bundle(cask) / "Contents";
        writeBundle(contents, cask.bundleID, cask.name);
        for (const auto& helper : cask.helpers)
            writeBundle(contents / "XPCServices" / (helper + ".xpc") / "Contents", helper, helper);
        leave(cask);
    }

    /// Writes the application's leftovers, whether it is installed or not.
    void leave(const Cask& cask) {
        for (const auto& leftover : cask.leftovers)
            if (!isPattern(leftover)) lay(leftover, cask);
        for (const auto& package : cask.packages)
            if (package.find_first_of("*?[(\\") == std::string::npos) layReceipt(package, cask);
    }

    static std::string bundlePlace(const Cask& cask) {
        return "/Applications/" + cask.token + "/" + cask.bundleFile;
    }

  private:
    fs::path at(const std::string& place) const { return root_ / place.substr(1); }
    fs::path bundle(const Cask& cask) const { return at(bundlePlace(cask)); }

    static void write(const fs::path& file, const std::string& content) {
        std::error_code ignored;
        fs::create_directories(file.parent_path(), ignored);
        std::ofstream(file, std::ios::binary) << content;
    }

    static void writeBundle(const fs::path& contents, const std::string& identifier,
                            const std::string& name) {
        write(contents / "Info.plist",
              writeXmlPropertyList(PropertyListDictionary{
                  {"CFBundleIdentifier", identifier}, {"CFBundleName", name}, {"CFBundleExecutable", name}}));
        write(contents / "MacOS" / name, "x");
    }

    void lay(const Path& leftover, const Cask& cask) const {
        const auto place = at(leftover.string());
        const auto parent = leftover.parent().lastComponent();
        std::error_code ignored;
        if (parent.starts_with("Launch") && leftover.lowercasedExtension() == "plist")
            return write(place, writeXmlPropertyList(PropertyListDictionary{
                                    {"Label", leftover.stem()},
                                    {"Program", bundlePlace(cask) + "/Contents/MacOS/" + cask.name}}));
        if (parent == "Containers")
            return write(place / ".com.apple.containermanagerd.metadata.plist",
                         writeXmlPropertyList(
                             PropertyListDictionary{{"MCMMetadataIdentifier", leftover.lastComponent()}}));
        const bool isFile = parent == "DiagnosticReports" || parent == "CrashReporter"
                            || leftover.lowercasedExtension() == "plist"
                            || leftover.lowercasedExtension() == "binarycookies";
        if (!isFile)
            fs::create_directories(place, ignored);
        else if (!fs::exists(place, ignored))
            write(place, "x");
    }

    void layReceipt(const std::string& package, const Cask& cask) const {
        const auto receipts = root_ / "private/var/db/receipts";
        write(receipts / (package + ".plist"),
              writeXmlPropertyList(
                  PropertyListDictionary{{"PackageIdentifier", package}, {"InstallPrefixPath", "/"}}));
        write(receipts / (package + ".bom"),
              writeBillOfMaterials({{bundlePlace(cask).substr(1) + "/Contents/Info.plist", false, 1}}));
    }

    fs::path root_;
};

struct Score {
    std::size_t left = 0, found = 0;
    std::size_t reachable = 0, reachableFound = 0; ///< in places that are searched
    std::size_t applications = 0, withNothing = 0;
    std::vector<std::string> falseClaims;
};

bool holds(const std::vector<Path>& paths, const Path& path) {
    return std::any_of(paths.begin(), paths.end(), [&](const Path& each) { return path.isWithin(each); });
}

/// In a folder that the sweep searches, or in a vendor's folder there.
bool isInReach(const Path& leftover) {
    static const auto locations = searchLocations(user());
    return std::any_of(locations.begin(), locations.end(), [&](const SearchLocation& location) {
        return leftover.parent() == location.url
               || (location.style == SearchLocation::Style::vendorNestedChildren
                   && leftover.parent().parent() == location.url);
    });
}

std::vector<Path> sweep(const fs::path& root) {
    const auto files = RootedFileSystem::open(root);
    if (!files) return {};
    const FileCodeSignatures signatures(**files);
    const VolumeReceipts receipts(**files);
    const VolumeRunningApplications running;
    NoLog log;
    InstalledBundles installed(**files, signatures, user());
    OrphanScanner scanner({**files, receipts, running, log}, user(),
                          [](const std::string&) { return false; });
    const auto result = scanner.scan(installed, {});
    for (const auto& gap : result.gaps)
        std::fprintf(stderr, "gap: %s\n", gap.place.string().c_str());
    std::vector<Path> found;
    for (const auto& group : result.groups)
        for (const auto& trace : group.traces)
            found.push_back(*movedPath(trace.action));
    return found;
}

void measure(Score& score, const std::vector<Path>& found, const std::vector<const Cask*>& installed,
             const std::vector<const Cask*>& removed) {
    std::multimap<std::string, const Cask*> used;
    for (const auto* cask : installed)
        for (const auto& leftover : cask->leftovers)
            used.emplace(leftover.string(), cask);
    for (const auto& path : found)
        for (auto it = used.lower_bound(path.string());
             it != used.end() && it->first.starts_with(path.string()); ++it)
            if (Path(it->first).isWithin(path)) {
                score.falseClaims.push_back(path.string() + " of " + it->second->token);
                break;
            }
    for (const auto* cask : removed) {
        std::size_t ofThis = 0, foundOfThis = 0;
        for (const auto& leftover : cask->leftovers) {
            // What an installed application also uses is not a leftover.
            if (isPattern(leftover) || used.contains(leftover.string())) continue;
            const bool isFound = holds(found, leftover);
            const bool canBe = isInReach(leftover);
            ++ofThis, foundOfThis += isFound;
            score.reachable += canBe, score.reachableFound += canBe && isFound;
            if (!isFound && std::getenv("MISS"))
                std::printf("MISS %s\t%s\t%s%s\n", cask->bundleID.c_str(), cask->name.c_str(),
                            leftover.string().c_str(), canBe ? "" : "\t(out of reach)");
        }
        score.left += ofThis, score.found += foundOfThis;
        if (ofThis == 0) continue;
        ++score.applications;
        if (foundOfThis == 0) ++score.withNothing;
    }
}

double share(std::size_t part, std::size_t whole) {
    return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return std::fprintf(stderr, "usage: sweep_recall_bench FILE.jsonl [SEEDS]\n"), 2;
    const auto casks = tidwen::bench::readCasks(argv[1]);
    const int seeds = argc > 2 ? std::atoi(argv[2]) : 4;
    if (casks.size() < installedCount + removedCount)
        return std::fprintf(stderr, "too few applications\n"), 1;

    Score score;
    for (int seed = 1; seed <= seeds; ++seed) {
        std::vector<const Cask*> order;
        for (const auto& cask : casks)
            order.push_back(&cask);
        std::shuffle(order.begin(), order.end(), std::mt19937(static_cast<unsigned>(seed)));
        const std::vector<const Cask*> installed(order.begin(), order.begin() + installedCount);
        // Editions of one application share their leftovers.
        std::vector<const Cask*> removed;
        for (auto each = order.begin() + installedCount; each != order.end() && removed.size() < removedCount;
             ++each)
            if (std::none_of(installed.begin(), installed.end(),
                             [&](const Cask* other) { return other->family == (*each)->family; }))
                removed.push_back(*each);

        std::string folder = (fs::temp_directory_path() / "tidwen-recall-XXXXXX").string();
        if (!::mkdtemp(folder.data())) return std::fprintf(stderr, "no place for a volume\n"), 1;
        Disk disk(folder);
        for (const auto* cask : removed)
            disk.leave(*cask);
        for (const auto* cask : installed)
            disk.install(*cask);
        measure(score, sweep(folder), installed, removed);
        fs::remove_all(folder);
    }

    bool holdsAll = tidwen::bench::printRatio("recall of what removed applications left",
                                              share(score.found, score.left), ">=", 0.75);
    tidwen::bench::printRatio("  of that in places that are searched",
                              share(score.reachableFound, score.reachable), ">=", 0.80);
    holdsAll &= tidwen::bench::printRatio("removed applications with nothing found",
                                          share(score.withNothing, score.applications), "<=", 0.08);
    std::printf("claimed though an installed application uses it: %zu\n", score.falseClaims.size());
    for (const auto& claim : score.falseClaims)
        std::printf("  %s\n", claim.c_str());
    return holdsAll ? 0 : 1;
}
