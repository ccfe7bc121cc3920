#pragma once

#include "base/message.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The words of one language, read from "<language>.lproj/Localizable.strings" and ".stringsdict".
///
/// A key without a translation gives the English words, and without those the key itself, so nothing is
/// ever blank. Safe to share between threads: one may assign another language while others read, and whoever
/// holds a reference speaks the new one from then on.
class Texts {
  public:
    /// No words at all: every key stands for itself. For tests that compare keys.
    Texts();
    Texts(const Texts& other);
    Texts& operator=(const Texts& other);

    /// Loads English and lays `language` ("de", "pt-BR", "zh-Hans") over it, after its language without
    /// region
    /// ("pt"). A missing or malformed file contributes nothing; what was wrong is in `problems()`.
    static Texts load(const std::filesystem::path& resources, const std::string& language);

    /// The words for a key whose placeholders ("%@", "%lld", "%1$@") are filled from `arguments` in order;
    /// arguments are inserted as they are. A "%lld" whose argument is a number chooses the plural form where
    /// the language has several. A placeholder without an argument stays as it is.
    std::string text(std::string_view key, const std::vector<std::string>& arguments = {}) const;
    std::string text(const Message& message) const { return text(message.key, message.arguments); }

    std::string language() const;
    std::vector<std::string> problems() const;

    /// Every key that has words, for the test that compares languages.
    std::vector<std::string> keys() const;

  private:
    struct Words;
    struct Filling;

    std::shared_ptr<const Words> words() const;

    mutable std::mutex mutex_; ///< guards `words_`
    std::shared_ptr<const Words> words_;
};

} // namespace tidwen
