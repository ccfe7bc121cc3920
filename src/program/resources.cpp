#include "program/resources.h"

#include "base/language.h"
#include "base/property_list.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#ifdef __APPLE__
#include "macos/preferred_languages.h"

#include <climits>
#include <cstdint>
#include <mach-o/dyld.h>
#endif

namespace tidwen {

namespace fs = std::filesystem;

namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing sets variables
    return value ? value : "";
}

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// What the system says; it may be a link. What a shell gives as the program's name is only its word.
fs::path runningFile() {
#ifdef __APPLE__
    std::string path(PATH_MAX, '\0');
    auto size = static_cast<std::uint32_t>(path.size());
    return ::_NSGetExecutablePath(path.data(), &size) == 0 ? fs::path(path.c_str()) : fs::path();
#else
    return "/proc/self/exe";
#endif
}

/// "de_AT.UTF-8@euro" → "de-AT"; nothing for the "C" locale, which is no language.
std::string languageTag(std::string locale) {
    locale.erase(std::min(locale.find_first_of(".@"), locale.size()));
    std::replace(locale.begin(), locale.end(), '_', '-');
    return locale == "C" || locale == "POSIX" ? std::string() : locale;
}

/// What the environment asks for, as a shell has it; whatever Finder or launchd starts has only what the user
/// chose in System Settings.
std::vector<std::string> wishedLanguages() {
    for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const auto value = environment(variable); !value.empty()) return {languageTag(value)};
#ifdef __APPLE__
    return preferredLanguages();
#else
    return {};
#endif
}

} // namespace

fs::path programFile(const char* program) {
    std::error_code failed;
    if (auto file = fs::canonical(runningFile(), failed); !failed) return file;
    const std::string_view name = program ? program : "";
    if (name.find('/') != std::string_view::npos) {
        auto file = fs::canonical(name, failed);
        return failed ? fs::path{} : file;
    }
    std::istringstream folders(environment("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');)
        if (auto file = fs::canonical(fs::path(folder) / name, failed); !failed) return file;
    return {};
}

fs::path findResources(const char* program) {
    if (const auto chosen = environment("TIDWEN_RESOURCES"); !chosen.empty()) return chosen;
    const auto file = programFile(program);
    if (file.empty()) return {};
    for (const auto* place : {"resources", "share/tidwen", "Resources"})
        if (auto folder = file.parent_path().parent_path() / place; isFolder(folder / "en.lproj"))
            return folder;
    return {};
}

OwnBundle findOwnBundle(const char* program) {
    const auto contents = programFile(program).parent_path().parent_path();
    constexpr std::size_t longestInfo = 1u << 20;
    std::string text(longestInfo, '\0');
    std::ifstream file(contents / "Info.plist", std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    const auto info = parsePropertyList(text);
    const auto* entries = info ? info->asDictionary() : nullptr;
    return ownBundle(contents.parent_path().string(), entries ? *entries : PropertyListDictionary());
}

std::vector<std::string> availableLanguages(const fs::path& resources) {
    std::vector<std::string> languages;
    std::error_code failed;
    for (fs::directory_iterator entry(resources, failed), end; !failed && entry != end;
         entry.increment(failed))
        if (entry->path().extension() == ".lproj") languages.push_back(entry->path().stem().string());
    std::sort(languages.begin(), languages.end());
    return languages;
}

std::string spokenLanguage(const fs::path& resources, const std::string& setting) {
    const auto available = availableLanguages(resources);
    if (std::find(available.begin(), available.end(), setting) != available.end()) return setting;
    return closestLanguage(wishedLanguages(), available).value_or("en");
}

} // namespace tidwen
