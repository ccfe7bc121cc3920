#include "base/path.h"
#include "platform/file_system.h"
#include "posix/file_system_changes_contract.h"
#include "posix/rooted_file_system.h"
#include "support/small_disk.h"

#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>
#ifdef __linux__
#include <sys/syscall.h>
#endif

namespace tidwen::test {
namespace {

std::unique_ptr<FileSystem> openWith(const std::filesystem::path& root, RootedFileSystem::Resolver resolver) {
    return RootedFileSystem::open(root, resolver).value();
}

std::unique_ptr<FileSystem> walking(const std::filesystem::path& root) {
    return openWith(root, RootedFileSystem::Resolver::walk);
}

std::vector<FileSystemUnderTest> implementations() {
    std::vector<FileSystemUnderTest> all{{"walk", walking}};
    const TemporaryFolder folder;
    if (RootedFileSystem::open(folder.path(), RootedFileSystem::Resolver::kernel))
        all.push_back(
            {"kernel", [](const auto& root) { return openWith(root, RootedFileSystem::Resolver::kernel); }});
    return all;
}

INSTANTIATE_TEST_SUITE_P(Volume, FileSystemContract, testing::ValuesIn(implementations()),
                         [](const auto& each) { return each.param.name; });

TEST(RootedFileSystem, OpensOnlyFolders) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "file") << "x";
    EXPECT_EQ(outcome(RootedFileSystem::open(folder.path())), "ok");
    EXPECT_EQ(outcome(RootedFileSystem::open(folder.path() / "file")), "notDirectory");
    EXPECT_EQ(outcome(RootedFileSystem::open(folder.path() / "none")), "missing");
}

#ifdef __linux__
TEST(RootedFileSystem, ReadsFilesThatDoNotTellTheirSize) {
    const auto files = openWith("/proc", RootedFileSystem::Resolver::automatic);
    std::ostringstream expected;
    expected << std::ifstream("/proc/filesystems").rdbuf();
    ASSERT_EQ(files->info(Path("/filesystems"))->size, 0u);
    EXPECT_EQ(files->read(Path("/filesystems"), 1u << 20).value_or(""), expected.str());
    EXPECT_EQ(outcome(files->read(Path("/filesystems"), expected.str().size())), "ok");
    EXPECT_EQ(outcome(files->read(Path("/filesystems"), expected.str().size() - 1)), "tooLarge");
}
#endif

std::string found(const FileResult<FileInfo>& item) {
    return item ? std::to_string(item->inode) : outcome(item);
}

/// Both resolvers agree, on random trees full of links and random paths through them.
TEST(RootedFileSystem, KernelAndWalkAgree) {
    const TemporaryFolder folder;
    if (!RootedFileSystem::open(folder.path(), RootedFileSystem::Resolver::kernel))
        GTEST_SKIP() << "this kernel cannot resolve inside a root";
    std::mt19937 random(20240229); // NOLINT(cert-msc51-cpp): the same trees in every run
    const auto pick = [&](std::size_t count) { return random() % count; };
    const auto text = [&](bool absolute) {
        constexpr const char* words[] = {"a", "b", "c", "a/b", "b/c", "..", "../..", ".", "l", "m", "none"};
        std::string path = absolute ? "/" : "";
        for (std::size_t i = 0, count = 1 + pick(4); i < count; ++i)
            path += std::string(i ? "/" : "") + words[pick(std::size(words))];
        return path + (pick(8) ? "" : "/");
    };
    // A chain of as many links as the kernel follows, and one more.
    for (int i = 0; i < 45; ++i)
        std::filesystem::create_symlink(std::to_string(i + 1), folder.path() / std::to_string(i));
    writeFile(folder.path() / "45", "end of the chain");
    const auto byKernel = openWith(folder.path(), RootedFileSystem::Resolver::kernel);
    const auto byWalk = walking(folder.path());
    for (const char* link : {"/0", "/4", "/5", "/6", "/44"})
        EXPECT_EQ(outcome(byKernel->read(Path(link), 99)), outcome(byWalk->read(Path(link), 99))) << link;
    for (int round = 0; round < 20; ++round) {
        const auto root = folder.path() / ("tree" + std::to_string(round));
        for (const char* place : {"a/b/c", "b/c", "c"})
            std::filesystem::create_directories(root / place);
        for (const char* place : {"", "a", "a/b", "b"}) {
            std::error_code ignored;
            for (const char* name : {"l", "m", "c"})
                std::filesystem::create_symlink(text(pick(2)), root / place / name, ignored);
            std::ofstream(root / place / "none2") << place;
        }
        const auto kernel = openWith(root, RootedFileSystem::Resolver::kernel), walk = walking(root);
        for (int i = 0; i < 150; ++i) {
            const Path path(text(true));
            SCOPED_TRACE(path.string());
            const auto followed = kernel->infoFollowingLinks(path);
            const auto real = walk->resolve(path);
            EXPECT_TRUE(kernel->resolve(path) == real); // in the error's path, too
            EXPECT_EQ(found(kernel->info(path)), found(walk->info(path)));
            EXPECT_EQ(found(followed), found(walk->infoFollowingLinks(path)));
            EXPECT_EQ(real ? found(kernel->info(*real)) : outcome(real), found(followed));
            EXPECT_EQ(outcome(kernel->list(path)), outcome(walk->list(path)));
            EXPECT_EQ(outcome(kernel->removeFile(path / "x")), outcome(walk->removeFile(path / "x")));
        }
    }
}

