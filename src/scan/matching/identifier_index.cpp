#include "scan/matching/identifier_index.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace tidwen {

namespace {

constexpr std::size_t keyLength = 8;

/// Whether the text begins with one of the sorted strings, none of which begins another.
template<class Iterator>
bool anyBegins(Iterator first, Iterator last, std::string_view text) {
    const auto after = std::upper_bound(first, last, text);
    return after != first && text.starts_with(*std::prev(after));
}

} // namespace

/// Of the first eight bytes; the text must have at least as many.
std::size_t IdentifierIndex::slotOf(std::string_view text) {
    std::uint64_t key = 0;
    std::memcpy(&key, text.data(), keyLength);
    return static_cast<std::size_t>((key * 0x9E3779B97F4A7C15u) >> 53); // the top eleven bits: 2048 slots
}

IdentifierIndex::IdentifierIndex(std::vector<std::string> identifiers) : all_(std::move(identifiers)) {
    std::erase(all_, "");
    std::sort(all_.begin(), all_.end());
    all_.erase(std::unique(all_.begin(), all_.end()), all_.end());

    std::string_view beginning; // of the last identifier kept: sorted, it precedes all that it begins
    for (const auto& identifier : all_) {
        if (!beginning.empty() && identifier.starts_with(beginning)) continue;
        beginning = identifier;
        (identifier.size() < keyLength ? shortBeginnings_ : beginnings_).push_back(identifier);
    }
    std::stable_sort(beginnings_.begin(), beginnings_.end(),
                     [](const auto& a, const auto& b) { return slotOf(a) < slotOf(b); });
    for (const auto& identifier : beginnings_)
        ++slots_[slotOf(identifier) + 1];
    for (std::size_t slot = 0; slot < slotCount; ++slot)
        slots_[slot + 1] += slots_[slot];
}

bool IdentifierIndex::startsAny(std::string_view text) const {
    if (!shortBeginnings_.empty() && anyBegins(shortBeginnings_.begin(), shortBeginnings_.end(), text))
        return true;
    if (text.size() < keyLength) return false;
    const auto slot = slotOf(text);
    return slots_[slot] != slots_[slot + 1]
           && anyBegins(beginnings_.begin() + slots_[slot], beginnings_.begin() + slots_[slot + 1], text);
}

std::size_t IdentifierIndex::longestContinued(std::string_view text) const {
    if (!startsAny(text)) return 0;
    for (auto length = text.size(); length > 0;) {
        if (contains(text.substr(0, length))) return length;
        const auto dot = text.rfind('.', length - 1);
        length = dot == text.npos ? 0 : dot;
    }
    return 0;
}

bool IdentifierIndex::contains(std::string_view text) const {
    return std::binary_search(all_.begin(), all_.end(), text);
}

} // namespace tidwen
