#include "quarantine/set_aside.h"

#include "base/path.h"
#include "platform/file_system.h"
#include "posix/copied_move.h"
#include "quarantine/interrupted_return.h"

#include <algorithm>
#include <vector>

namespace tidwen {

namespace {

std::vector<Path> setAsideBeside(const Path& from, const FileSystem& files) {
    std::vector<Path> places;
    for (const auto& name : namesOfSetAside(from.lastComponent()))
        if (files.exists(from.parent() / name)) places.push_back(from.parent() / name);
    return places;
}

} // namespace

Path copyOf(const Path& destination) {
    return destination.parent() / growingCopyName(destination.lastComponent());
}

bool isCompleteCopy(const Path& copy, const Path& from, const FileSystem& files) {
    const auto info = files.info(copy);
    return info && std::ranges::any_of(setAsideBeside(from, files), [&](const Path& aside) {
               const auto original = files.info(aside);
               return original && original->kind == info->kind
                      && original->modifiedNanoseconds == info->modifiedNanoseconds
                      && (info->kind != FileKind::regular || original->size == info->size);
           });
}

bool hasAllSetAside(const Path& whole, const Path& from, const FileSystem& files) {
    return std::ranges::all_of(setAsideBeside(from, files),
                               [&](const Path& aside) { return canHaveGrownFrom(whole, aside, files); });
}

bool areSetAsideOf(const Path& whole, const Path& from, const FileSystem& files) {
    return std::ranges::all_of(setAsideBeside(from, files), [&](const Path& aside) {
        return canHaveGrownFrom(whole, aside, files) && canHaveGrownFrom(aside, whole, files);
    });
}

bool isCopiedFromBeside(const Path& item, const Path& from, const FileSystem& files) {
    const auto there = files.info(item), here = files.infoFollowingLinks(from.parent());
    return there && here && there->device != here->device;
}

bool cameAfterSetAside(const Path& item, const Path& from, const FileSystem& files) {
    const auto came = files.info(item);
    return came && came->addedNanoseconds
           && std::ranges::all_of(setAsideBeside(from, files), [&](const Path& aside) {
                  const auto original = files.info(aside);
                  return original && original->addedNanoseconds
                         && *original->addedNanoseconds <= *came->addedNanoseconds;
              });
}

} // namespace tidwen
