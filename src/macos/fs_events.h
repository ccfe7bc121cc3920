#pragma once

#include "base/path.h"
#include "platform/folder_events.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tidwen {

/// Watches folders below a root through the file system events of macOS.
class FsEvents : public FolderEvents {
  public:
    explicit FsEvents(std::filesystem::path root) : root_(std::move(root)) {}

    std::unique_ptr<Watch> watch(const Path& folder, std::function<void()> changed) override;
    /// The same for one file, which may be missing, in a folder that others change all the time.
    std::unique_ptr<Watch> watchFile(const Path& file, std::function<void()> changed);

  private:
    std::filesystem::path root_;
};

} // namespace tidwen
