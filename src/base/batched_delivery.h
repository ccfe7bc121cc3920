#pragma once

#include "base/executor.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tidwen {

/// Hands what worker threads find to the main thread, as much at a time as has gathered since the last
/// delivery: however fast they find it, one delivery at most is on its way. May be used from any thread.
template<class Piece>
class BatchedDelivery : public std::enable_shared_from_this<BatchedDelivery<Piece>> {
  public:
    using Deliver = std::function<void(std::vector<Piece>)>;

    /// `deliver` runs on `main`; it has to look itself whether whom it tells still lives.
    BatchedDelivery(Executor& main, Deliver deliver) : main_(main), deliver_(std::move(deliver)) {}

    void add(Piece piece) {
        {
            const std::lock_guard lock(mutex_);
            pieces_.push_back(std::move(piece));
            if (pieces_.size() > 1) return; // a delivery is on its way and takes it along
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
