#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace tidwen {

/// Keeps one observer connected until destroyed. May outlive the signal.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> disconnect) : disconnect_(std::move(disconnect)) {}
    ~Subscription() { reset(); }
    Subscription(Subscription&& other) noexcept : disconnect_(std::exchange(other.disconnect_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            reset();
            disconnect_ = std::exchange(other.disconnect_, nullptr);
        }
        return *this;
    }
    void reset() {
        if (auto disconnect = std::exchange(disconnect_, nullptr)) disconnect();
    }

  private:
    std::function<void()> disconnect_;
};

/// Calls its observers in the order in which they connected. Single thread only. An observer may connect and
/// disconnect observers, itself included, while it is called.
template<class... Args>
class Signal {
  public:
    [[nodiscard]] Subscription connect(std::function<void(Args...)> observer) {
        const auto id = ++observers_->last;
        observers_->byID.emplace(id, std::move(observer));
        return Subscription([weak = std::weak_ptr(observers_), id] {
            if (const auto observers = weak.lock()) observers->byID.erase(id);
        });
    }

    void emit(Args... args) const {
        const auto observers = observers_; // an observer may destroy the signal's owner
        const auto newest = observers->last;
        for (auto it = observers->byID.begin(); it != observers->byID.end() && it->first <= newest;) {
            const auto id = it->first;
            const auto call = it->second;
            call(args...);
            it = observers->byID.upper_bound(id);
        }
    }

  private:
    struct Observers {
        std::uint64_t last = 0;
        std::map<std::uint64_t, std::function<void(Args...)>> byID;
    };
    std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
};

/// A value that notifies its observers when it changes. Single thread only.
template<class T>
class Property {
  public:
    Property() = default;
    explicit Property(T value) : value_(std::move(value)) {}

    const T& get() const { return value_; }

    /// Does nothing when the value is equal. Returns whether it changed.
    bool set(T value) {
        if (value == value_) return false;
        value_ = std::move(value);
        changed_.emit(value_);
        return true;
    }

    [[nodiscard]] Subscription observe(std::function<void(const T&)> observer) {
        return changed_.connect(std::move(observer));
    }

  private:
    T value_{};
    Signal<const T&> changed_;
};

} // namespace tidwen
