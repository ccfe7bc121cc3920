#include "base/texts.h"

#include "base/language.h"
#include "base/property_list.h"
#include "base/strings_file.h"
#include "base/text_format.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <system_error>

namespace tidwen {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> readFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::error_code failed;
    const auto size = fs::file_size(file, failed);
    std::string bytes(failed ? 0 : static_cast<std::size_t>(size), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

std::string nameOf(const fs::path& file) {
    return (file.parent_path().filename() / file.filename()).string();
}

/// The language becomes part of a path, and the settings may contain any text.
bool isLanguageTag(std::string_view language) {
    return !language.empty() && std::all_of(language.begin(), language.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    });
}

/// The whole of `text` as a number.
std::optional<std::int64_t> asNumber(const std::string& text) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

} // namespace

/// Everything loaded for one language; immutable.
struct Texts::Words {
    struct Plural {
        std::string language; ///< the language whose plural rules apply
        std::string format;   ///< "%#@count@"
        std::map<std::string, std::map<std::string, std::string>> variables; ///< variable → category → text
    };

    bool addLanguage(const fs::path& resources, const std::string& tag);
    bool addStrings(const fs::path& file);
    void addPlurals(const fs::path& file, const std::string& tag);

    std::string language = "en";
    std::map<std::string, std::string, std::less<>> strings;
    std::map<std::string, Plural, std::less<>> plurals;
    std::vector<std::string> problems;
};

/// Fills one text: iterates over its parts and counts the next argument.
struct Texts::Filling {
    const std::vector<std::string>& arguments;
    const std::string& language; ///< writes the numbers
    const Words::Plural* plural = nullptr;
    std::size_t next = 0;

    std::string fill(std::string_view format) {
        std::string out;
        for (const auto& part : parseFormat(format)) {
            if (part.kind == FormatPart::Kind::words) {
                out += part.text;
                continue;
            }
            const auto index = part.position ? *part.position : next++;
            if (part.kind == FormatPart::Kind::variable)
                out += variable(part.text, index);
            else
                out += filled(part, index);
        }
        return out;
    }

    std::string filled(const FormatPart& part, std::size_t index) const {
        if (index >= arguments.size()) return part.text;
        const auto number = part.kind == FormatPart::Kind::number ? asNumber(arguments[index]) : std::nullopt;
        const bool isCount = number && *number >= 0; // the negative ones are codes of the system
        return isCount ? formatNumber(*number, language) : arguments[index];
    }

    /// The text of a plural variable, in which a placeholder without a position is the variable's own number.
    std::string variable(const std::string& name, std::size_t index) const {
        if (!plural) return {};
        const auto forms = plural->variables.find(name);
        if (forms == plural->variables.end()) return {};
        std::string out;
        for (const auto& part : parseFormat(formFor(forms->second, index)))
            out += part.kind == FormatPart::Kind::words ? part.text
                                                        : filled(part, part.position.value_or(index));
        return out;
    }

    const std::string& formFor(const std::map<std::string, std::string>& forms, std::size_t index) const {
        const auto number = index < arguments.size() ? asNumber(arguments[index]) : std::nullopt;
        // As on a Mac, "zero" applies to 0 in every language that defines it.
        auto form = forms.end();
        if (number == 0) form = forms.find("zero");
        if (number && form == forms.end()) form = forms.find(pluralCategory(*number, plural->language));
        return form == forms.end() ? forms.at("other") : form->second;
    }
};

Texts::Texts() : words_(std::make_shared<const Words>()) {}

Texts::Texts(const Texts& other) : words_(other.words()) {}

Texts& Texts::operator=(const Texts& other) {
    if (&other == this) return *this;
    auto words = other.words(); // taken before locking, so that both locks are never held
    const std::lock_guard lock(mutex_);
    words_ = std::move(words);
    return *this;
}

std::shared_ptr<const Texts::Words> Texts::words() const {
    const std::lock_guard lock(mutex_);
    return words_;
}

