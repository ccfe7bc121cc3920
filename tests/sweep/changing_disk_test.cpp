// Listings of applications, scans and sweeps on a disk that changes meanwhile, that is far larger than any
// Mac's, or while they are stopped.

#include "base/path.h"
#include "base/property_list.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "inventory/app_inventory.h"
#include "inventory/installed_applications.h"
#include "platform/file_code_signatures.h"
#include "scan/applications/app_target.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/trace.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/watched_files.h"
#include "sweep/orphan_scanner.h"
#include "volume/volume_sources.h"

#include <filesystem>
#include <fmt/core.h>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

namespace fs = std::filesystem;
using testing::IsSubsetOf;

const std::string library = "/Users/alice/Library/";

std::string jobOfGone(const std::string& label) {
    return writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", "/gone"}});
}

/// Three applications with leftovers, and one that was removed.
class Disk {
  public:
    Disk() {
        for (const auto* name : {"ferry", "raft", "canoe", "gone"}) {
            const auto identifier = std::string("com.") + name + ".boat";
            if (std::string_view(name) != "gone") writeApplication(name);
            for (const auto* place : {"Caches", "Containers", "Application Support"})
                volume.write(fmt::format("{}{}/{}/data", library, place, identifier), std::string(5000, 'x'));
            // Claimed only by a helper inside the bundle.
            volume.write(fmt::format("{}Preferences/org.{}helper.sync.plist", library, name), "x");
            volume.write(fmt::format("{}LaunchAgents/{}.plist", library, identifier),
                         jobOfGone(identifier + ".agent"));
        }
    }

    void writeApplication(const std::string& name) const {
        const auto bundle = "/Applications/" + name + " boat.app";
        test::writeBundle(volume, bundle, "com." + name + ".boat", "Boat " + name);
        test::writeBundle(volume, bundle + "/Contents/Helpers/Sync.app", "org." + name + "helper.sync",
                          "Sync");
    }

    std::vector<std::string> orphans(const StopToken& stop = {}) {
        const VolumeReceipts receipts(files);
        InstalledBundles installed(files, signatures, test::alice());
        OrphanScanner scanner({files, receipts, running, log}, test::alice(),
                              [](const std::string&) { return false; });
        return eachOf(scanner.scan(installed, {}, stop).groups, &OrphanGroup::bundleID);
    }
    std::vector<std::string> inventory(const StopToken& stop = {}) {
        AppInventory list({files, signatures, running}, test::alice());
        auto apps = list.build(stop);
        list.measure(apps, stop);
        return eachOf(apps, &InstalledApp::bundleID);
    }
    std::vector<std::string> scan(const StopToken& stop = {}) {
        const VolumeReceipts receipts(files);
        const VolumeKeychain keychain;
        const VolumeSystemExtensions extensions(files);
        ResidueScanner scanner(
            {files, receipts, keychain, extensions, texts, log}, test::alice(),
            InstalledBundles(files, signatures, test::alice()).look(InstalledBundles::Reach::further, stop));
        const AppTarget target{.bundleURL = Path("/Applications/ferry boat.app"),
                               .bundleID = "com.ferry.boat",
                               .name = "Boat ferry"};
        return eachOf(scanner.scan(target, stop).traces, &Trace::displayName);
    }

    test::TemporaryVolume volume;
    test::WatchedFiles files{volume.files()};
    FileCodeSignatures signatures{files};
    test::FakeApplications running;
    test::RecordingLog log;
    Texts texts;
};

using Work = std::vector<std::string> (Disk::*)(const StopToken&);
constexpr std::pair<const char*, Work> works[] = {
    {"orphans", &Disk::orphans}, {"inventory", &Disk::inventory}, {"scan", &Disk::scan}};

/// Number of file system calls when nothing interferes.
std::size_t callsOf(Work work, Disk& disk) {
    disk.files.before(SIZE_MAX, {});
    (disk.*work)({});
    return disk.files.calls();
}

