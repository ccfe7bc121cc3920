#pragma once

#include "base/executor.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tidwen {

/// Delivers results of worker threads to the main thread in batches: each delivery carries everything
/// gathered since the last one, and at most one is queued, however fast results come. Thread-safe.
template<class Piece>
class BatchedDelivery : public std::enable_shared_from_this<BatchedDelivery<Piece>> {
  public:
    using Deliver = std::function<void(std::vector<Piece>)>;

    /// `deliver` runs on `main`; it must check itself whether its receiver still exists.
    BatchedDelivery(Executor& main, Deliver deliver) : main_(main), deliver_(std::move(deliver)) {}

    void add(Piece piece) {
        {
            const std::lock_guard lock(mutex_);
            pieces_.push_back(std::move(piece));
            if (pieces_.size() > 1) return; // a delivery is already queued and will take it along
        }
        main_.post([self = this->shared_from_this()] { self->deliver(); });
    }

  private:
    void deliver() {
        std::vector<Piece> pieces;
        {
            const std::lock_guard lock(mutex_);
            pieces = std::exchange(pieces_, {});
        }
        deliver_(std::move(pieces));
    }

    Executor& main_;
    Deliver deliver_;
    std::mutex mutex_;
    std::vector<Piece> pieces_;
};

} // namespace tidwen
