#pragma once

#include <string_view>

/// Flushing to stable storage.
namespace tidwen {

/// Flushes an open file's content to the disk. Returns 0 or the errno.
int flushFile(int descriptor);

/// Flushes a folder's entries to the disk. Succeeds for a folder that may be changed but not read, and on a
/// disk that flushes by itself. Returns 0 or the errno.
int flushFolder(int folder);

/// Keeps a folder's changes in order between earlier and later flushes, without waiting for the disk; where
/// the disk cannot guarantee that, flushes. Always flushes if TIDWEN_FLUSH_ALL is in the environment, so that
/// both can be measured. Returns 0 or the errno.
int orderFolder(int folder);

/// Flushes everything written to the disk that contains this folder. Returns 0 or the errno.
int flushDisk(int folder);

/// Writes all bytes. Returns 0 or the errno.
int writeFully(int descriptor, std::string_view bytes);

} // namespace tidwen
