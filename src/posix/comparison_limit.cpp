#include "posix/comparison_limit.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

constexpr std::uint64_t mostHolesRead = std::uint64_t{4} << 30;

thread_local ComparisonLimit* limitOfThread = nullptr;

} // namespace

ComparisonLimit::ComparisonLimit(StopToken stop) : stop_(std::move(stop)), holesLeft_(mostHolesRead) {
    if (!limitOfThread) limitOfThread = this;
}

ComparisonLimit::~ComparisonLimit() {
    if (limitOfThread == this) limitOfThread = nullptr;
}

bool ComparisonLimit::isStopped() {
    return limitOfThread && limitOfThread->stop_.stopRequested();
}

bool ComparisonLimit::allowsFree(std::uint64_t bytes) {
    if (!limitOfThread) return true;
    if (bytes > limitOfThread->holesLeft_) return false;
    limitOfThread->holesLeft_ -= bytes;
    return true;
}

bool ComparisonLimit::allowsHolesOf(const FileInfo& file) {
    return allowsFree(file.size - std::min(file.size, file.allocatedBytes));
}

std::optional<bool> ComparisonLimit::known(const FileInfo& a, const FileInfo& b) {
    if (!limitOfThread) return std::nullopt;
    const auto found = limitOfThread->compared_.find(pairOf(a, b));
    return found == limitOfThread->compared_.end() ? std::nullopt : std::optional(found->second);
}

void ComparisonLimit::add(const FileInfo& a, const FileInfo& b, bool isAlike) {
    if (limitOfThread && !isStopped()) limitOfThread->compared_.emplace(pairOf(a, b), isAlike);
}

ComparisonLimit::Pair ComparisonLimit::pairOf(const FileInfo& a, const FileInfo& b) {
    return {a.device, a.inode, a.size, static_cast<std::uint64_t>(a.modifiedNanoseconds),
            b.device, b.inode, b.size, static_cast<std::uint64_t>(b.modifiedNanoseconds)};
}

} // namespace tidwen
