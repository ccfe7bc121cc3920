#pragma once

#include "platform/file_system.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen::test {

/// Everything that a move must preserve, one line for the item and each item below: name, kind, mode, owner,
/// time, content or target, number of links, the extended attribute "com.example.tag". In a fixed order. A
/// folder's time, which changes with its entries, can be left out.
enum class FolderTimes { kept, ignored };
std::vector<std::string> fingerprint(const std::filesystem::path& top, FolderTimes times = FolderTimes::kept);

/// Sets that attribute; false where the file system does not support it.
bool tag(const std::filesystem::path& item);

/// Writes a file and creates its parents.
void writeFile(const std::filesystem::path& file, std::string_view content);
std::string contentOf(const std::filesystem::path& file);

/// "ok" or the name of the fault, so that a table can contain both.
template<class T>
std::string outcome(const FileResult<T>& result) {
    constexpr std::string_view prefix = "failure.file.";
    return result ? "ok" : std::string(failureKey(result.error().fault).substr(prefix.size()));
}

} // namespace tidwen::test
