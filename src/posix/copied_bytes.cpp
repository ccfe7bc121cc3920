#include "posix/copied_bytes.h"

#include <utility>

namespace tidwen {

namespace {

constexpr std::uint64_t toldEvery = 1u << 20;

thread_local CopiedBytes* current = nullptr;

} // namespace

CopiedBytes::CopiedBytes(std::function<void(std::uint64_t)> onCopied)
    : onCopied_(std::move(onCopied)), before_(std::exchange(current, this)) {}

CopiedBytes::~CopiedBytes() {
    current = before_;
}

void CopiedBytes::add(std::uint64_t bytes) {
    if (!current) return;
    current->sum_ += bytes;
    if (current->sum_ - current->told_ < toldEvery) return;
    current->told_ = current->sum_;
    current->onCopied_(current->sum_);
}

} // namespace tidwen