TEST(RootedFileSystem, WhatRootMakesInAHomeBelongsToItsOwner) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder to another user";
    const TemporaryFolder folder;
    const auto files = RootedFileSystem::open(folder.path()).value();
    const auto host = [&](const std::string& path) { return folder.path() / path.substr(1); };
    const auto owner = [&](const std::string& path) {
        const auto item = files->info(Path(path));
        return item ? fmt::format("{}:{}", item->ownerID, item->groupID) : std::string("missing");
    };
    std::filesystem::create_directories(host("/Users/alice/Roots"));
    writeFile(host("/Users/alice/old"), "root's own");
    ASSERT_EQ(::chown(host("/Users/alice").c_str(), 501, 20), 0);
    EXPECT_EQ(outcome(files->setHome(Path("/Users/alice"))), "ok");

    EXPECT_EQ(outcome(files->createDirectories(Path("/Users/alice/.Trash/run"))), "ok");
    EXPECT_EQ(outcome(files->createDirectory(Path("/Users/alice/Roots/new"))), "ok");
    EXPECT_EQ(outcome(files->createDirectories(Path("/Users/alicea/new"))), "ok");
    for (const char* file : {"/Users/alice/.Trash/run/manifest", "/Users/alice/old", "/Users/file"})
        EXPECT_EQ(outcome(files->replaceFile(Path(file), "new", NewFileMode::likeExisting)), "ok");
    for (const char* hers : {"/Users/alice/.Trash", "/Users/alice/.Trash/run", "/Users/alice/Roots/new",
                             "/Users/alice/.Trash/run/manifest"})
        EXPECT_EQ(owner(hers), "501:20") << hers;
    for (const char* roots : {"/Users/alice/Roots", "/Users/alice/old", "/Users/alicea/new", "/Users/file"})
        EXPECT_EQ(owner(roots), "0:0") << roots;
    EXPECT_EQ(files->info(Path("/Users/alice/.Trash"))->permissions, 0700u);
    EXPECT_EQ(files->info(Path("/Users/alicea"))->permissions, 0755u) << "readable by everyone";
    EXPECT_EQ(outcome(files->replaceFile(Path("/Users/alice/old"), "x", NewFileMode::privateToOwner)), "ok");
    EXPECT_EQ(owner("/Users/alice/old"), "501:20");
}

#ifdef __linux__

TEST(RootedFileSystem, WalksWhereTheKernelsCallIsRefused) {
    const TemporaryFolder folder;
    for (const int error : {ENOSYS, EPERM})
        inChild([&] {
            ASSERT_TRUE(refuseSystemCall(SYS_openat2, error));
            EXPECT_EQ(outcome(RootedFileSystem::open(folder.path(), RootedFileSystem::Resolver::kernel)),
                      "notSupported");
            EXPECT_EQ(RootedFileSystem::open(folder.path()).value()->resolver(),
                      RootedFileSystem::Resolver::walk);
        });
}

/// A file system without exclusive rename, with and without hard links.
TEST(RootedFileSystem, NeverReplacesWhereTheExclusiveRenameIsRefused) {
    for (const bool hardLinks : {true, false}) {
        const TemporaryFolder folder;
        const auto path = [&](const char* name) { return folder.path() / name; };
        const auto files = walking(folder.path());
        std::filesystem::create_directories(path("folder/inner"));
        std::filesystem::create_directories(path("empty"));
        std::filesystem::create_symlink("nowhere", path("link"));
        std::ofstream(path("file")) << "content";
        inChild([&] {
            ASSERT_TRUE(refuseSystemCall(SYS_renameat2, EINVAL));
            ASSERT_TRUE(hardLinks || refuseSystemCall(SYS_linkat, EPERM));
            for (const char* source : {"/file", "/folder", "/link"}) {
                for (const char* target : {"/file", "/empty", "/link"})
                    EXPECT_EQ(outcome(files->move(Path(source), Path(target))), "exists");
                EXPECT_EQ(outcome(files->move(Path(source), Path("/none/x"))), "missing");
                const Path moved(std::string(source) + "2");
                EXPECT_EQ(outcome(files->move(Path(source), moved)), "ok");
                EXPECT_EQ(outcome(files->move(moved, Path(source))), "ok");
            }
            // As if the process ended there: nothing takes the folder's new name.
            ASSERT_TRUE(refuseSystemCall(SYS_renameat, EIO) && refuseSystemCall(SYS_unlinkat, EIO));
            EXPECT_EQ(outcome(files->move(Path("/folder"), Path("/folder2"))), "io");
        });
        EXPECT_TRUE(std::filesystem::is_directory(path("folder/inner")));
        EXPECT_EQ(files->read(Path("/file"), 99).value_or("?"), "content");
        EXPECT_EQ(files->list(Path("/"))->size(), 4u);
    }
}

