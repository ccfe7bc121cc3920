#pragma once

#include "base/executor.h"

#include <memory>
#include <utility>

namespace tidwen {

/// Runs `work` in the background and passes its result to `then(owner, result)` on the main thread, unless
/// the owner has been destroyed by then. `alive` expires with the owner; `work` must not touch the owner.
template<class Owner, class Work, class Then>
void inBackground(Owner& owner, const std::shared_ptr<bool>& alive, Executor& background, Executor& main,
                  Work work, Then then) {
    background.post([&owner, weak = std::weak_ptr(alive), &main, work = std::move(work),
                     then = std::move(then)]() mutable {
        auto result = std::make_shared<decltype(work())>(work());
        main.post([&owner, weak, result, then = std::move(then)]() mutable {
            if (!weak.expired()) then(owner, std::move(*result));
        });
    });
}

} // namespace tidwen
