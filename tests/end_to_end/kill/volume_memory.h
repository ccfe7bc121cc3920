#pragma once

#include "support/trees.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace tidwen::test {

/// The initial state of a volume, without Tidwen's own files in alice's Trash.
class VolumeMemory {
  public:
    explicit VolumeMemory(std::filesystem::path root) : root_(std::move(root)), before_(look()) {}

    /// Changed, missing and new items.
    std::vector<std::string> changes() const {
        std::vector<std::string> changed;
        const auto now = look();
        std::set_symmetric_difference(before_.begin(), before_.end(), now.begin(), now.end(),
                                      std::back_inserter(changed));
        return changed;
    }

  private:
    std::vector<std::string> look() const {
        auto lines = fingerprint(root_, FolderTimes::ignored);
        std::erase_if(lines,
                      [](const auto& line) { return line.starts_with("Users/alice/.Trash/Tidwen - "); });
        return lines;
    }

    std::filesystem::path root_;
    std::vector<std::string> before_;
};

} // namespace tidwen::test