#else

TEST(RootedFileSystem, WorksWhereSystemCallsAreRefused) {
    GTEST_SKIP() << "only Linux lets a process refuse itself a call";
}

#endif

TEST(RootedFileSystem, RemovesTreesDeeperThanAnyPath) {
    const auto skipped = withSmallDisk(64u << 20, [](const std::filesystem::path& disk) {
        int folder = ::open(disk.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (int level = 0; level < 20'000; ++level) {
            ASSERT_EQ(::mkdirat(folder, "deep", 0700), 0);
            const int below = ::openat(folder, "deep", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            ::close(folder);
            folder = below;
        }
        ::close(folder);
        const auto files = openWith(disk, RootedFileSystem::Resolver::automatic);
        EXPECT_EQ(files->holdsOthersItems(Path("/deep"), ::geteuid()), false);
        EXPECT_EQ(outcome(files->removeTree(Path("/deep"))), "ok");
        EXPECT_FALSE(files->exists(Path("/deep")));
    });
    if (skipped) GTEST_SKIP() << *skipped;
}

/// A folder of the same disk mounted a second time: only its mount ID distinguishes it from a plain one.
TEST(RootedFileSystem, EntersNothingThatIsMounted) {
    const auto skipped = withSmallDisk(1u << 20, [](const std::filesystem::path& disk) {
        const auto files = openWith(disk, RootedFileSystem::Resolver::automatic);
        const auto mine = ::geteuid();
        for (const std::string file : {"guest/kept", "at/top/own", "below/own", "below/a/own"})
            writeFile(disk / file, std::string(100'000, 'x'));
        std::filesystem::create_directory(disk / "below/a/mounted");
        const auto plainly = files->treeSize(Path("/below"), 99)->allocatedBytes;
        EXPECT_EQ(files->holdsOthersItems(Path("/below"), mine), false);
        ASSERT_TRUE(mountAgain(disk / "guest", disk / "below/a/mounted"));
        ASSERT_TRUE(mountAgain(disk / "guest", disk / "at/top"));
        EXPECT_LE(files->treeSize(Path("/below"), 99)->allocatedBytes, plainly);
        std::filesystem::create_directories(disk / "of many\n\\words/m");
        ASSERT_TRUE(mountAgain(disk / "guest", disk / "of many\n\\words/m"));
        for (const char* item : {"/below", "/at/top", "/at", "/of many\n\\words"})
            EXPECT_EQ(outcome(files->move(Path(item), Path("/moved"))), "otherDisk") << item;
        EXPECT_EQ(outcome(files->move(Path("/guest"), Path("/moved"))), "ok")
            << "mounted itself, but contains no mount";
        EXPECT_EQ(outcome(files->move(Path("/moved"), Path("/guest"))), "ok");
        for (const std::string item : {"/below", "/at/top"}) {
            EXPECT_EQ(outcome(files->holdsOthersItems(Path(item), mine)), "otherDisk") << item;
            EXPECT_EQ(outcome(files->removeTree(Path(item))), "otherDisk") << item;
        }
        EXPECT_TRUE(std::filesystem::exists(disk / "guest/kept"));
        EXPECT_TRUE(std::filesystem::exists(disk / "below/a/mounted/kept"));
        EXPECT_FALSE(std::filesystem::exists(disk / "below/own")) << "the rest is removed";
        const TemporaryFolder away;
        writeFile(disk / "below/own", "x");
        EXPECT_EQ(outcome(openWith("/", RootedFileSystem::Resolver::automatic)
                              ->move(Path((disk / "below").string()), Path((away.path() / "x").string()))),
                  "otherDisk");
        EXPECT_TRUE(std::filesystem::is_empty(away.path()));
    });
    if (skipped) GTEST_SKIP() << *skipped;
}

TEST(RootedFileSystem, AFullOrReadOnlyDiskKeepsTheOldContent) {
    const auto skipped = withSmallDisk(256u << 10, [](const std::filesystem::path& disk) {
        const auto files = openWith(disk, RootedFileSystem::Resolver::automatic);
        const Path file("/journal");
        ASSERT_EQ(outcome(files->replaceFile(file, "old", NewFileMode::privateToOwner)), "ok");
        const std::string tooMuch(1u << 20, 'x');
        EXPECT_EQ(outcome(files->replaceFile(file, tooMuch, NewFileMode::likeExisting)), "noSpace");
        EXPECT_EQ(files->read(file, 9).value_or("?"), "old");
        EXPECT_EQ(files->list(Path("/"))->size(), 1u);
        ASSERT_TRUE(makeReadOnly(disk));
        EXPECT_EQ(outcome(files->replaceFile(file, "new", NewFileMode::likeExisting)), "denied");
        EXPECT_EQ(outcome(files->move(file, Path("/moved"))), "denied");
        EXPECT_EQ(outcome(files->createDirectories(Path("/a/b"))), "denied");
        EXPECT_FALSE(files->isMovable(file));
        EXPECT_EQ(files->read(file, 9).value_or("?"), "old");
    });
    if (skipped) GTEST_SKIP() << *skipped;
}

} // namespace
} // namespace tidwen::test
