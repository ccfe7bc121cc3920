#pragma once

#include "base/path.h"
#include "platform/file_system.h"
#include "posix/file_system_contract.h"

#include <filesystem>
#include <functional>
#include <string>
#include <sys/file.h>

/// The part of the contract about changing the disk.
namespace tidwen::test {

TEST_P(FileSystemContract, ChangesRefuseLinkedParentsAndSpareLinkedTargets) {
    write("/real/file");
    makeFolder("/real/empty");
    link("/link", "real");
    const auto before = fingerprint(root());
    const std::string nul("/real/file\0x", 12);
    const auto ended = [](const auto& result) { return result.map([](const auto&) {}); };
    const std::function<FileResult<void>(const Path&)> calls[] = {
        [&](const Path& path) { return files->createDirectory(path); },
        [&](const Path& path) { return files->createDirectories(path); },
        [&](const Path& path) { return files->createDirectories(path / "below"); },
        [&](const Path& path) { return ended(files->move(path, Path("/moved"))); },
        [&](const Path& path) { return ended(files->move(Path("/real/file"), path)); },
        [&](const Path& path) { return ended(files->settleInterruptedMove(path, Path("/moved"))); },
        [&](const Path& path) { return ended(files->revealRemains(path)); },
        [&](const Path& path) { return files->replaceFile(path, "new", NewFileMode::likeExisting); },
        [&](const Path& path) { return files->removeFile(path); },
        [&](const Path& path) { return files->removeEmptyDirectory(path); },
        [&](const Path& path) { return files->removeTree(path); },
        [&](const Path& path) { return ended(files->lock(path)); },
    };
    for (const auto& call : calls) {
        for (const std::string last : {"file", "empty", "new"}) {
            EXPECT_EQ(outcome(call(Path("/link/" + last))), "throughLink") << last;
            EXPECT_EQ(outcome(call(Path("/real/../real/" + last))), "throughLink") << last;
        }
        EXPECT_EQ(outcome(call(Path(nul))), "missing");
        EXPECT_EQ(outcome(call(Path("real/file"))), "missing");
    }
    EXPECT_EQ(fingerprint(root()), before);
    EXPECT_EQ(outcome(files->createDirectories(Path("/link"))), "exists");
    EXPECT_EQ(outcome(files->removeEmptyDirectory(Path("/link"))), "notDirectory");
    EXPECT_EQ(outcome(files->removeFile(Path("/link"))), "ok");
    EXPECT_EQ(contentOf("/real/file"), "content");
}

TEST_P(FileSystemContract, MovesAndNeverReplaces) {
    for (const std::string source : {"/from/file", "/from/folder", "/from/link"}) {
        write("/from/file");
        write("/from/folder/inner", "deep");
        link("/from/link", "nowhere");
        write("/to/file", "other");
        makeFolder("/to/emptyFolder");
        link("/to/dangling", "nowhere");
        const auto before = fingerprint(root());
        for (const std::string target : {"/to/file", "/to/emptyFolder", "/to/dangling"})
            EXPECT_EQ(outcome(files->move(Path(source), Path(target))), "exists") << source << target;
        EXPECT_EQ(outcome(files->move(Path(source), Path(source))), "exists");
        EXPECT_EQ(outcome(files->move(Path(source), Path("/none/there"))), "missing");
        EXPECT_EQ(outcome(files->move(Path(source), Path("/to/file/below"))), "notDirectory");
        EXPECT_EQ(fingerprint(root()), before);
        EXPECT_EQ(outcome(files->move(Path(source), Path("/to/new"))), "ok");
        EXPECT_FALSE(files->exists(Path(source)));
        EXPECT_EQ(fingerprint(root()).size(), before.size());
        std::filesystem::remove_all(root());
        std::filesystem::create_directory(root());
        files = GetParam().open(root());
    }
    makeFolder("/folder/inner");
    EXPECT_EQ(outcome(files->move(Path("/folder"), Path("/folder/inner/self"))), "notSupported");
    EXPECT_EQ(outcome(files->move(Path("/gone"), Path("/folder/x"))), "missing");
    EXPECT_EQ(outcome(files->move(Path("/"), Path("/folder/x"))), "denied");
    EXPECT_TRUE(files->exists(Path("/folder/inner")));
}

TEST_P(FileSystemContract, ReplacesFilesAsAWhole) {
    const Path file("/file");
    write("/file", "old");
    ::chmod(host("/file").c_str(), 0640);
    const bool keepsAttributes = tag(host("/file"));
    EXPECT_EQ(outcome(files->replaceFile(file, "new", NewFileMode::likeExisting)), "ok");
    EXPECT_EQ(contentOf("/file"), "new");
    EXPECT_EQ(files->info(file)->permissions, 0640u);
    if (keepsAttributes) {
        EXPECT_EQ(files->extendedAttribute(file, "com.example.tag").value_or("?"), "blue");
    }
    EXPECT_EQ(outcome(files->extendedAttribute(file, "com.example.other")), "missing");
    EXPECT_EQ(outcome(files->replaceFile(file, "private", NewFileMode::privateToOwner)), "ok");
    EXPECT_EQ(files->info(file)->permissions, 0600u);

    write("/target", "untouched");
    link("/link", "target");
    EXPECT_EQ(outcome(files->replaceFile(Path("/link"), "itself", NewFileMode::likeExisting)), "ok");
    EXPECT_EQ(contentOf("/target"), "untouched");
    EXPECT_EQ(files->info(Path("/link"))->kind, FileKind::regular);
    makeFolder("/folder");
    EXPECT_EQ(outcome(files->replaceFile(Path("/folder"), "x", NewFileMode::likeExisting)), "isDirectory");

    write("/.tidwen-new-file", "left by a crash");
    EXPECT_EQ(outcome(files->replaceFile(file, "again", NewFileMode::likeExisting)), "ok");
    EXPECT_FALSE(files->exists(Path("/.tidwen-new-file")));
    write("/.tidwen-new-file", "being written");
    const int other = ::open(host("/.tidwen-new-file").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(other, LOCK_EX), 0);
    EXPECT_EQ(outcome(files->replaceFile(file, "never", NewFileMode::likeExisting)), "exists");
    ::close(other);
    EXPECT_EQ(contentOf("/file"), "again");
    EXPECT_EQ(contentOf("/.tidwen-new-file"), "being written");
}

TEST_P(FileSystemContract, CreatesAndRemovesNoMoreThanAsked) {
    write("/file");
    EXPECT_EQ(outcome(files->createDirectory(Path("/a/b"))), "missing");
    EXPECT_EQ(outcome(files->createDirectories(Path("/a/b/c"))), "ok");
    EXPECT_EQ(outcome(files->createDirectories(Path("/a/b/c"))), "ok");
    EXPECT_EQ(outcome(files->createDirectories(Path("/"))), "ok");
    EXPECT_EQ(files->info(Path("/a/b"))->permissions, 0700u);
    EXPECT_EQ(outcome(files->createDirectory(Path("/a/b"))), "exists");
    EXPECT_EQ(outcome(files->createDirectories(Path("/file"))), "exists");
    EXPECT_EQ(outcome(files->createDirectories(Path("/file/below"))), "notDirectory");
    EXPECT_EQ(outcome(files->removeEmptyDirectory(Path("/a/b"))), "exists");
    EXPECT_EQ(outcome(files->removeEmptyDirectory(Path("/a/b/c"))), "ok");
    EXPECT_EQ(outcome(files->removeEmptyDirectory(Path("/file"))), "notDirectory");
    EXPECT_EQ(outcome(files->removeFile(Path("/a/b"))), "isDirectory");
    EXPECT_EQ(outcome(files->removeFile(Path("/file"))), "ok");
    EXPECT_EQ(outcome(files->removeFile(Path("/file"))), "missing");
    EXPECT_EQ(outcome(files->settleInterruptedMove(Path("/file"), Path("/a/file"))), "ok");
}

TEST_P(FileSystemContract, RemovesTreesAndNothingBeyond) {
    write("/kept/file");
    write("/tree/sealed/file");
    link("/tree/linkOut", "/kept");
    std::filesystem::create_hard_link(host("/kept/file"), host("/tree/same"));
    ASSERT_EQ(::mkfifo(host("/tree/pipe").c_str(), 0600), 0);
    ::chmod(host("/tree/sealed").c_str(), 0500);
    write("/tree/shut/file");
    ::chmod(host("/tree/shut").c_str(), 0);
    link("/linkToKept", "kept");
    giveToUnprivileged(folder.path());
    asUnprivileged([&] {
        EXPECT_EQ(files->holdsOthersItems(Path("/tree"), ::geteuid()), false);
        EXPECT_EQ(files->holdsOthersItems(Path("/tree"), ::geteuid() + 1), true);
        EXPECT_EQ(files->info(Path("/tree/shut"))->permissions, 0u) << "unchanged";
        EXPECT_EQ(outcome(files->removeTree(Path("/tree"))), "ok");
        EXPECT_EQ(outcome(files->removeTree(Path("/tree"))), "missing");
        EXPECT_EQ(outcome(files->removeTree(Path("/linkToKept"))), "ok");
        EXPECT_EQ(outcome(files->removeTree(Path("/"))), "denied");
    });
    EXPECT_EQ(files->list(Path("/"))->size(), 1u);
    EXPECT_EQ(contentOf("/kept/file"), "content");
}

TEST_P(FileSystemContract, LocksBetweenProcesses) {
    write("/file");
    makeFolder("/folder");
    link("/link", "folder");
    const Path lockable("/folder");
    auto held = files->lock(lockable);
    ASSERT_EQ(outcome(held), "ok");
    EXPECT_EQ(runInChild([&] { return outcome(files->lock(lockable)) == "busy" ? 0 : 1; }), 0);
    held->reset();
    EXPECT_EQ(runInChild([&] { return outcome(files->lock(lockable)) == "ok" ? 0 : 1; }), 0);
    EXPECT_EQ(outcome(files->lock(lockable)), "ok");
    EXPECT_EQ(outcome(files->lock(Path("/link"))), "notDirectory");
    EXPECT_EQ(outcome(files->lock(Path("/file"))), "notDirectory");
    EXPECT_EQ(outcome(files->lock(Path("/none"))), "missing");
}

} // namespace tidwen::test
