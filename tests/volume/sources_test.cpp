#include "base/path.h"
#include "platform/code_signatures.h"
#include "platform/file_system.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "volume/volume_sources.h"

#include "base/property_list.h"
#include "platform/file_code_signatures.h"
#include "platform/read_budget.h"
#include "posix/patient_lock.h"
#include "sample/bill_of_materials_writer.h"
#include "sample/mach_o_stub.h"
#include "scan/permissions/privacy_database.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/sqlite_bytes.h"
#include "volume/privacy_database_editor.h"

#include <chrono>
#include <fmt/format.h>
#include <functional>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tidwen {
namespace {

const std::string team = "ABCDE12345";
const std::string group = "group.com.example.notes";

TEST(FileCodeSignatures, ReadsTheExecutableAndElseTheFilesBesideIt) {
    test::TemporaryVolume volume;
    const auto stub =
        writeMachOStub({.identifier = "com.example.notes", .teamID = team, .applicationGroups = {group}});
    volume.write("/Applications/Notes.app/Contents/MacOS/Notes", stub);
    volume.write("/Applications/Script.app/Contents/MacOS/Script", "#!/bin/sh\n");
    const std::string seal = "/Applications/Script.app/Contents/_CodeSignature/";
    volume.write(seal + "CodeDirectory", stub.substr(stub.find("\xfa\xde\x0c\x02")));
    volume.write(seal + "CodeEntitlements", stub.substr(stub.find("\xfa\xde\x71\x71")));
    volume.makeFolder("/Applications/Folder.app/Contents/MacOS/Folder");
    volume.link("/Applications/Out.app/Contents/MacOS/Out", "../../../../../../../../../bin/sh");

    const FileCodeSignatures signatures(volume.files());
    const auto read = [&](const std::string& name) {
        const Path bundle("/Applications/" + name + ".app");
        return signatures.read(bundle, bundle / "Contents/MacOS" / name);
    };
    const CodeSignature expected{team, {group}};
    EXPECT_EQ(read("Notes"), expected);
    EXPECT_EQ(read("Script"), expected);
    for (const char* name : {"Folder", "Out", "None"})
        EXPECT_EQ(read(name), CodeSignature{}) << name;
}

TEST(VolumeReceipts, DamageCostsNoMoreThanWhatIsDamaged) {
    test::TemporaryVolume volume;
    const std::string folder = "/private/var/db/receipts/";
    const auto bill = writeBillOfMaterials({{"Applications/Notes.app", true}});
    const auto list = [](PropertyListValue location) {
        return writeXmlPropertyList(PropertyListDictionary{{"InstallPrefixPath", std::move(location)}});
    };
    volume.write(folder + "cut.plist", list("Applications"));
    volume.write(folder + "cut.bom", bill.substr(0, bill.size() / 2));
    volume.write(folder + "no-bill.plist", list("Library/../Applications/./"));
    volume.write(folder + "wrong-type.plist", list(7));
    volume.write(folder + "wrong-type.bom", bill);
    volume.write(folder + "zero-byte.plist", writeBinaryPropertyList(PropertyListDictionary{
                                                 {"InstallPrefixPath", std::string("a\0b", 3)}}));
    volume.write(folder + "garbage.plist", "garbage");
    volume.write(folder + "array.plist", writeXmlPropertyList(PropertyListArray{}));
    volume.write(folder + "lonely.bom", bill);
    volume.write(folder + ".plist", list(""));
    volume.write(folder + "caf\xe9.plist", list(""));
    volume.makeFolder(folder + "folder.plist");

    const VolumeReceipts receipts(volume.files());
    EXPECT_THAT(receipts.packageIDs(),
                ElementsAre("array", "cut", "garbage", "no-bill", "wrong-type", "zero-byte"));
    EXPECT_EQ(receipts.read("cut"),
              (Receipt{"cut", Path("/Applications"), {}, Path("/private/var/db/receipts/cut.bom")}));
    EXPECT_EQ(receipts.read("no-bill"),
              (Receipt{"no-bill", Path("/Applications"), {}, Path("/private/var/db/receipts/no-bill.bom")}));
    EXPECT_EQ(receipts.read("wrong-type"),
              (Receipt{"wrong-type", Path("/"), {"Applications", "Applications/Notes.app"}}));
    for (const std::string unusable : {"zero-byte", "garbage", "array"})
        EXPECT_EQ(receipts.read(unusable),
                  (Receipt{unusable, Path(), {}, Path(folder + unusable + ".plist")}));
    EXPECT_EQ(receipts.read("lonely"), std::nullopt);
}

TEST(VolumeSystemExtensions, SkipsWhatHasTheWrongType) {
    using Dictionary = PropertyListDictionary;
    test::TemporaryVolume volume;
    const VolumeSystemExtensions extensions(volume.files());
    EXPECT_THAT(extensions.list(), IsEmpty());
    const auto write = [&](PropertyListValue value) {
        volume.write("/Library/SystemExtensions/db.plist", writeBinaryPropertyList(value));
    };
    write(PropertyListArray{"extensions"});
    EXPECT_THAT(extensions.list(), IsEmpty());
    write(Dictionary{{"extensions", Dictionary{{"identifier", "com.example.a"}}}});
    EXPECT_THAT(extensions.list(), IsEmpty());
    write(Dictionary{
        {"extensions", PropertyListArray{
                           "text",
                           7,
                           Dictionary{{"identifier", 7}, {"teamID", team}},
                           Dictionary{{"identifier", ""}, {"teamID", team}},
                           Dictionary{{"identifier", "com.example.noteam"}},
                           Dictionary{{"identifier", "com.example.a"}, {"teamID", team}, {"container", 1}},
                           Dictionary{{"identifier", "com.example.b"},
                                      {"teamID", team},
                                      {"container", Dictionary{{"bundlePath", PropertyListArray{}}}}},
                       }}});
    EXPECT_THAT(extensions.list(),
                ElementsAre(SystemExtensionRecord{team, "com.example.a", "com.example.a"},
                            SystemExtensionRecord{team, "com.example.b", "com.example.b"}));
}

TEST(VolumeLaunchd, NewOverridesStandAboveOldOnes) {
    test::TemporaryVolume volume;
    const auto user = test::alice();
    const VolumeLaunchd launchd(volume.files(), user);
    EXPECT_THAT(launchd.disabledOverrides(false), IsEmpty());
    const auto old = [](bool isDisabled) { return PropertyListDictionary{{"Disabled", isDisabled}}; };
    volume.write("/private/var/db/launchd.db/com.apple.launchd.peruser.501/overrides.plist",
                 writeXmlPropertyList(PropertyListDictionary{{"com.example.old", old(true)},
                                                             {"com.example.both", old(true)},
                                                             {"com.example.odd", 7}}));
    volume.write("/private/var/db/com.apple.xpc.launchd/disabled.501.plist",
                 writeBinaryPropertyList(
                     PropertyListDictionary{{"com.example.both", false}, {"com.example.text", "yes"}}));
    volume.write("/private/var/db/com.apple.xpc.launchd/disabled.plist", "damaged");
    EXPECT_THAT(launchd.disabledOverrides(false),
                ElementsAre(Pair("com.example.both", false), Pair("com.example.old", true)));
    EXPECT_THAT(launchd.disabledOverrides(true), IsEmpty());
}

TEST(VolumeLaunchd, SwitchesOneJobAndKeepsTheOthers) {
    test::TemporaryVolume volume;
    const auto user = test::alice();
    VolumeLaunchd launchd(volume.files(), user);
    const Path plist("/Library/LaunchDaemons/j.plist");
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.first", plist, true)) << "creates the missing list";
    EXPECT_TRUE(launchd.setEnabled(false, "com.example.job", plist, true));
    EXPECT_TRUE(launchd.setEnabled(true, "com.example.job", plist, true));
    EXPECT_THAT(launchd.disabledOverrides(true),
                ElementsAre(Pair("com.example.first", true), Pair("com.example.job", false)));
    EXPECT_TRUE(launchd.disabledOverrides(false).empty());

    const std::string list = "/private/var/db/com.apple.xpc.launchd/disabled.501.plist";
    for (const char* damaged : {"garbage", "<plist><array/></plist>"}) {
        volume.write(list, damaged);
        EXPECT_FALSE(launchd.setEnabled(false, "com.example.job", plist, false));
        EXPECT_EQ(volume.read(list), damaged) << "an unreadable list is not overwritten";
    }
}

/// Runs `change(0)` … `change(count - 1)` in that many concurrent processes; all must succeed.
void inProcessesAtOnce(int count, const std::function<bool(int)>& change) {
    std::vector<pid_t> children;
    for (int number = 0; number < count; ++number)
        if (children.push_back(::fork()); children.back() == 0) ::_exit(change(number) ? 0 : 1);
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
}

TEST(SharedFiles, ProgramsThatChangeOneAtOnceLoseNothing) {
    constexpr int programs = 4, changes = 20;
    test::TemporaryVolume volume;
    const auto user = test::alice();
    const auto label = [](int number) { return fmt::format("com.example.job{}", number); };
    inProcessesAtOnce(programs, [&](int program) {
        bool allDone = true;
        for (int n = 0; n < changes; ++n)
            allDone = VolumeLaunchd(volume.files(), user)
                          .setEnabled(false, label(program * changes + n), Path("/x"), true)
                      && allDone;
        return allDone;
    });
    EXPECT_EQ(VolumeLaunchd(volume.files(), user).disabledOverrides(true).size(), programs * changes);

    const Path database("/Users/alice/Library/Application Support/com.apple.TCC/TCC.db");
    std::string statements = "CREATE TABLE access (service TEXT, client TEXT, client_type INTEGER);";
    for (int n = 0; n < programs * changes; ++n)
        statements += fmt::format("INSERT INTO access VALUES ('{}', 'com.example.app', 0);", label(n));
    volume.write(database.string(), test::databaseOf(statements));
    inProcessesAtOnce(programs, [&](int program) {
        bool allDone = true;
        for (int n = 0; n < changes; ++n)
            allDone = !deletePermissionRows(volume.files(), database, "com.example.app",
                                            label(program * changes + n))
                      && allDone;
        return allDone;
    });
    const auto left = readPrivacyDatabase(volume.files(), database);
    ASSERT_TRUE(left);
    const auto countRow = [](void* rows, int, char**, char**) { return ++*static_cast<int*>(rows), 0; };
    int rows = 0;
    EXPECT_EQ(sqlite3_exec(left->handle(), "SELECT * FROM access", countRow, &rows, nullptr), SQLITE_OK);
    EXPECT_EQ(rows, 0);
}

TEST(SharedFiles, AProgramThatHangsIsNotWaitedForForEver) {
    test::TemporaryVolume volume;
    volume.makeFolder("/folder");
    const auto held = volume.files().lock(Path("/folder"));
    const auto refused = lockPatiently(volume.files(), Path("/folder"), std::chrono::milliseconds(1));
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().fault, FileFault::busy);
}

TEST(VolumeSystemExtensions, ReadsALongListInLinearTime) {
    test::TemporaryVolume volume;
    PropertyListArray extensions;
    for (int i = 0; i < 100'000; ++i)
        extensions.emplace_back(PropertyListDictionary{
            {"identifier", "com.example.extension" + std::to_string(i % 99'999)}, {"teamID", team}});
    volume.write("/Library/SystemExtensions/db.plist",
                 writeBinaryPropertyList(PropertyListDictionary{{"extensions", std::move(extensions)}}));
    const auto start = ReadBudget::threadTime();
    EXPECT_EQ(VolumeSystemExtensions(volume.files()).list().size(), 99'999u);
    EXPECT_LT(ReadBudget::threadTime() - start,
              std::chrono::seconds(10)); // comparing all pairs would take minutes
}

} // namespace
} // namespace tidwen
