#pragma once

#include "base/path.h"
#include "platform/folder_events.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace tidwen {

class RootResolver;

/// Watches folders below a root with this machine's kernel (inotify). Without it, no folder can be watched.
class VolumeFolderEvents : public FolderEvents {
  public:
    explicit VolumeFolderEvents(const std::filesystem::path& root);
    ~VolumeFolderEvents() override;

    std::unique_ptr<Watch> watch(const Path& folder, std::function<void()> changed) override;

  private:
    std::shared_ptr<const RootResolver> resolver_; ///< null when the root cannot be opened
};

} // namespace tidwen
