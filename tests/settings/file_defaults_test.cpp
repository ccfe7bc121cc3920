#include "base/message.h"
#include "base/property_list.h"
#include "settings/app_preferences.h"
#include "settings/file_defaults.h"
#include "settings/settings_file.h"
#include "settings/shared_file.h"

#include "support/defaults_contract.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/trees.h"
#include "support/unprivileged.h"

#include <chrono>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tidwen {
namespace {

namespace fs = std::filesystem;

class FileDefaultsTest : public testing::Test {
  protected:
    FileDefaults open() { return FileDefaults(file_, log_); }
    void put(const std::string& content) const { test::writeFile(file_, content); }

    test::TemporaryFolder folder_;
    test::RecordingLog log_;
    fs::path file_ = folder_.path() / "new" / "tidwen" / "settings.plist";
};

TEST_F(FileDefaultsTest, KeepsEveryValueAPropertyListCanHold) {
    test::expectToKeepEveryValue([this] { return std::make_unique<FileDefaults>(file_, log_); });
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(file_.parent_path()).permissions(), fs::perms(0700));
}

TEST_F(FileDefaultsTest, ReadingLeavesNoTrace) {
    EXPECT_EQ(open().value("absent"), std::nullopt);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(FileDefaultsTest, ProcessesAtOnceLoseNothing) {
    constexpr int processes = 4, values = 25;
    const auto key = [](int process, int value) { return fmt::format("{}.{}", process, value); };
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p)
        if (children.push_back(::fork()); children.back() == 0) {
            auto defaults = open();
            bool isStored = true;
            for (int v = 0; v < values; ++v)
                isStored = defaults.setValue(key(p, v), v) && isStored;
            ::_exit(isStored ? 0 : 1);
        }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const auto defaults = open();
    for (int p = 0; p < processes; ++p)
        for (int v = 0; v < values; ++v)
            EXPECT_THAT(defaults.value(key(p, v)), Optional(PropertyListValue(v)));
}

TEST_F(FileDefaultsTest, TellsOfChangesOfOtherProcesses) {
    test::HandFiredEvents events;
    FileDefaults defaults(file_, log_, &events);
    AppPreferences preferences(defaults);
    const auto watch = defaults.watch([&] { preferences.reload(); });
    EXPECT_EQ(events.watched.at(0).string(), fs::weakly_canonical(file_).parent_path().string());
    EXPECT_TRUE(open().setValue("tidwen.catchTrashedApps", true));
    events.fire();
    EXPECT_TRUE(preferences.catchTrashedApps.get());
    put("garbage");
    events.fire();
    EXPECT_FALSE(preferences.catchTrashedApps.get()) << "defaults apply";
    put(std::string(5u << 20, ' '));
    events.fire();
    EXPECT_FALSE(preferences.catchTrashedApps.get()) << "and a huge file is not read";
    EXPECT_EQ(open().watch([] {}), nullptr);
}

TEST_F(FileDefaultsTest, WhatCannotBeReadIsSaidAndLeftAlone) {
    const auto putList = [&] { put(writeXmlPropertyList(PropertyListDictionary{{"a", 1}})); };
    const struct {
        const char* problem;
        std::function<void()> make;
    } cases[] = {
        {"damaged %@", [&] { put("garbage"); }},
        {"damaged %@", [&] { put(""); }},
        {"damaged %@",
         [&] {
             put(writeXmlPropertyList(PropertyListArray{"no", "dictionary"}));
         }},
        {"tooLarge %@", [&] { put(std::string(5u << 20, ' ')); }},
        {"unreadable %@", [&] { fs::create_directory(file_); }},
        {"unreadable %@", [&] { ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0); }},
        {"link %@", [&] { fs::create_symlink("nowhere", file_); }},
        {"mode %@ %@", [&] { putList(), fs::permissions(file_, fs::perms::none); }},
        {"folder %@", [&] { putList(), fs::permissions(file_.parent_path(), fs::perms::none); }},
    };
    for (const auto& [problem, make] : cases) {
        SCOPED_TRACE(problem);
        fs::create_directories(file_.parent_path());
        make();
        test::giveToUnprivileged(folder_.path());
        test::asUnprivileged([&] {
            auto defaults = open();
            EXPECT_EQ(defaults.value("a"), std::nullopt);
            EXPECT_EQ(defaults.problem().value_or(Message{}).key, std::string("settings.problem.") + problem);
            EXPECT_FALSE(defaults.setValue("a", 2));
            fs::permissions(file_.parent_path(), fs::perms::owner_all);
            fs::remove(file_);
            EXPECT_EQ(defaults.problem(), std::nullopt) << "repaired";
            EXPECT_TRUE(defaults.setValue("a", 2));
        });
        fs::remove_all(file_.parent_path());
    }
    put("garbage");
    EXPECT_FALSE(open().setValue("a", 1));
    EXPECT_EQ(test::contentOf(file_), "garbage");
}

