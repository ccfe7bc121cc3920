#include "platform/icon_family.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace tidwen {

namespace {

constexpr std::string_view familyMagic = "icns";
constexpr std::size_t headerBytes = 8; ///< of the file and of each entry: a name, and the length with these
constexpr std::size_t maxImages = 64;
constexpr unsigned maxSide = 1024;

struct Image {
    std::string_view whole; ///< with its header
    std::string_view type() const { return whole.substr(0, 4); }
    std::string_view content() const { return whole.substr(headerBytes); }
};

struct Picture {
    unsigned side = 0;
    std::string_view entry;
    std::string_view mask = {}; ///< the entry with its transparency, where it is one of its own
};

/// The old form: colours without transparency beside a mask.
struct MaskedType {
    std::string_view colors;
    std::string_view mask;
    unsigned side;
};
constexpr std::array maskedTypes = {MaskedType{"it32", "t8mk", 128}, MaskedType{"ih32", "h8mk", 48},
                                    MaskedType{"il32", "l8mk", 32}, MaskedType{"is32", "s8mk", 16}};

std::uint32_t number(std::string_view bytes) {
    std::uint32_t value = 0;
    for (const unsigned char byte : bytes.substr(0, 4))
        value = value << 8 | byte;
    return value;
}

std::string bytesOf(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xff);
    return bytes;
}

std::vector<Image> imagesOf(std::string_view file) {
    std::vector<Image> entries;
    if (file.size() < headerBytes || !file.starts_with(familyMagic)) return entries;
    file = file.substr(0, number(file.substr(4)));
    for (std::size_t at = headerBytes; entries.size() < maxImages && at + headerBytes <= file.size();) {
        const std::size_t length = number(file.substr(at + 4));
        if (length < headerBytes || length > file.size() - at) break;
        entries.push_back({file.substr(at, length)});
        at += length;
    }
    return entries;
}

/// No picture needs more than its pixels and some notes about them.
bool isPlausible(std::size_t bytes, unsigned side) {
    return bytes <= std::size_t{4} * side * side + std::size_t{64} * 1024;
}

/// The side of a square PNG; 0 for anything else.
unsigned sideOfPng(std::string_view content) {
    constexpr std::string_view start("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
    if (content.size() < start.size() + 8 || !content.starts_with(start)) return 0;
    const auto side = number(content.substr(start.size()));
    const bool isSquare = side == number(content.substr(start.size() + 4));
    return isSquare && side <= maxSide && isPlausible(content.size(), side) ? side : 0;
}

std::vector<Picture> modernPictures(const std::vector<Image>& entries) {
    std::vector<Picture> pictures;
    pictures.reserve(entries.size());
    for (const auto& entry : entries)
        if (const auto side = sideOfPng(entry.content()); side > 0 && entry.type().starts_with("ic"))
            pictures.push_back({side, entry.whole});
    return pictures;
}

std::vector<Picture> maskedPictures(const std::vector<Image>& entries) {
    const auto find = [&](std::string_view type) { return std::ranges::find(entries, type, &Image::type); };
    std::vector<Picture> pictures;
    pictures.reserve(maskedTypes.size());
    for (const auto& type : maskedTypes) {
        const auto colors = find(type.colors), mask = find(type.mask);
        if (colors != entries.end() && mask != entries.end() && isPlausible(colors->whole.size(), type.side)
            && isPlausible(mask->whole.size(), type.side))
            pictures.push_back({type.side, colors->whole, mask->whole});
    }
    return pictures;
}

} // namespace

std::optional<std::string> reducedIcon(std::string_view file, unsigned pixels) {
    const auto entries = imagesOf(file);
    auto pictures = modernPictures(entries);
    if (pictures.empty()) pictures = maskedPictures(entries);
    const auto fitsBetter = [pixels](const Picture& a, const Picture& b) {
        const bool isEnough = a.side >= pixels;
        if (isEnough != (b.side >= pixels)) return isEnough;
        return isEnough ? a.side < b.side : a.side > b.side;
    };
    const auto best = std::ranges::min_element(pictures, fitsBetter);
    if (best == pictures.end()) return std::nullopt;
    const auto length = static_cast<std::uint32_t>(headerBytes + best->entry.size() + best->mask.size());
    std::string reduced;
    reduced.reserve(length);
    return reduced.append(familyMagic).append(bytesOf(length)).append(best->entry).append(best->mask);
}

} // namespace tidwen
