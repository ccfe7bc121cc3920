#include "settings/app_preferences.h"
#include "settings/file_defaults.h"

#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"
#include "support/trees.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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
    const PropertyListDictionary values{
        {"text", "Größe <&> \U0001F5D1"},
        {"control characters", std::string("a\x01\x1b\0z", 5)},
        {"switch", true},
        {"number", -7},
        {"list", PropertyListArray{"com.example.a", PropertyListDictionary{{"tag", PropertyListArray{}}}}},
    };
    for (const auto& [key, value] : values)
        EXPECT_TRUE(open().setValue(key, value)) << key;
    for (const auto& [key, value] : values)
        EXPECT_THAT(open().value(key), Optional(value)) << key;
    EXPECT_TRUE(open().setValue("text", std::nullopt));
    EXPECT_EQ(open().value("text"), std::nullopt);
    EXPECT_THAT(open().value("switch"), Optional(PropertyListValue(true)));
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(file_.parent_path()).permissions(), fs::perms(0700));
}

TEST_F(FileDefaultsTest, ReadingLeavesNoTrace) {
    EXPECT_EQ(open().value("absent"), std::nullopt);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(FileDefaultsTest, TwoInstancesSeeAndKeepEachOthersValues) {
    auto one = open(), other = open();
    EXPECT_TRUE(one.setValue("a", 1));
    EXPECT_TRUE(other.setValue("b", 2));
    EXPECT_THAT(one.value("b"), Optional(PropertyListValue(2)));
    EXPECT_TRUE(one.setValue("b", 3));
    EXPECT_THAT(other.value("b"), Optional(PropertyListValue(3)));
    EXPECT_THAT(open().value("a"), Optional(PropertyListValue(1)));
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

TEST_F(FileDefaultsTest, DamagedFilesAreKeptUnderAnotherName) {
    const std::string damages[] = {"garbage", "",
                                   writeXmlPropertyList(PropertyListArray{"no", "dictionary"})};
    for (const auto& damage : damages) {
        put(damage);
        auto defaults = open();
        EXPECT_EQ(defaults.value("a"), std::nullopt);
        EXPECT_TRUE(defaults.setValue("a", 1));
        EXPECT_THAT(open().value("a"), Optional(PropertyListValue(1)));
    }
    const auto beside = [&](const char* ending) { return test::contentOf(file_.string() + ending); };
    EXPECT_EQ(beside(".damaged"), damages[0]);
    EXPECT_EQ(beside(".damaged-2"), damages[1]);
    EXPECT_EQ(beside(".damaged-3"), damages[2]);
    EXPECT_TRUE(log_.contains("settings.plist.damaged-3"));
}

TEST_F(FileDefaultsTest, WhatCannotBeReadIsNotReplaced) {
    fs::create_directories(file_); // a folder in the place of the file
    auto defaults = open();
    EXPECT_EQ(defaults.value("a"), std::nullopt);
    EXPECT_FALSE(defaults.setValue("a", 1));
    EXPECT_TRUE(fs::is_directory(file_));
    fs::remove(file_);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_FALSE(defaults.setValue("a", 1)) << "and a pipe does not hold us up";
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
        << "what a link leads to keeps its place when it is no settings file";
}

} // namespace
} // namespace tidwen
