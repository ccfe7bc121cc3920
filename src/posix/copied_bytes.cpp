#include "posix/copied_bytes.h"

#include <utility>

namespace tidwen {

namespace {

constexpr std::uint64_t toldEvery = 1u << 20;

thread_local CopiedBytes* counterOfThread = nullptr;

} // namespace

CopiedBytes::CopiedBytes(std::function<void(std::uint64_t)> onCopied)
    : onCopied_(std::move(onCopied)), before_(std::exchange(counterOfThread, this)) {}

CopiedBytes::~CopiedBytes() {
    counterOfThread = before_;
}

void CopiedBytes::add(std::uint64_t bytes) {
    if (!counterOfThread) return;
    counterOfThread->sum_ += bytes;
    if (counterOfThread->sum_ - counterOfThread->told_ < toldEvery) return;
    counterOfThread->told_ = counterOfThread->sum_;
    counterOfThread->onCopied_(counterOfThread->sum_);
}

} // namespace tidwen
