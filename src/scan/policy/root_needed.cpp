#include "scan/policy/root_needed.h"

#include "base/path.h"

#include <cstdint>

namespace tidwen {

namespace {

constexpr std::uint32_t staffGroup = 20;
constexpr std::uint32_t adminGroup = 80;
constexpr std::uint32_t ownerWrite = 0200;
constexpr std::uint32_t groupWrite = 0020;
constexpr std::uint32_t othersWrite = 0002;
constexpr std::uint32_t stickyBit = 01000;

/// Based on mode and owners alone: the kernel would answer for this process, which on a mounted or copied
/// disk is not the Mac's user. Assumes the groups of an ordinary administrator account; if the user is not in
/// them, the move fails and is reported, and nothing is lost.
bool isWritable(const FileInfo& folder, std::uint32_t userID) {
    if (folder.ownerID == userID) return (folder.permissions & ownerWrite) != 0;
    if (folder.groupID == staffGroup || folder.groupID == adminGroup)
        return (folder.permissions & groupWrite) != 0;
    return (folder.permissions & othersWrite) != 0;
}

} // namespace

bool moveNeedsRoot(const FileInfo& item, const FileInfo& parent, std::uint32_t userID) {
    if (item.immutable) return true;
    if (userID == 0) return false;
    const bool isHis = item.ownerID == userID;
    const bool isSticky = (parent.permissions & stickyBit) != 0;
    // Moving a folder changes its "..", which the kernel permits only to its owner.
    return !isWritable(parent, userID) || (isSticky && parent.ownerID != userID && !isHis)
           || (item.kind == FileKind::directory && !isHis);
}

bool moveNeedsRoot(const FileSystem& files, const UserEnvironment& user, const Path& item) {
    const auto info = files.info(item);
    const auto parent = files.infoFollowingLinks(item.parent());
    return !info || !parent || moveNeedsRoot(*info, *parent, user.userID);
}

} // namespace tidwen
