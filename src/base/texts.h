#pragma once

#include "base/message.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The translations of one language, read from "<language>.lproj/Localizable.strings" and ".stringsdict".
///
/// A key without a translation falls back to English, then to the key itself, so no text is ever empty.
/// Thread-safe: one thread may assign another language while others read; every holder of a reference then
/// uses the new one.
class Texts {
  public:
    /// No translations: every key stands for itself. For tests that compare keys.
    Texts();
    Texts(const Texts& other);
    Texts& operator=(const Texts& other);

    /// Loads English and overlays `language` ("de", "pt-BR", "zh-Hans"), after its language without region
    /// ("pt"). A missing or malformed file contributes nothing and is reported in `problems()`.
    static Texts load(const std::filesystem::path& resources, const std::string& language);

    /// The translation of a key, its placeholders ("%@", "%lld", "%1$@") filled from `arguments` in order. A
    /// "%lld" with a count is written as the language writes numbers, and selects the plural form where there
    /// are several; every other argument is inserted as it is. A placeholder without an argument is left.
    std::string text(std::string_view key, const std::vector<std::string>& arguments = {}) const;
    std::string text(const Message& message) const;

    std::string language() const;
    std::vector<std::string> problems() const;

    /// Every translated key, for the test that compares languages.
    std::vector<std::string> keys() const;

  private:
    struct Words;
    struct Filling;

    std::shared_ptr<const Words> words() const;

    mutable std::mutex mutex_; ///< guards `words_`
    std::shared_ptr<const Words> words_;
};

} // namespace tidwen
