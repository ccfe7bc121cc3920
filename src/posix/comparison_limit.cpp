#include "posix/comparison_limit.h"

#include <algorithm>
#include <utility>

namespace tidwen {

namespace {

constexpr std::uint64_t mostHolesRead = std::uint64_t{4} << 30;

thread_local ComparisonLimit* current = nullptr;

} // namespace

ComparisonLimit::ComparisonLimit(StopToken stop) : stop_(std::move(stop)), holesLeft_(mostHolesRead) {
    if (!current) current = this;
}

ComparisonLimit::~ComparisonLimit() {
    if (current == this) current = nullptr;
}

bool ComparisonLimit::isStopped() {
    return current && current->stop_.stopRequested();
}

bool ComparisonLimit::allowsFree(std::uint64_t bytes) {
    if (!current) return true;
    if (bytes > current->holesLeft_) return false;
    current->holesLeft_ -= bytes;
    return true;
}

bool ComparisonLimit::allowsHolesOf(const FileInfo& file) {
    return allowsFree(file.size - std::min(file.size, file.allocatedBytes));
}

std::optional<bool> ComparisonLimit::known(const FileInfo& a, const FileInfo& b) {
    if (!current) return std::nullopt;
    const auto found = current->compared_.find(pairOf(a, b));
    return found == current->compared_.end() ? std::nullopt : std::optional(found->second);
}

void ComparisonLimit::add(const FileInfo& a, const FileInfo& b, bool isAlike) {
    if (current && !isStopped()) current->compared_.emplace(pairOf(a, b), isAlike);
}

ComparisonLimit::Pair ComparisonLimit::pairOf(const FileInfo& a, const FileInfo& b) {
    return {a.device, a.inode, a.size, static_cast<std::uint64_t>(a.modifiedNanoseconds),
            b.device, b.inode, b.size, static_cast<std::uint64_t>(b.modifiedNanoseconds)};
}

} // namespace tidwen
