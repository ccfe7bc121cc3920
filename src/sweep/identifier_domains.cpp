#include "sweep/identifier_domains.h"

#include "scan/applications/identifier_form.h"

#include <algorithm>
#include <array>
#include <libpsl.h>
#include <string>

namespace tidwen {
namespace {

/// Prefixes that many vendors use without owning the domain: hosts of source code missing in the list, tools
/// that name what people build with them, and placeholders in examples.
constexpr std::array hosts = std::to_array<std::string_view>(
    {"com.github", "com.gitlab", "com.googlecode", "com.electron", "com.electronjs", "com.todesktop",
     "com.company", "com.example", "com.mycompany", "com.yourcompany", "net.sourceforge", "org.bitbucket",
     "org.pythonmac.unspecified", "org.sourceforge"});

/// The end of the first `count` components; the whole length when there are fewer.
std::size_t endOfPieces(std::string_view identifier, std::size_t count) {
    std::size_t end = 0;
    for (std::size_t piece = 0; piece < count; ++piece) {
        end = identifier.find('.', end + (piece > 0));
        if (end == identifier.npos) return identifier.size();
    }
    return end;
}

std::size_t countPieces(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '.')) + 1;
}

std::string turnedAround(std::string_view identifier) {
    std::string domain;
    for (auto rest = identifier;;) {
        const auto dot = rest.rfind('.');
        domain += dot == rest.npos ? rest : rest.substr(dot + 1);
        if (dot == rest.npos) return domain;
        domain += '.';
        rest = rest.substr(0, dot);
    }
}

} // namespace

bool isTopLevelDomain(std::string_view piece) {
    // Called for every name on a disk, and nearly all identifiers begin like this.
    if (piece == "com" || piece == "org" || piece == "net" || piece == "io") return true;
    if (piece.empty() || piece.find('.') != piece.npos) return false;
    const auto* list = psl_builtin();
    return list
           && psl_is_public_suffix2(list, std::string(piece).c_str(), PSL_TYPE_ANY | PSL_TYPE_NO_STAR_RULE)
                  != 0;
}

std::string_view makerOf(std::string_view identifier) {
    for (const auto host : hosts) {
        if (!continuesIdentifier(identifier, host)) continue;
        if (identifier.size() == host.size()) return {};
        return identifier.substr(0, endOfPieces(identifier, countPieces(host) + 1));
    }
    // No vendor's domain has more components; the rest need not be reversed.
    constexpr std::size_t mostPieces = 8;
    const auto beginning = identifier.substr(0, endOfPieces(identifier, mostPieces));
    const auto domain = turnedAround(beginning);
    const auto* list = psl_builtin();
    const char* maker = list ? psl_registrable_domain(list, domain.c_str()) : nullptr;
    return maker ? identifier.substr(0, endOfPieces(identifier, countPieces(maker))) : std::string_view();
}

} // namespace tidwen
