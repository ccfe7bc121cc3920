#pragma once

#include <cerrno>
#include <tl/expected.hpp>
#include <unistd.h>
#include <utility>

namespace tidwen {

/// The result of a system call, or its errno.
template<class T>
using OsResult = tl::expected<T, int>;

/// Owns an open file descriptor and closes it on destruction.
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

    /// Preserves errno, so that it may run between a failed call and the check of its reason.
    void close() {
        if (number_ < 0) return;
        const int kept = errno;
        ::close(number_);
        errno = kept;
        number_ = -1;
    }
    /// Releases ownership; the caller closes the descriptor.
    int release() { return std::exchange(number_, -1); }

  private:
    int number_ = -1;
};

/// Repeats a call that was interrupted by a signal.
template<class Call>
auto retryOnEintr(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace tidwen
