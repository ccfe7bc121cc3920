#pragma once

#include "base/path.h"
#include "base/stop_token.h"
#include "platform/file_system.h"
#include "support/temporary_folder.h"
#include "support/trees.h"
#include "support/unprivileged.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// The contract of every implementation of `FileSystem`. A test program includes this and instantiates
/// `FileSystemContract` with its own; each test gets a new folder as root.
namespace tidwen {

inline void PrintTo(const Path& path, std::ostream* out) {
    *out << testing::PrintToString(path.string());
}

} // namespace tidwen

namespace tidwen::test {

struct FileSystemUnderTest {
    std::string name;
    std::function<std::unique_ptr<FileSystem>(const std::filesystem::path& root)> open;
};

class FileSystemContract : public testing::TestWithParam<FileSystemUnderTest> {
  protected:
    /// "volume" is the root; "outside", beside it, must never be reached.
    FileSystemContract() {
        std::filesystem::create_directory(root());
        std::ofstream(folder.path() / "outside") << "outside";
        files = GetParam().open(root());
    }

    std::filesystem::path root() const { return folder.path() / "volume"; }
    std::filesystem::path host(const std::string& path) const { return root() / path.substr(1); }

    void write(const std::string& path, std::string_view content = "content") const {
        writeFile(host(path), content);
    }
    void makeFolder(const std::string& path) const { std::filesystem::create_directories(host(path)); }
    void link(const std::string& path, const std::string& target) const {
        std::filesystem::create_directories(host(path).parent_path());
        std::filesystem::create_symlink(target, host(path));
    }
    std::string contentOf(const std::string& path) const { return test::contentOf(host(path)); }

