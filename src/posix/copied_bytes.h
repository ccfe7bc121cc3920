#pragma once

#include <cstdint>
#include <functional>

namespace tidwen {

/// Observes, during its lifetime, how many bytes the current thread copies between disks. Per thread, because
/// the copy happens far below the code that shows it, inside a move that may as well be a plain rename.
/// Nested observers replace the outer one.
class CopiedBytes {
  public:
    /// Called with the total, at most once per mebibyte.
    explicit CopiedBytes(std::function<void(std::uint64_t)> onCopied);
    ~CopiedBytes();
    CopiedBytes(const CopiedBytes&) = delete;
    CopiedBytes& operator=(const CopiedBytes&) = delete;

    /// Called by the copying code.
    static void add(std::uint64_t bytes);

  private:
    std::function<void(std::uint64_t)> onCopied_;
    std::uint64_t sum_ = 0, told_ = 0;
    CopiedBytes* before_ = nullptr;
};

} // namespace tidwen
