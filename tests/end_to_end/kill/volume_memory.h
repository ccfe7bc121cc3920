#pragma once

#include "support/trees.h"

#include <algorithm>
#include <iterator>

namespace tidwen::test {

/// What a volume is to be again in the end: all of it but what Tidwen itself keeps in alice's Trash.
class VolumeMemory {
  public:
    explicit VolumeMemory(std::filesystem::path root) : root_(std::move(root)), before_(look()) {}

    /// The items that are not as they were, and those that are new.
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