Texts Texts::load(const fs::path& resources, const std::string& language) {
    auto words = std::make_shared<Words>();
    Texts texts;
    texts.words_ = words;
    if (!words->addLanguage(resources, "en"))
        words->problems.push_back("en.lproj/Localizable.strings: missing");
    if (language == "en") return texts;
    if (!isLanguageTag(language)) {
        words->problems.push_back("not a language");
        return texts;
    }
    bool found = false;
    const auto general = language.substr(0, language.find('-'));
    if (general != language && general != "en") found = words->addLanguage(resources, general);
    found = words->addLanguage(resources, language) || found;
    if (found || general == "en")
        words->language = language;
    else
        words->problems.push_back(language + ".lproj/Localizable.strings: missing");
    return texts;
}

bool Texts::Words::addLanguage(const fs::path& resources, const std::string& tag) {
    const auto folder = resources / (tag + ".lproj");
    if (!addStrings(folder / "Localizable.strings")) return false;
    addPlurals(folder / "Localizable.stringsdict", tag);
    return true;
}

bool Texts::Words::addStrings(const fs::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) return false;
    auto parsed = parseStringsFile(*bytes);
    if (!parsed) return problems.push_back(nameOf(file) + ": malformed"), true;
    for (const auto& [key, words] : *parsed)
        plurals.erase(key); // removes the entries of the fallback language
    parsed->merge(strings); // adds those that this language lacks
    strings.clear();
    strings.merge(*parsed);
    return true;
}

void Texts::Words::addPlurals(const fs::path& file, const std::string& tag) {
    const auto bytes = readFile(file);
    if (!bytes) return; // a language need not have plurals
    const auto list = parsePropertyList(*bytes);
    const auto* entries = list ? list->asDictionary() : nullptr;
    if (!entries) {
        problems.push_back(nameOf(file) + ": malformed");
        return;
    }
    for (const auto& [key, entry] : *entries) {
        Plural plural{tag, {}, {}};
        if (const auto* format = entry.findString("NSStringLocalizedFormatKey")) plural.format = *format;
        const auto* members = entry.asDictionary();
        for (const auto& [name, forms] : members ? *members : PropertyListDictionary()) {
            if (!forms.findString("other")) continue;
            for (const auto& [category, words] : *forms.asDictionary())
                if (words.asString()) plural.variables[name].emplace(category, *words.asString());
        }
        const auto parts = parseFormat(plural.format);
        const bool complete = std::all_of(parts.begin(), parts.end(), [&](const FormatPart& part) {
            return part.kind != FormatPart::Kind::variable || plural.variables.contains(part.text);
        });
        if (parts.empty() || !complete)
            problems.push_back(nameOf(file) + ": " + key + ": no format, or a variable without \"other\"");
        else
            plurals.insert_or_assign(key, std::move(plural));
    }
}

std::string Texts::text(std::string_view key, const std::vector<std::string>& arguments) const {
    const auto now = words();
    if (const auto plural = now->plurals.find(key); plural != now->plurals.end())
        return Filling{arguments, now->language, &plural->second}.fill(plural->second.format);
    const auto found = now->strings.find(key);
    return Filling{arguments, now->language}.fill(
        found == now->strings.end() ? key : std::string_view(found->second));
}

std::string Texts::text(const Message& message) const {
    std::vector<std::string> arguments;
    arguments.reserve(message.arguments.size());
    for (const auto& argument : message.arguments)
        arguments.push_back(argument.message() ? text(*argument.message()) : argument.text());
    return text(message.key, arguments);
}

std::string Texts::language() const {
    return words()->language;
}

std::vector<std::string> Texts::problems() const {
    return words()->problems;
}

std::vector<std::string> Texts::keys() const {
    const auto now = words();
    std::vector<std::string> all;
    all.reserve(now->strings.size() + now->plurals.size());
    for (const auto& [key, found] : now->strings)
        all.push_back(key);
    for (const auto& [key, plural] : now->plurals)
        all.push_back(key);
    std::inplace_merge(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(now->strings.size()),
                       all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

} // namespace tidwen
