#pragma once

#include "base/message.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The words of one language, read from "<language>.lproj/Localizable.strings" and ".stringsdict".
///
/// A key without a translation gives the English words, and without those the key itself, so nothing is
/// ever blank. Immutable after loading; safe to share between threads.
class Texts {
  public:
    /// No words at all: every key stands for itself. For tests that compare keys.
    Texts() = default;

    /// Loads English and lays `language` ("de", "pt-BR", "zh-Hans") over it, after its language without
    /// region
    /// ("pt"). A missing or malformed file contributes nothing; what was wrong is in `problems()`.
    static Texts load(const std::filesystem::path& resources, const std::string& language);

    /// The words for a key whose placeholders ("%@", "%lld", "%1$@") are filled from `arguments` in order;
    /// arguments are inserted as they are. A "%lld" whose argument is a number chooses the plural form where
    /// the language has several. A placeholder without an argument stays as it is.
    std::string text(std::string_view key, const std::vector<std::string>& arguments = {}) const;
    std::string text(const Message& message) const { return text(message.key, message.arguments); }

    const std::string& language() const { return language_; }
    const std::vector<std::string>& problems() const { return problems_; }

    /// Every key that has words, for the test that compares languages.
    std::vector<std::string> keys() const;

  private:
    struct Plural {
        std::string language;                                                ///< whose plural rules hold
        std::string format;                                                  ///< "%#@count@"
        std::map<std::string, std::map<std::string, std::string>> variables; ///< variable → category → words
    };
    struct Filling;

    bool addLanguage(const std::filesystem::path& resources, const std::string& language);
    bool addStrings(const std::filesystem::path& file);
    void addPlurals(const std::filesystem::path& file, const std::string& language);

    std::string language_ = "en";
    std::map<std::string, std::string, std::less<>> strings_;
    std::map<std::string, Plural, std::less<>> plurals_;
    std::vector<std::string> problems_;
};

} // namespace tidwen
