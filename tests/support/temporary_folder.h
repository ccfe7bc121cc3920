#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "posix/rooted_file_system.h"

namespace tidwen::test {

/// A new folder of this machine that is removed, whatever its modes, when the test ends.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// A Mac volume in a temporary folder, with helpers that take Mac paths ("/Library/Caches/x").
class TemporaryVolume {
  public:
    TemporaryVolume();

    const std::filesystem::path& hostRoot() const { return folder_.path(); }
    std::filesystem::path host(std::string_view macPath) const;
    RootedFileSystem& files() { return *files_; }
    const RootedFileSystem& files() const { return *files_; }

    /// Writes a file and creates its parents.
    void write(std::string_view macPath, std::string_view content) const;
    void makeFolder(std::string_view macPath) const;
    /// `target` is stored as given.
    void link(std::string_view macPath, std::string_view target) const;
    bool exists(std::string_view macPath) const;
    std::string read(std::string_view macPath) const;

  private:
    TemporaryFolder folder_;
    std::unique_ptr<RootedFileSystem> files_;
};

} // namespace tidwen::test
