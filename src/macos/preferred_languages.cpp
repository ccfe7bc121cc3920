#include "macos/preferred_languages.h"

#include "macos/core_foundation.h"

namespace tidwen {

std::vector<std::string> preferredLanguages() {
    std::vector<std::string> languages;
    const CFOwned chosen(CFLocaleCopyPreferredLanguages());
    const CFIndex count = chosen ? CFArrayGetCount(chosen.get()) : 0;
    languages.reserve(static_cast<std::size_t>(count));
    for (CFIndex i = 0; i < count; ++i)
        if (auto language = textOf(CFArrayGetValueAtIndex(chosen.get(), i)))
            languages.push_back(std::move(*language));
    return languages;
}

} // namespace tidwen
