#pragma once

#include "app/shell/open_mac.h"
#include "base/executor.h"

#include <list>
#include <memory>

namespace tidwen {

/// The Macs that were open before. What still reads them may wait for a disk that never answers, so each is
/// waited for on a thread of its own and then destroyed. Belongs to the main thread; ending it waits for all.
class LeftMacs {
  public:
    /// `main` outlives it.
    explicit LeftMacs(Executor& main) : main_(main) {}

    /// Nothing else refers to what `mac` holds any more.
    void add(std::unique_ptr<OpenMac> mac);

  private:
    Executor& main_;
    std::list<std::unique_ptr<OpenMac>> macs_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); ///< work that comes back late looks at it
    SeparateThreads threads_;                                    ///< last: its work uses the others
};

} // namespace tidwen
