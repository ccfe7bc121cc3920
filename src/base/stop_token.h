#pragma once

#include <atomic>
#include <memory>

namespace tidwen {

/// Tells work that it should end early. A default-constructed token never does. (The standard library of the
/// oldest supported Apple toolchain has no std::stop_token.)
class StopToken {
  public:
    StopToken() = default;
    bool stopRequested() const { return flag_ && flag_->load(std::memory_order_relaxed); }

  private:
    friend class StopSource;
    explicit StopToken(std::shared_ptr<std::atomic<bool>> flag) : flag_(std::move(flag)) {}
    std::shared_ptr<std::atomic<bool>> flag_;
};

class StopSource {
  public:
    StopToken token() const { return StopToken(flag_); }
    void requestStop() { flag_->store(true, std::memory_order_relaxed); }

  private:
    std::shared_ptr<std::atomic<bool>> flag_ = std::make_shared<std::atomic<bool>>(false);
};

} // namespace tidwen