    TemporaryFolder folder;
    std::unique_ptr<FileSystem> files;
};

TEST_P(FileSystemContract, TellsWhichItemsBelowAFolderAreThere) {
    write("/folder/a/item");
    makeFolder("/empty");
    link("/folder/in", "a");
    link("/folder/up", "../../outside");
    link("/folder/nowhere", "gone");
    link("/linked", "folder");
    const std::vector<std::pair<std::string, bool>> items = {{"a", true},
                                                             {"a/item", true},
                                                             {"in/item", true},
                                                             {"nowhere", true},
                                                             {"up", true},
                                                             {"a/none", false},
                                                             {"a/item/below", false},
                                                             {"in/none", false},
                                                             {"none/x", false},
                                                             {"nowhere/x", false},
                                                             {"up/x", false},
                                                             {"../outside", false},
                                                             {"../empty", true},
                                                             {"", true},
                                                             {std::string(5000, 'x'), false}};
    std::vector<std::string> names;
    for (const auto& [name, isThere] : items)
        names.push_back(name);
    for (const auto* at : {"/folder", "/linked"}) {
        const auto answers = files->existing(Path(at), names);
        for (std::size_t i = 0; i < items.size(); ++i)
            EXPECT_EQ(answers.at(i), items[i].second) << at << " " << names[i];
    }
    EXPECT_EQ(files->existing(Path("/none"), {"a", "../empty"}), (std::vector<bool>{false, false}));
}

TEST_P(FileSystemContract, DescribesItemsThemselves) {
    write("/a/file", "12345");
    link("/a/link", "file");
    ::chmod(host("/a/file").c_str(), 04750);
    ::chmod(host("/a").c_str(), 0751);
    const timespec times[2] = {{.tv_sec = 1, .tv_nsec = 2},
                               {.tv_sec = 1'600'000'000, .tv_nsec = 123'456'789}};
    ::utimensat(AT_FDCWD, host("/a/file").c_str(), times, 0);

    const auto file = files->info(Path("/a/file"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->kind, FileKind::regular);
    EXPECT_EQ(file->size, 5u);
    EXPECT_GE(file->allocatedBytes, 512u);
    EXPECT_EQ(file->permissions, 04750u);
    EXPECT_EQ(file->ownerID, ::geteuid());
    EXPECT_EQ(file->modifiedNanoseconds, 1'600'000'000'123'456'789);
    EXPECT_TRUE(file->addedNanoseconds.value_or(0) > file->modifiedNanoseconds);
    EXPECT_FALSE(file->immutable);
    EXPECT_EQ(files->info(Path("/a"))->permissions, 0751u);
    EXPECT_EQ(files->info(Path("/a/link"))->kind, FileKind::symbolicLink);
    EXPECT_EQ(files->infoFollowingLinks(Path("/a/link"))->inode, file->inode);
    EXPECT_EQ(files->info(Path("/"))->kind, FileKind::directory);
    EXPECT_EQ(outcome(files->info(Path("/a/none"))), "missing");
    EXPECT_EQ(outcome(files->info(Path("/a/file/below"))), "notDirectory");
}

TEST_P(FileSystemContract, CarriesEveryNameAsItIs) {
    const std::vector<std::string> names = {std::string(255, 'x'), "\xff\xfe not UTF-8", "line\nfeed", "-rf",
                                            "e\xcc\x81",           "\xc3\xa9",           " "};
    for (const auto& name : names)
        write("/odd/" + name, name);
    makeFolder("/away");
    auto sorted = names;
    std::sort(sorted.begin(), sorted.end());

    const auto entries = files->list(Path("/odd"));
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), names.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const Path item = Path("/odd") / sorted[i], there = Path("/away") / sorted[i];
        EXPECT_EQ((*entries)[i].name, sorted[i]);
        EXPECT_EQ(files->read(item, 300).value_or("unreadable"), sorted[i]);
        EXPECT_EQ(files->resolve(item).value_or(Path()), item);
        EXPECT_EQ(outcome(files->replaceFile(item, "new", NewFileMode::likeExisting)), "ok");
        EXPECT_EQ(outcome(files->move(item, there)), "ok");
        EXPECT_EQ(outcome(files->removeFile(there)), "ok");
    }
    EXPECT_EQ(outcome(files->info(Path("/odd/" + std::string(256, 'x')))), "nameTooLong");
    EXPECT_EQ(outcome(files->createDirectories(Path("/odd/" + std::string(256, 'x') + "/y"))), "nameTooLong");
}

TEST_P(FileSystemContract, LinksNeverLeadOutOfTheRoot) {
    write("/Library/real", "inside");
    write("/etc/passwd", "the volume's own");
    makeFolder("/deep/er");
    const std::map<std::string, std::string> links = {{"absolute", "/Library/real"},
                                                      {"toFolder", "/Library"},
                                                      {"hostFile", "../../outside"},
                                                      {"fileAsFolder", "absolute/"},
                                                      {"dangling", "nowhere"},
                                                      {"loop", "loop"},
                                                      {"ring1", "ring2"},
                                                      {"ring2", "ring1"},
                                                      {"root", "/"},
                                                      {"up", "../../../../../../../../../../etc/passwd"},
                                                      {"chain", "toFolder/../deep/./absolute"},
                                                      {"hostAbsolute", (folder.path() / "outside").string()}};
    for (const auto& [name, target] : links)
        link("/deep/" + name, target);
    const struct {
        std::string path, read, resolved;
    } cases[] = {
        {"/deep/absolute", "inside", "/Library/real"},
        {"/deep/toFolder/real", "inside", "/Library/real"},
        {"/deep/up", "the volume's own", "/etc/passwd"},
        {"/deep/hostFile", "missing", "missing"},
        {"/deep/hostAbsolute", "missing", "missing"},
        {"/../../outside", "missing", "missing"},
        {"/deep/root/../outside", "missing", "missing"},
        {"/deep/chain", "inside", "/Library/real"},
        {"/deep/root/deep/../Library/./real", "inside", "/Library/real"},
        {"/deep/root", "isDirectory", "/"},
        {"/deep/fileAsFolder", "notDirectory", "notDirectory"},
        {"/deep/absolute/below", "notDirectory", "notDirectory"},
        {"/deep/dangling", "missing", "missing"},
        {"/deep/dangling/below", "missing", "missing"},
        {"/deep/loop", "throughLink", "throughLink"},
        {"/deep/ring1/below", "throughLink", "throughLink"},
        {std::string("/Library/real\0x", 15), "missing", "missing"},
        {"Library/real", "missing", "missing"},
    };
    for (const auto& [path, read, resolved] : cases) {
        SCOPED_TRACE(path);
        const auto content = files->read(Path(path), 100);
        EXPECT_EQ(content ? *content : outcome(content), read);
        const auto real = files->resolve(Path(path));
        EXPECT_EQ(real ? real->string() : outcome(real), resolved);
        if (!real) {
            EXPECT_EQ(outcome(files->infoFollowingLinks(Path(path))), resolved);
        }
    }
    const auto away = files->resolve(Path("/deep/toFolder/none/x"));
    EXPECT_EQ(away ? Path() : away.error().path, Path("/Library/none/x"));
    EXPECT_EQ(outcome(files->info(Path("/deep/loop"))), "ok");
    EXPECT_EQ(files->list(Path("/deep/toFolder"))->size(), 1u);
    EXPECT_EQ(files->resolveParent(Path("/deep/toFolder/dangling")).value_or(Path()),
              Path("/Library/dangling"));
    EXPECT_EQ(files->resolveParent(Path("/deep/toFolder/..")).value_or(Path("/wrong")), Path("/"));
    EXPECT_TRUE(files->isDirectoryFollowingLinks(Path("/deep/toFolder")));
    EXPECT_FALSE(files->isDirectoryFollowingLinks(Path("/deep/absolute")));
}

TEST_P(FileSystemContract, ReadsPlainFilesWithinBounds) {
    write("/file", "0123456789");
    makeFolder("/folder");
    ASSERT_EQ(::mkfifo(host("/pipe").c_str(), 0600), 0);
    link("/linkToPipe", "pipe");
    EXPECT_EQ(files->read(Path("/file"), 10).value_or("?"), "0123456789");
    EXPECT_EQ(outcome(files->read(Path("/file"), 9)), "tooLarge");
    EXPECT_EQ(outcome(files->read(Path("/folder"), 9)), "isDirectory");
    EXPECT_EQ(outcome(files->read(Path("/linkToPipe"), 9)), "notRegular");
    EXPECT_EQ(outcome(files->list(Path("/pipe"))), "notDirectory");
    EXPECT_EQ(outcome(files->extendedAttribute(Path("/pipe"), "com.example.tag")), "missing");
    EXPECT_EQ(files->readRange(Path("/file"), 7, 100).value_or("?"), "789");
    EXPECT_EQ(files->readRange(Path("/file"), 2, 3).value_or("?"), "234");
    EXPECT_EQ(files->readRange(Path("/file"), UINT64_MAX, 3).value_or("?"), "");
    EXPECT_EQ(outcome(files->readRange(Path("/pipe"), 0, 3)), "notRegular");
}

TEST_P(FileSystemContract, MeasuresTrees) {
    write("/tree/a", std::string(10'000, 'a'));
    write("/tree/sub/b", std::string(5'000, 'b'));
    link("/tree/linkOut", "/big");
    write("/big", std::string(1 << 20, 'x'));
    std::filesystem::create_hard_link(host("/tree/a"), host("/tree/sub/sameAsA"));
    std::uint64_t sum = 0;
    for (const char* item : {"/tree", "/tree/a", "/tree/sub", "/tree/sub/b", "/tree/linkOut"})
        sum += files->info(Path(item))->allocatedBytes;

    const auto whole = files->treeSize(Path("/tree"), 5);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->allocatedBytes, sum);
    EXPECT_EQ(whole->entries, 5u);
    EXPECT_FALSE(whole->capped);
    const auto part = files->treeSize(Path("/tree"), 4);
    EXPECT_TRUE(part->capped);
    EXPECT_EQ(part->entries, 4u);
    EXPECT_LE(part->allocatedBytes, sum);
    EXPECT_EQ(files->treeSize(Path("/tree/a"), 1)->allocatedBytes,
              files->info(Path("/tree/a"))->allocatedBytes);
    EXPECT_LT(files->treeSize(Path("/tree/linkOut"), 1)->allocatedBytes, 1u << 20);
    EXPECT_EQ(outcome(files->treeSize(Path("/none"), 1)), "missing");
    StopSource stop;
    stop.requestStop();
    EXPECT_EQ(files->treeSize(Path("/tree"), 5, stop.token())->entries, 0u);
}

TEST_P(FileSystemContract, WalksDeepTreesWithFewDescriptors) {
    constexpr std::uint64_t depth = 150;
    std::string path = "/deep";
    for (std::uint64_t i = 0; i < depth; ++i)
        path += "/d";
    makeFolder(path);
    inChild([&] {
        const rlimit few{.rlim_cur = 40, .rlim_max = 40};
        ::setrlimit(RLIMIT_NOFILE, &few);
        EXPECT_EQ(files->treeSize(Path("/deep"), 10 * depth)->entries, depth);
        EXPECT_EQ(files->resolve(Path(path)).value_or(Path()), Path(path));
    });
}

TEST_P(FileSystemContract, TellsWhatTheKernelDenies) {
    write("/closed/file");
    write("/open/secret");
    write("/open/shut/file");
    makeFolder("/open/into");
    write("/shut/inner/file");
    write("/shared/mine");
    giveToUnprivileged(folder.path());
    // As in /Users/Shared: everyone may add, and only owners may remove.
    write("/shared/theirs");
    ::chmod(host("/shared").c_str(), 01777);
    const bool isRoot = ::geteuid() == 0;
    if (isRoot && ::chown(host("/shared").c_str(), 0, 0) != 0) FAIL() << "root may not change an owner";
    ::chmod(host("/shut/inner").c_str(), 0);
    ::chmod(host("/shut").c_str(), 0);
    ::chmod(host("/open/secret").c_str(), 0);
    ::chmod(host("/open/shut").c_str(), 0);
    ::chmod(host("/closed").c_str(), 0500);
    asUnprivileged([&] {
        const auto mine = GetParam().open(root());
        EXPECT_EQ(outcome(mine->read(Path("/open/secret"), 9)), "denied");
        EXPECT_EQ(outcome(mine->list(Path("/open/shut"))), "denied");
        EXPECT_EQ(outcome(mine->info(Path("/open/shut/file"))), "denied");
        EXPECT_EQ(outcome(mine->move(Path("/closed/file"), Path("/open/into/x"))), "denied");
        EXPECT_EQ(outcome(mine->move(Path("/open/secret"), Path("/closed/x"))), "denied");
        EXPECT_EQ(outcome(mine->createDirectory(Path("/closed/new"))), "denied");
        EXPECT_EQ(outcome(mine->removeFile(Path("/closed/file"))), "denied");
        EXPECT_EQ(outcome(mine->replaceFile(Path("/closed/file"), "x", NewFileMode::likeExisting)), "denied");
        EXPECT_TRUE(mine->treeSize(Path("/open"), 99).has_value());
        for (const auto* item :
             {"/closed/file", "/open/shut", isRoot ? "/shared/theirs" : "/none", "/none", "/"})
            EXPECT_FALSE(mine->isMovable(Path(item))) << item;
        for (const auto* item : {"/open/secret", "/open/into", "/shared/mine"})
            EXPECT_TRUE(mine->isMovable(Path(item))) << item;
        // One's own folder can be emptied, whatever its mode.
        EXPECT_EQ(outcome(mine->removeTree(Path("/shut"))), "ok");
        EXPECT_EQ(outcome(mine->move(Path("/open/secret"), Path("/open/into/x"))), "ok");
    });
    EXPECT_EQ(contentOf("/closed/file"), "content");
    ::chmod(host("/open/shut").c_str(), 0700);
}

} // namespace tidwen::test
