#pragma once

namespace tidwen {

/// Renames an item, a link itself, and never replaces anything: EEXIST when the new name is taken. The kernel
/// guarantees it in one step. 0 or the errno; EXDEV between two disks.
///
/// On a disk whose format refuses that kind of rename:
/// - a folder is renamed where nothing stands. What somebody else puts there between these two calls makes it
///   fail, but for an empty folder, which is replaced.
/// - anything else gets the second name as a hard link and then loses the first. Nothing can be overwritten;
///   a crash in between leaves both names of one item (`finishLinkedRename` settles that).
/// - where the disk has no hard links either, the name is looked at and then taken: what somebody else puts
///   there between these two calls is overwritten.
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

/// Removes the first name of an item when a rename by hard link was cut short: both names are there and are
/// one item, no folder. Says whether that was so.
bool finishLinkedRename(int fromFolder, const char* from, int toFolder, const char* to);

} // namespace tidwen
