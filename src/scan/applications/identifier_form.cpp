#include "scan/applications/identifier_form.h"

#include "base/text.h"
#include "scan/applications/bundle_names.h"

#include <algorithm>
#include <array>
#include <string>

namespace tidwen {
namespace {

// Extensions that only files have: wrapped names, fonts and keyboard layouts, input methods, files of
// plug-ins and filters, documents.
constexpr std::array fileExtensions = std::to_array<std::string_view>(
    {"plist", "savedstate", "binarycookies", "lockfile", "sfl",   "sfl2",      "sfl3",
     "sfl4",  "bom",        "log",           "ttf",      "otf",   "ttc",       "otc",
     "dfont", "suit",       "pfa",           "pfb",      "pfm",   "afm",       "lwfn",
     "ffil",  "woff",       "woff2",         "icc",      "icm",   "keylayout", "inputplugin",
     "cin",   "qtz",        "slidesaver",    "scpt",     "scptd", "aupreset",  "vstpreset",
     "icns",  "dpm",        "crash",         "ips",      "pkg",   "dmg",       "dylib",
     "db"});

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_'
           || static_cast<unsigned char>(c) >= 0x80;
}

/// Number of components; 0 when the text does not consist of such components.
std::size_t pieceCount(std::string_view text) {
    std::size_t pieces = 0;
    for (std::size_t start = 0; start <= text.size(); ++pieces) {
        const auto end = std::min(text.find('.', start), text.size());
        const auto piece = text.substr(start, end - start);
        if (piece.empty() || !std::all_of(piece.begin(), piece.end(), isPlain)) return 0;
        start = end + 1;
    }
    return pieces;
}

} // namespace

bool hasIdentifierForm(std::string_view text) {
    return pieceCount(text) >= 2;
}

bool isIdentifier(std::string_view text) {
    const auto pieces = pieceCount(text);
    if (pieces < 2) return false;
    const auto extension = lowercased(text.substr(text.rfind('.') + 1));
    if (extension == "app") return pieces > 2;
    return !isBundleName(text)
           && std::find(fileExtensions.begin(), fileExtensions.end(), extension) == fileExtensions.end();
}

} // namespace tidwen