TEST(ChangingDisk, NeverMakesAnOrphanOfWhatIsInstalled) {
    const std::pair<const char*, std::function<void(Disk&)>> changes[] = {
        {"an application moves",
         [](Disk& disk) {
             disk.volume.makeFolder("/Applications/Boats");
             fs::rename(disk.volume.host("/Applications/ferry boat.app"),
                        disk.volume.host("/Applications/Boats/other name.app"));
         }},
        {"an application vanishes",
         [](Disk& disk) { fs::remove_all(disk.volume.host("/Applications/raft boat.app")); }},
        {"a location is removed", [](Disk& disk) { fs::remove_all(disk.volume.host(library + "Caches")); }},
        {"all applications are out of sight",
         [](Disk& disk) { fs::rename(disk.volume.host("/Applications"), disk.volume.host("/Away")); }}};
    Disk untouched;
    const auto calls = callsOf(&Disk::orphans, untouched);
    for (const auto& [what, change] : changes)
        for (std::size_t at = 1; at < calls; at += calls / 30) { // the first call lists the applications
            SCOPED_TRACE(std::string(what) + " before call " + std::to_string(at));
            Disk disk;
            disk.files.before(at, [&disk, &run = change] { run(disk); });
            EXPECT_THAT(disk.orphans(), IsSubsetOf({"com.gone.boat", "org.gonehelper.sync", "com.raft.boat",
                                                    "org.rafthelper.sync"}));
            disk.files.before(at, {});
            EXPECT_THAT(disk.inventory(), IsSubsetOf({"com.ferry.boat", "com.raft.boat", "com.canoe.boat"}));
        }
}

TEST(ChangingDisk, SeesAnApplicationThatComesDuringTheSweep) {
    Disk disk;
    EXPECT_THAT(disk.orphans(), Contains("com.gone.boat"));
    const auto half =
        callsOf(&Disk::orphans, disk) / 2; // the last look at the applications comes near the end
    for (std::size_t at = 0; at < half; at += half / 50) {
        fs::remove_all(disk.volume.host("/Applications/gone boat.app"));
        disk.files.before(at, [&] { disk.writeApplication("gone"); });
        EXPECT_THAT(disk.orphans(), testing::IsEmpty()) << "before call " << at;
    }
}

TEST(ChangingDisk, ListsEveryApplicationThatStays) {
    Disk untouched;
    const auto calls = callsOf(&Disk::inventory, untouched);
    for (std::size_t at = 0; at < calls; at += 3) {
        Disk disk;
        disk.files.before(at, [&] {
            fs::rename(disk.volume.host("/Applications/ferry boat.app"),
                       disk.volume.host("/Applications/yawl.app"));
            fs::remove_all(disk.volume.host("/Applications/raft boat.app"));
        });
        EXPECT_THAT(disk.inventory(), Contains("com.canoe.boat").Times(1)) << "before call " << at;
    }
}

TEST(ChangingDisk, EndsSoonWhereverItIsStopped) {
    for (const auto& [name, work] : works) {
        Disk disk;
        for (int i = 0; i < 60; ++i) {
            const auto number = std::to_string(i);
            test::writeBundle(disk.volume, "/Applications/" + number + ".app", "com.many.app" + number,
                              number);
            disk.volume.write(fmt::format("{}Containers/com.old{}.app/Container.plist", library, i), "x");
            disk.volume.write(fmt::format("{}LaunchAgents/com.old{}.plist", library, i),
                              jobOfGone("com.old.job" + number));
        }
        const auto calls = callsOf(work, disk);
        // Each thread finishes its current item: one bundle at most.
        constexpr std::size_t soon = 120;
        for (std::size_t at = 0; at < calls; at += calls / 40) {
            StopSource stop;
            disk.files.before(at, [&] { stop.requestStop(); });
            (disk.*work)(stop.token());
            EXPECT_LE(disk.files.calls(), at + soon)
                << name << " stopped before call " << at << " of " << calls;
        }
    }
}

TEST(HugeFolder, CostsNoMoreLooksThanASmallOne) {
    Disk disk;
    std::vector<std::size_t> before;
    for (const auto& [name, work] : works)
        before.push_back(callsOf(work, disk));
    for (const auto* place : {"Caches", "Preferences", "Group Containers"})
        for (int i = 0; i < 7'000; ++i)
            disk.volume.write(fmt::format("{}{}/com.apple.child{}", library, place, i), "");
    const auto found = disk.scan();
    EXPECT_THAT(found, Contains(library + "Caches/com.ferry.boat"));
    EXPECT_THAT(disk.orphans(), Contains("com.gone.boat"));
    for (std::size_t i = 0; i < std::size(works); ++i)
        EXPECT_LE(callsOf(works[i].second, disk), before[i] + 3) << works[i].first;

    for (int i = 0; i < 6'000; ++i)
        disk.volume.makeFolder("/Applications/Folder " + std::to_string(i));
    // The search of an endless disk is limited, and what was found still counts.
    EXPECT_THAT(disk.inventory(), Contains("com.canoe.boat"));
    EXPECT_LE(callsOf(&Disk::inventory, disk), before[1] + 10'100);
}

} // namespace
} // namespace tidwen