TEST_F(FileDefaultsTest, OffersToTakeBackOnlyWhatIsItsOwn) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make what belongs to another user";
    const fs::path theirs = folder_.path() / "it's";
    fs::create_directories(theirs / "tidwen");
    fs::permissions(folder_.path(), fs::perms::all);
    test::asUnprivileged([&] {
        EXPECT_EQ(whyNotWritable(theirs / "none/settings.plist").key, "settings.store.folder %@");
        const auto taken = whyNotWritable(theirs / "tidwen/settings.plist");
        EXPECT_EQ(taken.key, "settings.store.owner %@ %@");
        EXPECT_THAT(taken.arguments.at(1).text(), testing::EndsWith(R"(/it'\''s/tidwen')"));
    });
}

TEST_F(FileDefaultsTest, AProcessThatHangsHoldsUpNoReader) {
    put(writeXmlPropertyList(PropertyListDictionary{{"a", 1}}));
    const auto held = SharedFile(file_).lock();
    ASSERT_TRUE(held.isHeld());
    FileDefaults defaults(file_, log_, nullptr, std::chrono::milliseconds(1));
    EXPECT_THAT(defaults.value("a"), Optional(PropertyListValue(1)));
    EXPECT_FALSE(defaults.setValue("a", 2));
    EXPECT_EQ(defaults.whyNotStored().key, "settings.store.busy %@");
    EXPECT_THAT(open().value("a"), Optional(PropertyListValue(1)));
}

TEST_F(FileDefaultsTest, WhatRootMakesBelongsToTheOwnerOfItsFolder) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another user";
    constexpr uid_t user = 501, group = 20;
    const auto expectHers = [&](const fs::path& path) {
        struct stat item {};
        ASSERT_EQ(::lstat(path.c_str(), &item), 0) << path;
        EXPECT_EQ(item.st_uid, user) << path;
        EXPECT_EQ(item.st_gid, group) << path;
    };
    ASSERT_EQ(::chown(folder_.path().c_str(), user, group), 0);
    EXPECT_TRUE(open().setValue("a", 1));
    for (const auto& made :
         {file_.parent_path().parent_path(), file_.parent_path(), file_, fs::path(file_.string() + ".lock")})
        expectHers(made);

    // Another user's link does not make root read or write what is not that user's.
    const auto roots = folder_.path() / "roots", link = folder_.path() / "link.plist",
               linkedFolder = folder_.path() / "linked";
    fs::create_directory(roots);
    test::writeFile(roots / "a.plist", writeXmlPropertyList(PropertyListDictionary{{"a", 1}}));
    fs::create_symlink(roots / "a.plist", link);
    fs::create_directory_symlink(roots, linkedFolder);
    for (const auto& hers : {link, linkedFolder})
        ASSERT_EQ(::lchown(hers.c_str(), user, group), 0);
    for (const auto& file : {link, linkedFolder / "a.plist", linkedFolder / "new.plist"}) {
        FileDefaults linked(file, log_);
        EXPECT_EQ(linked.value("a"), std::nullopt) << file;
        EXPECT_FALSE(linked.setValue("a", 2)) << file;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(roots), {}), 1);
}

TEST_F(FileDefaultsTest, WhatBelongsToAnotherAccountIsReadWhereItMayBeAndNotWritten) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can change the owner of a file";
    put(writeXmlPropertyList(PropertyListDictionary{{"a", 1}}));
    for (auto path = file_; path != folder_.path().parent_path(); path = path.parent_path())
        fs::permissions(path, fs::perms(path == file_ ? 0644 : 0755));
    test::asUnprivileged([&] {
        auto defaults = open();
        EXPECT_THAT(defaults.value("a"), Optional(PropertyListValue(1)));
        EXPECT_EQ(defaults.problem(), std::nullopt);
        EXPECT_FALSE(defaults.setValue("a", 2));
    });
}

TEST_F(FileDefaultsTest, ALinkedFileIsReplacedWhereItLies) {
    put(writeXmlPropertyList(PropertyListDictionary{{"a", 1}}));
    const auto link = folder_.path() / "settings.plist";
    fs::create_symlink(file_, link);
    EXPECT_TRUE(FileDefaults(link, log_).setValue("b", 2));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_THAT(open().value("b"), Optional(PropertyListValue(2)));

    put("another program's");
    EXPECT_FALSE(FileDefaults(link, log_).setValue("b", 3));
    EXPECT_EQ(test::contentOf(file_), "another program's")
        << "the target of a link is left alone when it is not a settings file";
}

} // namespace
} // namespace tidwen
