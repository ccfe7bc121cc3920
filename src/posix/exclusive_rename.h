#pragma once

namespace tidwen {

/// Renames an item, a link itself, and never replaces anything: EEXIST when the new name is taken. Atomic in
/// the kernel. Returns 0 or the errno; EXDEV between two disks.
///
/// On a file system that does not support it:
/// - a folder is renamed if the new name is free. What another process puts there between the two calls makes
///   the rename fail, except for an empty folder, which is replaced.
/// - anything else is hard-linked to the new name, then unlinked from the old one. This overwrites nothing;
///   a crash in between leaves both names of one item (see `finishLinkedRename`).
/// - without hard links either, the new name is checked and then used: what another process puts there
///   between the two calls is overwritten.
int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to);

/// Removes the first name of an item when a rename by hard link was interrupted: both names exist and are one
/// item other than a folder. Returns whether that was so.
bool finishLinkedRename(int fromFolder, const char* from, int toFolder, const char* to);

} // namespace tidwen
