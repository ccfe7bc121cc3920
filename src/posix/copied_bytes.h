#pragma once

#include <cstdint>
#include <functional>

namespace tidwen {

/// While it lives, observes what the current thread copies from one disk to another. By thread, because the
/// copy is made deep below whoever shows it, in a move that may as well be a mere renaming. One replaces
/// another one until it is gone.
class CopiedBytes {
  public:
    /// Called with the sum, at most once a mebibyte.
    explicit CopiedBytes(std::function<void(std::uint64_t)> onCopied);
    ~CopiedBytes();
    CopiedBytes(const CopiedBytes&) = delete;
    CopiedBytes& operator=(const CopiedBytes&) = delete;

    /// Called by what copies.
    static void add(std::uint64_t bytes);

  private:
    std::function<void(std::uint64_t)> onCopied_;
    std::uint64_t sum_ = 0, told_ = 0;
    CopiedBytes* before_ = nullptr;
};

} // namespace tidwen
