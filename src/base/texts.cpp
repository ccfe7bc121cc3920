#include "base/texts.h"

#include "base/property_list.h"
#include "base/strings_file.h"
#include "base/text_format.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <unicode/plurrule.h>

namespace tidwen {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> readFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::string nameOf(const fs::path& file) {
    return (file.parent_path().filename() / file.filename()).string();
}

/// The language becomes part of a path, and settings may name anything.
bool isLanguageTag(std::string_view language) {
    return !language.empty() && std::all_of(language.begin(), language.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    });
}

/// "one", "few", … "other" by the rules of the language.
std::string pluralCategory(const std::string& language, std::int64_t number) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::PluralRules> rules(
        icu::PluralRules::forLocale(icu::Locale::forLanguageTag(language.c_str(), status), status));
    std::string category = "other";
    if (U_FAILURE(status) || !rules) return category;
    category.clear();
    return rules->select(static_cast<double>(number)).toUTF8String(category);
}

} // namespace

/// Fills one text: walks its parts and counts which argument is next.
struct Texts::Filling {
    const std::vector<std::string>& arguments;
    const Plural* plural = nullptr;
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
                out += index < arguments.size() ? arguments[index] : part.text;
        }
        return out;
    }

    /// The words of a plural variable, in which a placeholder without a position is the variable's own
    /// number.
    std::string variable(const std::string& name, std::size_t index) const {
        if (!plural) return {};
        const auto forms = plural->variables.find(name);
        if (forms == plural->variables.end()) return {};
        std::string out;
        for (const auto& part : parseFormat(formFor(forms->second, index))) {
            const auto own = part.position.value_or(index);
            const bool filled = part.kind != FormatPart::Kind::words && own < arguments.size();
            out += filled ? arguments[own] : part.text;
        }
        return out;
    }

    const std::string& formFor(const std::map<std::string, std::string>& forms, std::size_t index) const {
        std::int64_t number = 0;
        bool isNumber = false;
        if (index < arguments.size()) {
            const auto& text = arguments[index];
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
            isNumber = error == std::errc() && end == text.data() + text.size();
        }
        // As on a Mac, "zero" holds for nought in every language that gives it.
        auto form = forms.end();
        if (isNumber && number == 0) form = forms.find("zero");
        if (isNumber && form == forms.end()) form = forms.find(pluralCategory(plural->language, number));
        return form == forms.end() ? forms.at("other") : form->second;
    }
};

Texts Texts::load(const fs::path& resources, const std::string& language) {
    Texts texts;
    if (!texts.addLanguage(resources, "en"))
        texts.problems_.push_back("en.lproj/Localizable.strings: missing");
    if (language == "en") return texts;
    if (!isLanguageTag(language)) {
        texts.problems_.push_back("not a language");
        return texts;
    }
    bool found = false;
    const auto general = language.substr(0, language.find('-'));
    if (general != language && general != "en") found = texts.addLanguage(resources, general);
    found = texts.addLanguage(resources, language) || found;
    if (found || general == "en")
        texts.language_ = language;
    else
        texts.problems_.push_back(language + ".lproj/Localizable.strings: missing");
    return texts;
}

bool Texts::addLanguage(const fs::path& resources, const std::string& language) {
    const auto folder = resources / (language + ".lproj");
    if (!addStrings(folder / "Localizable.strings")) return false;
    addPlurals(folder / "Localizable.stringsdict", language);
    return true;
}

bool Texts::addStrings(const fs::path& file) {
    const auto bytes = readFile(file);
    if (!bytes) return false;
    const auto strings = parseStringsFile(*bytes);
    if (!strings) problems_.push_back(nameOf(file) + ": malformed");
    for (const auto& [key, words] : strings.value_or(std::map<std::string, std::string>())) {
        strings_.insert_or_assign(key, words);
        plurals_.erase(key); // those of the language below
    }
    return true;
}

void Texts::addPlurals(const fs::path& file, const std::string& language) {
    const auto bytes = readFile(file);
    if (!bytes) return; // a language need not have plurals
    const auto list = parsePropertyList(*bytes);
    const auto* entries = list ? list->asDictionary() : nullptr;
    if (!entries) {
        problems_.push_back(nameOf(file) + ": malformed");
        return;
    }
    for (const auto& [key, entry] : *entries) {
        Plural plural{language, {}, {}};
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
            problems_.push_back(nameOf(file) + ": " + key + ": no format, or a variable without \"other\"");
        else
            plurals_.insert_or_assign(key, std::move(plural));
    }
}

std::string Texts::text(std::string_view key, const std::vector<std::string>& arguments) const {
    if (const auto plural = plurals_.find(key); plural != plurals_.end())
        return Filling{arguments, &plural->second}.fill(plural->second.format);
    const auto words = strings_.find(key);
    return Filling{arguments}.fill(words == strings_.end() ? key : std::string_view(words->second));
}

std::vector<std::string> Texts::keys() const {
    std::set<std::string> all;
    for (const auto& [key, words] : strings_)
        all.insert(key);
    for (const auto& [key, plural] : plurals_)
        all.insert(key);
    return {all.begin(), all.end()};
}

} // namespace tidwen
