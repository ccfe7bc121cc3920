// Every shipped language: complete, asking for what its keys promise, and in the words of macOS.

#include "base/language.h"
#include "base/property_list.h"
#include "base/strings_file.h"
#include "base/text_format.h"
#include "base/texts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tidwen {
namespace {

using Kind = FormatPart::Kind;
namespace fs = std::filesystem;

/// The texts of one key: one, or its format and the forms of each variable by "variable.category".
using TextForms = std::map<std::string, std::string>;
using EntriesByKey = std::map<std::string, TextForms>;

std::string bytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

EntriesByKey wordsIn(const fs::path& folder) {
    EntriesByKey words;
    const auto strings = parseStringsFile(bytesOf(folder / "Localizable.strings"));
    const auto plurals = parsePropertyList(bytesOf(folder / "Localizable.stringsdict"));
    if (!strings || !plurals) ADD_FAILURE() << folder << ": malformed";
    for (const auto& [key, text] : strings.value_or(std::map<std::string, std::string>()))
        words[key] = {{"", text}};
    for (const auto& [key, entry] : plurals ? *plurals->asDictionary() : PropertyListDictionary()) {
        EXPECT_FALSE(words.contains(key)) << folder << ": in both files: " << key;
        for (const auto& [name, value] : *entry.asDictionary())
            if (const auto* forms = value.asDictionary())
                for (const auto& [category, text] : *forms)
                    words[key][name + "." + category] = *text.asString();
            else
                words[key][""] = *value.asString();
    }
    return words;
}

/// The kind of argument expected at each position.
std::vector<Kind> argumentKinds(std::string_view format) {
    std::vector<Kind> kinds;
    std::size_t next = 0;
    for (const auto& part : parseFormat(format)) {
        if (part.kind == Kind::words) continue;
        const auto position = part.position ? *part.position : next++;
        kinds.resize(std::max(kinds.size(), position + 1), Kind::words);
        kinds[position] = part.kind == Kind::variable ? Kind::number : part.kind;
    }
    return kinds;
}

/// What every language keeps of the English as it is: commands, options, settings and names in capitals.
const std::vector<std::string>& verbatim(const std::string& english) {
    static const std::regex kept(R"(“tidwen [a-z]+|--[a-z][a-z-]*|\b[a-z]+[A-Z]\w+|\b[A-Z]{3,}\b|https:)");
    static std::map<std::string, std::vector<std::string>> known; // each is asked for once in each language
    const auto [entry, isNew] = known.try_emplace(english);
    auto& found = entry->second;
    if (!isNew) return found;
    for (std::sregex_iterator each(english.begin(), english.end(), kept), end; each != end; ++each)
        found.push_back(each->str().substr(each->str().find_first_not_of("“")));
    return found;
}

/// Each English term of macOS with what macOS says in the language: a stem, where words are inflected.
struct Language {
    std::string quotes; ///< the marks that it uses
    std::vector<std::pair<std::string, std::string>> terms;
};

const std::map<std::string, Language>& languages() {
    static const std::map<std::string, Language> all = {
        {"en", {"“”’", {}}},
        {"de",
         {"„“’‚‘",
          {{"Trash", "Papierk"},
           {"Full Disk Access", "Festplattenvollzugriff"},
           {"System Settings", "Systemeinstellungen"},
           {"Privacy & Security", "Datenschutz & Sicherheit"},
           {"Login Items", "Anmeldeobjekte"},
           {"Show in Finder", "Im Finder zeigen"},
           {"[Kk]eychain", "chlüsselbund"},
           {"Applications folder", "Programme"},
           {"Accessibility", "Bedienungshilfen"},
           {"Notifications", "Mitteilungen"},
           {"Cancel", "Abbrechen"},
           {"Put Back", "Zurücklegen"}}}},
        {"fr",
         {"«»’“”",
          {{"Trash", "orbeille"},
           {"Full Disk Access", "ccès complet au disque"},
           {"System Settings", "Réglages Système"},
           {"Privacy & Security", "Confidentialité et sécurité"},
           {"Login Items", "Ouverture"},
           {"Show in Finder", "Afficher dans le Finder"},
           {"[Kk]eychain", "rousseau"},
           {"Downloads", "Téléchargements"},
           {"Accessibility", "Accessibilité"},
           {"Cancel", "Annuler"},
           {"Put Back", "Remettre"}}}},
        {"es",
         {"«»“”’",
          {{"Trash", "apelera"},
           {"Full Disk Access", "cceso total al disco"},
           {"System Settings", "Ajustes del Sistema"},
           {"Privacy & Security", "Privacidad y seguridad"},
           {"Login Items", "tems de inicio"},
           {"Show in Finder", "Mostrar en el Finder"},
           {"[Kk]eychain", "lavero"},
           {"Downloads", "Descargas"},
           {"Accessibility", "Accesibilidad"},
           {"Cancel", "Cancelar"},
           {"Put Back", "Volver a poner"}}}},
        {"it",
         {"«»“”’",
          {{"Trash", "estino"},
           {"Full Disk Access", "ccesso completo al disco"},
           {"System Settings", "Impostazioni di Sistema"},
           {"Privacy & Security", "Privacy e sicurezza"},
           {"Login Items", "lementi login"},
           {"Show in Finder", "Mostra nel Finder"},
           {"[Kk]eychain", "ortachiavi"},
           {"Downloads", "Download"},
           {"Accessibility", "Accessibilità"},
           {"Cancel", "Annulla"},
           {"Put Back", "Ripristina"}}}},
        {"pt-BR",
         {"“”’",
          {{"Trash", "Lixo"},
           {"Full Disk Access", "cesso Total ao Disco"},
           {"System Settings", "Ajustes do Sistema"},
           {"Privacy & Security", "Privacidade e Segurança"},
           {"Login Items", "tens de Início"},
           {"Show in Finder", "Mostrar no Finder"},
           {"[Kk]eychain", "haves"},
           {"Accessibility", "Acessibilidade"},
           {"Cancel", "Cancelar"}}}},
        {"ja",
         {"「」『』",
          {{"Trash", "ゴミ箱"},
           {"Full Disk Access", "フルディスクアクセス"},
           {"System Settings", "システム設定"},
           {"Privacy & Security", "プライバシーとセキュリティ"},
           {"Login Items", "ログイン項目"},
           {"Show in Finder", "Finderに表示"},
           {"[Kk]eychain", "キーチェーン"},
           {"Downloads", "ダウンロード"},
           {"Accessibility", "アクセシビリティ"},
           {"Cancel", "キャンセル"}}}},
        {"zh-Hans",
         {"“”‘’",
          {{"Trash", "废纸篓"},
           {"Full Disk Access", "完全磁盘访问权限"},
           {"System Settings", "系统设置"},
           {"Privacy & Security", "隐私与安全性"},
           {"Login Items", "登录项"},
           {"Show in Finder", "在访达中显示"},
           {"[Kk]eychain", "钥匙串"},
           {"Downloads", "下载"},
           {"Accessibility", "辅助功能"},
           {"Notifications", "通知"},
           {"Cancel", "取消"},
           {"Put Back", "放回"}}}},
    };
    return all;
}

void expectTypography(const std::string& text, const std::string& english, const Language& language) {
    EXPECT_EQ(text.find('\''), text.npos);
    EXPECT_EQ(std::ranges::count(text, '"'), std::ranges::count(english, '"'))
        << "only commands have straight ones";
    EXPECT_EQ(text.find("..."), text.npos);
    EXPECT_EQ(text.find("  "), text.npos);
    for (const std::string_view mark :
         {"“", "”", "„", "«", "»", "‚", "‘", "’", "「", "」", "『", "』", "《", "》"})
        EXPECT_TRUE(text.find(mark) == text.npos || language.quotes.find(mark) != std::string::npos) << mark;
    const auto ends = [](const std::string& words, std::initializer_list<std::string_view> marks) {
        return std::ranges::any_of(marks, [&](const auto mark) { return words.ends_with(mark); });
    };
    EXPECT_EQ(ends(text, {"…"}), ends(english, {"…"}));
    EXPECT_EQ(ends(text, {":", "："}), ends(english, {":"}));
    EXPECT_EQ(ends(text, {"?", "？"}), ends(english, {"?"}));
    EXPECT_EQ(ends(text, {".", "。"}), ends(english, {"."}));
    EXPECT_EQ(ends(text, {" "}), ends(english, {" "}));
}

const std::regex& wholeWord(const std::string& term) {
    static std::map<std::string, std::regex> known;
    return known.try_emplace(term, "\\b" + term + "(?!\\w)").first->second;
}

void expectTerms(const std::string& text, const std::string& english, const Language& language) {
    for (const auto& [term, said] : language.terms)
        EXPECT_TRUE(!std::regex_search(english, wholeWord(term)) || text.find(said) != text.npos)
            << term << " is " << said;
    for (const auto& kept : verbatim(english))
        EXPECT_NE(text.find(kept), text.npos) << kept;
    const bool isSentence = std::ranges::count(english, ' ') > 2 && english.find("%") == english.npos;
    EXPECT_TRUE(&language == &languages().at("en") || !isSentence || text != english) << "not translated";
}

/// All whole numbers that people meet, up to a removal's most steps, find a form.
void expectPluralForms(const TextForms& entry, const std::string& tag) {
    for (const auto& [name, form] : entry) {
        const auto variable = name.substr(0, name.find('.'));
        if (name.empty()) continue;
        for (int number = 0; number < 1'000; ++number) {
            const auto needed = variable + "." + pluralCategory(number, tag);
            if (!entry.contains(needed)) FAIL() << number << " needs " << needed;
        }
    }
}

TEST(Words, AreCompleteAndInTheWordsOfMacOS) {
    const auto english = wordsIn(fs::path(TIDWEN_RESOURCES) / "en.lproj");
    ASSERT_GT(english.size(), 250u);
    std::set<std::string> shipped;
    for (const auto& folder : fs::directory_iterator(TIDWEN_RESOURCES)) {
        if (folder.path().extension() != ".lproj") continue;
        const auto tag = folder.path().stem().string();
        shipped.insert(tag);
        ASSERT_TRUE(languages().contains(tag))
            << "its quotation marks and terms are not in the table: " << tag;
        const auto& language = languages().at(tag);
        const auto words = wordsIn(folder.path());
        for (const auto& [key, entry] : words)
            EXPECT_TRUE(english.contains(key)) << tag << ": English lacks " << key;
        for (const auto& [key, original] : english) {
            SCOPED_TRACE(tag + ": " + key);
            const auto found = words.find(key);
            if (found == words.end()) {
                ADD_FAILURE() << "missing";
                continue;
            }
            expectPluralForms(found->second, tag);
            EXPECT_EQ(argumentKinds(found->second.contains("") ? found->second.at("") : ""),
                      argumentKinds(key));
            for (const auto& [form, text] : found->second) {
                SCOPED_TRACE(text);
                const auto other = form.empty() ? form : form.substr(0, form.find('.')) + ".other";
                const auto same = original.contains(form) ? original.find(form) : original.find(other);
                if (same == original.end()) {
                    ADD_FAILURE() << "English has no variable of " << form;
                    continue;
                }
                expectTypography(text, same->second, language);
                expectTerms(text, same->second, language);
            }
        }
    }
    for (const auto& [tag, language] : languages())
        EXPECT_TRUE(shipped.contains(tag)) << tag;
}

TEST(Words, AreFilledInWithEveryArgument) {
    for (const auto& [tag, language] : languages()) {
        const auto texts = Texts::load(TIDWEN_RESOURCES, tag);
        EXPECT_THAT(texts.problems(), testing::IsEmpty());
        for (const auto& key : texts.keys())
            for (const char number : {'1', '7'}) {
                SCOPED_TRACE(tag + ": " + key);
                std::vector<std::string> arguments; // values that occur in no text
                for (const auto kind : argumentKinds(key))
                    arguments.push_back(kind == Kind::number ? std::string(arguments.size() + 1, number)
                                                             : "⟦" + std::to_string(arguments.size()) + "⟧");
                const auto words = texts.text(key, arguments);
                EXPECT_FALSE(words.empty());
                EXPECT_EQ(words.find('%'), words.npos) << words;
                for (const auto& argument : arguments)
                    EXPECT_NE(words.find(argument), words.npos) << words;
            }
    }
}

/// What stands between two quotation marks of one line in the sources.
std::set<std::string> quotedIn(const fs::path& sources) {
    std::set<std::string> quoted;
    for (const auto& file : fs::recursive_directory_iterator(sources)) {
        if (!file.is_regular_file()) continue;
        std::ifstream stream(file.path());
        for (std::string line; std::getline(stream, line);)
            for (auto from = line.find('"'), to = from; from != line.npos; from = to) {
                to = line.find('"', from + 1);
                if (to != line.npos) quoted.insert(line.substr(from + 1, to - from - 1));
            }
    }
    return quoted;
}

TEST(Words, AreAllShownByTheProgram) {
    const auto quoted = quotedIn(fs::path(TIDWEN_RESOURCES).parent_path() / "src");
    // Keys that end with the name of a value; those of macOS are read by the build of the bundle.
    const auto prefixes = {
        "category.",    "cli.fullDisk.", "cli.item.",           "cli.permission.", "cli.startup.state.",
        "cli.step.",    "home.band.",    "history.unfinished.", "home.category.",  "orphans.risk.",
        "operation.",   "reason.",       "removing.phase.",     "permission.",     "review.details.undo.",
        "review.risk.", "risk.",         "macos.usage."};
    const std::string_view hint = ".hint";
    for (const std::string prefix : prefixes)
        EXPECT_TRUE(quoted.contains(prefix) || prefix == "macos.usage.") << prefix << " is of no use";
    for (const auto& [key, entry] : wordsIn(fs::path(TIDWEN_RESOURCES) / "en.lproj")) {
        const bool isHint = key.ends_with(hint) && quoted.contains(key.substr(0, key.size() - hint.size()));
        const bool isMade = std::ranges::any_of(
            prefixes, [&key = key](std::string_view prefix) { return key.starts_with(prefix); });
        EXPECT_TRUE(quoted.contains(key) || isHint || isMade) << key << " is shown nowhere";
    }
}

} // namespace
} // namespace tidwen
