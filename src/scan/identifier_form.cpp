#include "scan/identifier_form.h"

#include "base/text.h"
#include "scan/bundle_names.h"

#include <algorithm>
#include <array>
#include <string>

namespace tidwen {
namespace {

// What only files are called: wrapped names, fonts and sounds, documents.
constexpr std::array<std::string_view, 22> fileExtensions = {
    "plist", "savedstate", "binarycookies", "lockfile", "sfl",   "sfl2", "sfl3",  "sfl4",
    "bom",   "log",        "ttf",           "otf",      "ttc",   "otc",  "dfont", "suit",
    "crash", "ips",        "pkg",           "dmg",      "dylib", "db"};

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_'
           || static_cast<unsigned char>(c) >= 0x80;
}

} // namespace

bool isIdentifier(std::string_view text) {
    std::size_t pieces = 0;
    std::string_view last;
    for (std::size_t start = 0; start <= text.size(); ++pieces) {
        const auto end = std::min(text.find('.', start), text.size());
        last = text.substr(start, end - start);
        if (last.empty() || !std::all_of(last.begin(), last.end(), isPlain)) return false;
        start = end + 1;
    }
    if (pieces < 2) return false;
    const auto extension = lowercased(last);
    if (std::find(fileExtensions.begin(), fileExtensions.end(), extension) != fileExtensions.end())
        return false;
    return pieces > 2 || !isBundleName(text);
}

} // namespace tidwen
