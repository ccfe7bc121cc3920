#include "base/message.h"
#include "base/path.h"
#include "base/property_list.h"
#include "base/texts.h"
#include "operations/screened_move.h"
#include "platform/budgeted_files.h"
#include "platform/code_signatures.h"
#include "platform/launchd.h"
#include "scan/applications/installed_app.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/protected_apps.h"
#include "system/startup_item.h"
#include "system/startup_item_scanner.h"
#include "system/startup_items_model.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/memory_defaults.h"
#include "support/stand_ins.h"
#include "support/unprivileged.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {
namespace {

using OwnerKind = StartupItem::Owner::Kind;

InstalledApp app(const std::string& name, const std::string& bundleID) {
    InstalledApp result;
    result.url = Path("/Applications/" + name + ".app");
    result.name = name;
    result.bundleID = bundleID;
    return result;
}

class NoSignatures : public CodeSignatures {
  public:
    CodeSignature read(const Path&, const Path&) const override { return {}; }
};
const NoSignatures signatures;

/// launchd in memory.
class FakeLaunchd : public Launchd {
  public:
    std::map<std::string, bool> disabledOverrides(bool isSystemDomain) const override {
        return isSystemDomain ? system : user;
    }
    tl::expected<void, LaunchdError> setEnabled(bool on, const std::string& label, const Path&,
                                                bool isSystemDomain) override {
        if (error) return tl::unexpected(*error);
        (isSystemDomain ? system : user)[label] = !on;
        return {};
    }
    std::map<std::string, bool> system, user;
    std::optional<LaunchdError> error;
};

TEST(StartupItemScanner, AttributesByTheFirstRuleThatFits) {
    const test::TemporaryVolume volume;
    volume.write("/usr/local/bin/tool", "x");
    volume.write("/Applications/Foo.app/Contents/MacOS/x", "x");
    volume.link("/usr/local/bin/foo", "/Applications/Foo.app/Contents/MacOS/x");
    InstalledBundles bundles(volume.files(), signatures, test::alice());
    const StartupItemScanner scanner(volume.files(), test::alice(), bundles,
                                     [](const std::string& id) { return id == "com.known.product"; });
    const std::vector<InstalledApp> apps = {app("Foo", "com.vendor.app"), app("Sync", "com.other.syncerpro"),
                                            app("Helper", "com.y.helperapp"), app("Kip", "com.kip.per")};
    const struct {
        const char *label, *program; ///< nullptr: none
        OwnerKind owner;
        const char* detail;
    } cases[] = {
        {"com.apple.foo", "/Applications/Foo.app/x", OwnerKind::apple, ""},
        {"anything", "/Applications/Foo.app/Contents/MacOS/x", OwnerKind::installed, "Foo"},
        {"com.kip.per.x", "/applications/FOO.app/Contents/MacOS/x", OwnerKind::installed, "Foo"},
        {"com.kip.per.x", "/usr/local/bin/foo", OwnerKind::installed, "Foo"}, // a link into it
        {"anything.else", "/Applications/Foo.application/x", OwnerKind::missing, ""},
        {"com.vendor.app.helper", nullptr, OwnerKind::installed, "Foo"},
        {"com.vendor.application", nullptr, OwnerKind::related, "Foo"},
        {"com.known.product.agent", nullptr, OwnerKind::registered, "com.known.product"},
        {"org.example.syncer", nullptr, OwnerKind::related, "Sync"},
        {"com.x.helper", nullptr, OwnerKind::missing, ""}, // a common word
        {"ABCDE12345.com.kip.per.x", "/usr/local/bin/tool", OwnerKind::installed, "Kip"},
        {"x.com.Kip.per", nullptr, OwnerKind::installed, "Kip"},
        {"x.com.kip.person", nullptr, OwnerKind::missing, ""},
        {"myjob", nullptr, OwnerKind::unknown, ""},
        {"foo.bar", "/nowhere", OwnerKind::missing, ""},
        {"foo.bar", "", OwnerKind::missing, ""},
        {"foo.bar", "/usr/local/bin/tool", OwnerKind::program, "/usr/local/bin/tool"},
        {"foo.bar", "/usr/local/bin/other", OwnerKind::missing, ""},
        {"foo.bar", "/usr/local/com.Kip.per/other", OwnerKind::installed,
         "Kip"}, // a folder with its identifier
        // Programs whose location is not on this disk.
        {"foo.bar", "/bin/zsh", OwnerKind::program, "/bin/zsh"},
        {"foo.bar", "/Volumes/Drive/tool", OwnerKind::program, "/Volumes/Drive/tool"},
        {"foo.bar", "tool", OwnerKind::program, "tool"},
        {"foo.bar", "/opt/maker/tool", OwnerKind::unknown, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        const auto program = c.program ? std::optional<std::string>(c.program) : std::nullopt;
        const auto owner = scanner.attributeOwner(c.label, program, apps);
        EXPECT_EQ(owner.kind, c.owner);
        const auto detail = !owner.name.empty()                   ? owner.name
                            : owner.kind == OwnerKind::registered ? owner.bundleID
                                                                  : owner.path;
        EXPECT_EQ(detail, c.detail);
        EXPECT_EQ(owner.bundle.has_value(), !owner.name.empty());
        const StartupItem item = {c.label, StartupItem::Plist{}, false, program, owner};
        EXPECT_EQ(hasLostProgram(item), owner.kind == OwnerKind::missing && !program.value_or("").empty());
    }
}

std::vector<InstalledApp> noApps(const FileSystem&) {
    return {};
}

TEST(StartupItemScanner, SharesOneBudgetWithTheInventory) {
    const test::TemporaryVolume volume;
    volume.write("/Library/LaunchAgents/a.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"Label", "com.gone.job"}}));
    InstalledBundles bundles(volume.files(), signatures, test::alice());
    const StartupItemScanner scanner(volume.files(), test::alice(), bundles,
                                     [](const std::string&) { return false; });
    const auto result = scanner.scan([](const FileSystem& files) {
        BudgetedFiles::budgetOf(files)->spendBytes(std::uint64_t{1} << 40);
        return std::vector<InstalledApp>();
    });
    EXPECT_GT(result.leftOut, 0u);
    EXPECT_THAT(result.items, testing::IsEmpty());
}

TEST(StartupItemScanner, SaysWhatItLeftOutAndCallsNothingGoneWithoutAllOwners) {
    const test::TemporaryVolume volume;
    InstalledBundles bundles(volume.files(), signatures, test::alice());
    const StartupItemScanner scanner(volume.files(), test::alice(), bundles,
                                     [](const std::string&) { return false; });
    const auto write = [&](int number) {
        volume.write("/Library/LaunchAgents/" + std::to_string(number) + ".plist",
                     writeXmlPropertyList(PropertyListDictionary{{"Label", "com.gone.job"}}));
    };
    write(0);
    const auto few = scanner.scan(noApps);
    ASSERT_EQ(few.items.size(), 1u);
    EXPECT_EQ(few.items[0].owner.kind, OwnerKind::missing);
    EXPECT_EQ(few.leftOut, 0u);

    for (int i = 0; i < 5'001; ++i)
        write(i);
    const auto many = scanner.scan(noApps);
    EXPECT_EQ(many.items.size(), 5'000u);
    EXPECT_EQ(many.leftOut, 1u);

    for (int i = 0; i < 2'100; ++i)
        volume.makeFolder("/Users/alice/Downloads/"
                          + std::to_string(i)); // more than the search limit for bundles
    EXPECT_EQ(scanner.scan(noApps).items.front().owner.kind, OwnerKind::unknown);
}

TEST(StartupItemScanner, KnowsJobsOfEveryBundle) {
    const test::TemporaryVolume volume;
    InstalledBundles bundles(volume.files(), signatures, test::alice());
    const StartupItemScanner scanner(volume.files(), test::alice(), bundles,
                                     [](const std::string&) { return false; });
    test::writeBundle(volume, "/opt/maker/Tool.app", "com.maker.tool", "Tool");
    test::writeBundle(volume, "/Elsewhere/Linked.app", "com.linked.tool", "Linked");
    volume.link("/Applications/Linked.app", "/Elsewhere/Linked.app");
    const struct {
        const char* label;
        PropertyListDictionary means;
        const char* owner; ///< name; nullptr: gone
    } jobs[] = {
        {"a.job.inside", {{"Program", "/opt/maker/Tool.app/Contents/MacOS/x"}}, "Tool"},
        {"b.job.linked", {{"Program", "/Applications/Linked.app/Contents/MacOS/x"}}, "Linked"},
        {"c.job.real", {{"Program", "/Elsewhere/Linked.app/Contents/MacOS/x"}}, "Linked"},
        {"com.maker.tool.agent", {}, "Tool"},
        {"d.job.named", {{"AssociatedBundleIdentifiers", PropertyListArray{"com.Maker.tool"}}}, "Tool"},
        {"e.job.gone", {{"AssociatedBundleIdentifiers", "com.nobodys.tool"}}, nullptr},
    };
    for (const auto& [label, means, owner] : jobs) {
        auto list = means;
        list["Label"] = label;
        volume.write(std::string("/Library/LaunchAgents/") + label + ".plist",
                     writeXmlPropertyList(std::move(list)));
    }
    const auto items = scanner.scan(noApps).items;
    for (const auto& [label, means, owner] : jobs) {
        const auto item =
            std::find_if(items.begin(), items.end(), [&](const auto& each) { return each.label == label; });
        ASSERT_NE(item, items.end());
        EXPECT_EQ(item->owner.kind, owner ? OwnerKind::installed : OwnerKind::missing) << label;
        EXPECT_EQ(item->owner.name, owner ? owner : "") << label;
    }
}

class StartupItems : public testing::Test, protected test::SteppedQueues {
  protected:
    void writeJob(const std::string& file, PropertyListDictionary job) {
        volume.write(file, writeXmlPropertyList(std::move(job)));
    }
    const StartupItem& item(const std::string& label) {
        for (const auto& each : model.result.get().items)
            if (each.label == label) return each;
        throw std::runtime_error("no job " + label);
    }

    test::TemporaryVolume volume;
    test::MemoryDefaults defaults;
    test::RecordingLog log;
    ProtectedApps protectedApps{defaults};
    FakeLaunchd launchd;
    Texts texts;
    InstalledBundles bundles{volume.files(), signatures, test::alice()};
    StartupItemScanner scanner{volume.files(), test::alice(), bundles,
                               [](const std::string&) { return false; }};
    std::vector<InstalledApp> apps = {app("Foo", "com.vendor.app")};
    std::vector<std::string> shown() const {
        return eachOf(model.rows.rows(), [](const StartupItemRow& row) {
            return row.item.label + (row.isSelected ? "+" : row.isSelectable ? "" : "!");
        });
    }
    StartupItemsModel model{{volume.files(), launchd, scanner, protectedApps, texts, main, background, log},
                            [this](const FileSystem&) { return apps; }};
};

TEST_F(StartupItems, ShowsOrphansFirstAndTakesLaunchdsWord) {
    writeJob("/Users/alice/Library/LaunchAgents/a.plist",
             {{"Label", "com.vendor.app.agent"}, {"Disabled", true}});
    writeJob("/Users/alice/Library/LaunchAgents/z.plist", {{"Label", "zz.gone.thing"}});
    writeJob("/Library/LaunchDaemons/d.plist", {{"Label", "com.vendor.app.daemon"}});
    writeJob("/Applications/Foo.app/Contents/Library/LaunchAgents/e.plist",
             {{"Label", "com.vendor.app.inner"}});
    launchd.system = {{"com.vendor.app.daemon", true}};
    model.load();
    EXPECT_TRUE(model.isLoading.get());
    settle();
    EXPECT_FALSE(model.isLoading.get());
    EXPECT_THAT(eachOf(model.result.get().items, &StartupItem::label),
                ElementsAre("zz.gone.thing", "com.vendor.app.agent", "com.vendor.app.daemon",
                            "com.vendor.app.inner"));
    EXPECT_THAT(model.result.get().unreadable, IsEmpty());
    EXPECT_EQ(model.switchState(item("com.vendor.app.agent")), SwitchState::off)
        << "disabled in its own property list";
    EXPECT_EQ(model.switchState(item("com.vendor.app.daemon")), SwitchState::off);
    EXPECT_EQ(model.switchState(item("com.vendor.app.inner")), SwitchState::systemSettings);
    EXPECT_EQ(model.switchState(item("zz.gone.thing")), SwitchState::none);
    EXPECT_EQ(model.whyNoSwitch(item("zz.gone.thing")), Message{"startup.noSwitch.missing"});
    EXPECT_FALSE(model.whyNoSwitch(item("com.vendor.app.agent")));
    EXPECT_EQ(model.whyItStays(item("com.vendor.app.inner")),
              (Message{"startup.stays.embedded %@", {"Foo"}}));
    launchd.user = {{"com.vendor.app.agent", false}};
    model.refreshDisabled();
    settle();
    EXPECT_EQ(model.switchState(item("com.vendor.app.agent")), SwitchState::on);
}

TEST_F(StartupItems, FindsEveryJobOfALabelAndSaysWhereItCouldNotLook) {
    const std::string own = "/Users/alice/Library/LaunchAgents/a.plist",
                      all = "/Library/LaunchAgents/b.plist";
    writeJob(own, {{"Label", "net.twice"}});
    writeJob(all, {{"Label", "net.twice"}});
    writeJob("/Library/LaunchAgents/c.plist", {{"Label", "org.maker.job"}});
    volume.write("/Library/LaunchAgents/damaged.plist", "?");
    volume.makeFolder("/Applications/Maker");
    test::giveToUnprivileged(volume.hostRoot());
    test::asUnprivileged([&] {
        std::filesystem::permissions(volume.host("/Applications/Maker"), std::filesystem::perms::none);
        model.load();
        settle();
        const auto idsNamed = [&](const std::string& word) {
            std::vector<std::string> ids;
            for (const auto* each : model.itemsNamed(word))
                ids.push_back(each->id());
            return ids;
        };
        EXPECT_THAT(idsNamed("net.twice"), testing::UnorderedElementsAre(own, all));
        EXPECT_THAT(idsNamed(all), ElementsAre(all));
        EXPECT_THAT(idsNamed("net.none"), IsEmpty());
        EXPECT_EQ(item("org.maker.job").owner.kind, OwnerKind::unknown) << "its owner may be there";
        EXPECT_THAT(model.result.get().unreadable,
                    testing::UnorderedElementsAre(Path("/Applications/Maker"),
                                                  Path("/Library/LaunchAgents/damaged.plist")));
    });
}

TEST_F(StartupItems, SwitchesOneJobAtATimeAndIsSilentWhenThePromptIsDismissed) {
    writeJob("/Library/LaunchDaemons/d.plist", {{"Label", "com.vendor.app.daemon"}});
    model.load();
    settle();
    const auto job = item("com.vendor.app.daemon");
    model.setEnabled(job, false);
    EXPECT_EQ(model.switchState(job), SwitchState::switching);
    model.setEnabled(job, true); // ignored: a change is in progress
    settle();
    EXPECT_EQ(model.switchState(job), SwitchState::off);

    launchd.error = LaunchdError{LaunchdError::Kind::authorizationCancelled, {}};
    model.setEnabled(job, true);
    settle();
    EXPECT_EQ(model.switchState(job), SwitchState::off);
    EXPECT_EQ(model.toggleError.get(), std::nullopt);

    launchd.error = LaunchdError{LaunchdError::Kind::failed, {"startup.toggle.failed %@", {"no"}}};
    model.setEnabled(job, true);
    settle();
    EXPECT_TRUE(model.toggleError.get().has_value());
    EXPECT_THAT(model.switching.get(), IsEmpty());
}

TEST_F(StartupItems, SelectsOnlyWhatMayBeRemovedAndForgetsWhatIsGone) {
    writeJob("/Users/alice/Library/LaunchAgents/z.plist", {{"Label", "zz.gone.thing"}});
    writeJob("/Users/alice/Library/LaunchAgents/a.plist", {{"Label", "com.vendor.app.agent"}});
    writeJob("/Library/LaunchAgents/m.plist", {{"Label", "com.apple.thing"}});
    protectedApps.toggle("com.vendor.app");
    model.load();
    settle();
    EXPECT_EQ(model.whyItStays(item("com.apple.thing")), Message{"startup.noSwitch.apple"});
    EXPECT_EQ(model.whyItStays(item("com.vendor.app.agent")), (Message{"error.protectedApp %@", {"Foo"}}));
    EXPECT_EQ(model.whyItStays(item("zz.gone.thing")), std::nullopt);
    for (const auto& each : model.result.get().items)
        model.toggleSelection(each);
    ASSERT_EQ(model.selectedItems().size(), 1u);
    EXPECT_EQ(model.selectedItems()[0].label, "zz.gone.thing");
    model.toggleSelectAllOrphans();
    EXPECT_THAT(model.selectedItems(), IsEmpty());
    model.toggleSelectAllOrphans();
    EXPECT_EQ(model.selectedItems().size(), 1u);
    protectedApps.toggle("zz.gone"); // which may be on a disk that is away
    EXPECT_FALSE(model.isSelectable(item("zz.gone.thing")));
    protectedApps.toggle("zz.gone");
    model.toggleSelection(item("zz.gone.thing"));
    protectedApps.toggle("com.vendor.app"); // for example in another window
    model.toggleSelection(item("com.vendor.app.agent"));
    EXPECT_EQ(model.selectedItems().size(), 2u);
    EXPECT_THAT(shown(), ElementsAre("zz.gone.thing+", "com.apple.thing!", "com.vendor.app.agent+"));
    protectedApps.toggle("com.vendor.app");
    EXPECT_THAT(shown(), ElementsAre("zz.gone.thing+", "com.apple.thing!", "com.vendor.app.agent!"));
    std::filesystem::remove(volume.host("/Users/alice/Library/LaunchAgents/z.plist"));
    int loads = 0;
    for (int i = 0; i < 2; ++i)
        model.load([&] { ++loads; });
    settle();
    EXPECT_EQ(loads, 2);
    EXPECT_THAT(model.selection.get(), IsEmpty());
    EXPECT_THAT(shown(), ElementsAre("com.apple.thing!", "com.vendor.app.agent!"));
}

TEST_F(StartupItems, SaysWhatHasFoundAnOwnerSinceItWasSelected) {
    const Path job("/Users/alice/Library/LaunchAgents/z.plist");
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"", [] {}},
        {"failure.inUseSince", [&] { apps.push_back(app("Thing", "zz.gone.thing")); }},
        {changedSinceKey,
         [&] {
             writeJob(job.string(), {{"Label", "org.other.job"}});
         }},
    };
    for (const auto& [reason, change] : changes) {
        writeJob(job.string(), {{"Label", "zz.gone.thing"}});
        model.load();
        settle();
        model.selection.set({});
        model.toggleSelectAllOrphans();
        const auto findInUse = model.selectedInUse();
        change();
        const auto inUse = findInUse();
        EXPECT_EQ(inUse.empty() ? "" : inUse.at(job).key, reason);
        apps.resize(1);
    }
}

TEST_F(StartupItems, MayEndWhileWorkIsOnItsWay) {
    {
        StartupItemsModel short_(
            {volume.files(), launchd, scanner, protectedApps, texts, main, background, log}, noApps);
        short_.load();
        background.drain();
    }
    settle();
}

} // namespace
} // namespace tidwen
