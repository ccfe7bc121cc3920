#pragma once

#include <cerrno>
#include <tl/expected.hpp>
#include <unistd.h>
#include <utility>

namespace tidwen {

/// What a call of the operating system gives, or its errno.
template<class T>
using OsResult = tl::expected<T, int>;

/// An open file descriptor and its owner: closed when this goes.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    ~Descriptor() { close(); }

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

    /// Keeps errno, so that it can stand between a failed call and the look at its reason.
    void close() {
        if (number_ < 0) return;
        const int kept = errno;
        ::close(number_);
        errno = kept;
        number_ = -1;
    }
    /// Hands the descriptor over to somebody who closes it.
    int release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

/// Repeats a call that a signal cut short.
template<class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace tidwen
