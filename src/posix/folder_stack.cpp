#include "posix/folder_stack.h"

#include "base/descriptor.h"

#include <fcntl.h>

namespace tidwen {

namespace {

constexpr std::size_t openLevels = 16;

} // namespace

bool FolderStack::push(Descriptor folder) {
    const auto identity = identifyOpen(folder.get());
    push(std::move(folder), identity.value_or(ItemIdentity{}));
    return identity.has_value();
}

void FolderStack::push(Descriptor folder, const ItemIdentity& identity) {
    levels_.push_back({.folder = std::move(folder), .identity = identity});
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
    return identifyOpen(level.folder.get()) == level.identity;
}

} // namespace tidwen
