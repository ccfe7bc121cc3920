#include "volume/folder_stack.h"

#include "volume/item_description.h"

#include <fcntl.h>

namespace tidwen {

namespace {

constexpr std::size_t openLevels = 16;
constexpr struct stat none {};

} // namespace

bool FolderStack::push(Descriptor folder) {
    const auto item = statOpen(folder.get());
    push(std::move(folder), item.value_or(none));
    return item.has_value();
}

void FolderStack::push(Descriptor folder, const struct stat& item) {
    levels_.push_back({.folder = std::move(folder), .device = item.st_dev, .inode = item.st_ino});
    if (levels_.size() > openLevels) levels_[levels_.size() - 1 - openLevels].folder.close();
}

bool FolderStack::pop() {
    const Descriptor below = std::move(levels_.back().folder);
    levels_.pop_back();
    if (levels_.empty()) return true;
    Level& level = levels_.back();
    if (level.folder.isOpen()) return true;
    level.folder = Descriptor(::openat(below.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!level.folder.isOpen()) return false;
    const auto item = statOpen(level.folder.get());
    return item && item->st_dev == level.device && item->st_ino == level.inode;
}

} // namespace tidwen
