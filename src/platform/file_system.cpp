#include "platform/file_system.h"

namespace tidwen {

std::string_view failureKey(FileFault fault) {
    switch (fault) {
    case FileFault::missing:
        return "failure.file.missing";
    case FileFault::exists:
        return "failure.file.exists";
    case FileFault::denied:
        return "failure.file.denied";
    case FileFault::notDirectory:
        return "failure.file.notDirectory";
    case FileFault::isDirectory:
        return "failure.file.isDirectory";
    case FileFault::throughLink:
        return "failure.file.throughLink";
    case FileFault::notRegular:
        return "failure.file.notRegular";
    case FileFault::tooLarge:
        return "failure.file.tooLarge";
    case FileFault::noSpace:
        return "failure.file.noSpace";
    case FileFault::nameTooLong:
        return "failure.file.nameTooLong";
    case FileFault::busy:
        return "failure.file.busy";
    case FileFault::notSupported:
        return "failure.file.notSupported";
    case FileFault::exhausted:
        return "failure.file.exhausted";
    case FileFault::otherDisk:
        return "failure.file.otherDisk";
    case FileFault::io:
        break;
    }
    return "failure.file.io";
}

std::vector<bool> FileSystem::existing(const Path& folder, const std::vector<std::string>& items) const {
    std::vector<bool> areThere;
    areThere.reserve(items.size());
    for (const auto& item : items)
        areThere.push_back(exists(folder / item));
    return areThere;
}

FileResult<Path> FileSystem::resolveParent(const Path& path) const {
    const std::string last = path.lastComponent();
    // These name a folder relative to another one: there is no last component to keep.
    if (path.isRoot() || last == "." || last == "..") return resolve(path);
    return resolve(path.parent()).map([&](const Path& parent) { return parent / last; });
}

bool FileSystem::isDirectoryFollowingLinks(const Path& path) const {
    const auto found = infoFollowingLinks(path);
    return found && found->kind == FileKind::directory;
}

} // namespace tidwen
