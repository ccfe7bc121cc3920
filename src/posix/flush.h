#pragma once

#include <string_view>

/// What was written, brought to the disk.
namespace tidwen {

/// Brings an open file's content to the disk itself. 0 or the errno.
int flushFile(int descriptor);

/// Brings the names in a folder to the disk. A folder that may be changed but not read, and a disk that
/// flushes by itself, count as done. 0 or the errno.
int flushFolder(int folder);

/// Brings everything to the disk that was written to the one this folder is on. 0 or the errno.
int flushDisk(int folder);

/// Writes all of it. 0 or the errno.
int writeFully(int descriptor, std::string_view bytes);

} // namespace tidwen
