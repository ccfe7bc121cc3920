#pragma once

#include "quarantine/manifest.h"

#include <set>

namespace tidwen {

/// Gives each operation of a batch a unique number, which identifies its result; a manifest may contain a
/// number twice.
class OperationNumbers {
  public:
    explicit OperationNumbers(const Manifest& manifest) {
        for (const auto& entry : manifest.entries)
            reserved_.insert(entry.operationID);
    }

    /// The number of the removal's own operation if it is still free.
    int prefer(int number) { return number > 0 && given_.insert(number).second ? number : fresh(); }

    int fresh() {
        while (reserved_.contains(next_) || given_.contains(next_))
            ++next_;
        given_.insert(next_);
        return next_;
    }

  private:
    std::set<int> reserved_;
    std::set<int> given_;
    int next_ = 1;
};

} // namespace tidwen
