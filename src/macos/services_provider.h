#pragma once

#include "base/path.h"

#include <functional>
#include <memory>
#include <vector>

namespace tidwen {

/// Serves the entry of the Services menu while it lives. Main thread only.
class ServicesProvider {
  public:
    using Serve = std::function<void(const std::vector<Path>& selection)>;

    /// `serve` is called on the main thread with the files that were selected.
    explicit ServicesProvider(Serve serve);
    ~ServicesProvider();

  private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace tidwen
