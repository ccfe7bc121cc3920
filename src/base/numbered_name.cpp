#include "base/numbered_name.h"

#include <algorithm>
#include <fmt/core.h>
#include <string>
#include <string_view>

namespace tidwen {

namespace {

// The last part of an identifier ("com.example.notes") is no extension, so only those of known kinds are.
constexpr std::string_view knownExtensions =
    " 7z aif aiff app appex bak binarycookies bom bundle bz2 cfg command conf crash css csv db diag"
    " dmg doc docx dylib gif gz heic html icns ini ips iso jar jpeg jpg js json kext lock lockfile"
    " log m4a m4v md mov mp3 mp4 mpkg pdf pkg plist png ppt pptx prefpane psd py qlgenerator rar rtf"
    " saver savedstate sfl2 sfl3 sfl4 sh sqlite sqlite3 svg systemextension tar tgz tif tiff txt wav"
    " xls xlsx xml xpc xz yaml yml zip ";

bool hasKnownExtension(const Path& path) {
    const auto extension = path.lowercasedExtension();
    if (extension.empty() || extension.find(' ') != extension.npos) return false;
    return knownExtensions.find(" " + extension + " ") != knownExtensions.npos;
}

} // namespace

std::string shortened(std::string text, std::size_t bytes) {
    if (text.size() <= bytes) return text;
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80)
        --bytes;
    text.resize(bytes);
    return text;
}

Path numberedName(const Path& path, int number) {
    if (number < 2) return path;
    auto stem = path.stem();
    auto tail = fmt::format(" {}.{}", number, path.extension());
    if (!hasKnownExtension(path) || tail.size() >= longestFileName) {
        stem = path.lastComponent();
        tail = fmt::format(" {}", number);
    }
    return path.parent() / (shortened(std::move(stem), longestFileName - tail.size()) + tail);
}

} // namespace tidwen
