#include "quarantine/comparison_limit.h"

#include <algorithm>

namespace tidwen {

namespace {

constexpr std::uint64_t mostHolesRead = std::uint64_t{4} << 30;

thread_local ComparisonLimit* current = nullptr;

} // namespace

ComparisonLimit::ComparisonLimit(StopToken stop)
    : stop_(std::move(stop)), holesLeft_(mostHolesRead), before_(std::exchange(current, this)) {}

ComparisonLimit::~ComparisonLimit() {
    current = before_;
}

bool ComparisonLimit::isStopped() {
    return current && current->stop_.stopRequested();
}

bool ComparisonLimit::allowsHolesOf(const FileInfo& file) {
    const auto holes = file.size - std::min(file.size, file.allocatedBytes);
    if (!current) return true;
    if (holes > current->holesLeft_) return false;
    current->holesLeft_ -= holes;
    return true;
}

bool ComparisonLimit::isKnownToDiffer(const FileInfo& a, const FileInfo& b) {
    return current && current->different_.contains(pairOf(a, b));
}

void ComparisonLimit::addDifference(const FileInfo& a, const FileInfo& b) {
    if (current && !isStopped()) current->different_.insert(pairOf(a, b));
}

std::pair<ComparisonLimit::Item, ComparisonLimit::Item> ComparisonLimit::pairOf(const FileInfo& a,
                                                                                const FileInfo& b) {
    return {{a.device, a.inode}, {b.device, b.inode}};
}

} // namespace tidwen
