#include "app/shell/launch_options.h"

#include "base/text.h"
#include "program/resources.h"

#include <QCommandLineParser>
#include <algorithm>
#include <array>

namespace tidwen {

namespace {

struct Option {
    const char* name;
    const char* value; ///< what it is called in the help; empty: the option takes none
    const char* help;
};

constexpr std::array options = {
    Option{"volume", "DIR", "cli.help.option.volume"}, Option{"home", "PATH", "cli.help.option.home"},
    Option{"sample", "", "window.help.sample"},        Option{"version", "", "cli.help.option.version"},
    Option{"help", "", "cli.help.option.help"},
};

std::string term(const Option& option) {
    const std::string value = option.value;
    return std::string("--") + option.name + (value.empty() ? "" : " " + value);
}

std::string help(const Texts& texts) {
    std::size_t width = 0;
    for (const auto& option : options)
        width = std::max(width, term(option).size());
    auto text = texts.text("cli.help.program") + "\n\n"
                + texts.text("cli.help.usage %@", {"Tidwen [OPTION...]"}) + "\n\n"
                + texts.text("window.help.options") + ":\n";
    for (const auto& option : options) {
        const auto words = term(option);
        text += "  " + words + std::string(width - words.size() + 2, ' ') + texts.text(option.help) + "\n";
    }
    return text;
}

void declare(QCommandLineParser& parser) {
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions); // as the toolkit's own are
    for (const auto& option : options) {
        QStringList names = {QString::fromLatin1(option.name)};
        if (names.front() == QLatin1String("help")) names << QStringLiteral("h");
        parser.addOption({names, {}, QString::fromLatin1(option.value)});
    }
}

LaunchAnswer wrong(const Texts& texts, const std::string& why) {
    return {2, "Tidwen: " + printable(why) + "\n" + texts.text("cli.help.try %@", {"Tidwen --help"}) + "\n"};
}

} // namespace

std::optional<LaunchAnswer> answerBeforeLaunch(const QStringList& words, const Texts& texts,
                                               const std::string& version) {
    if (texts.keys().empty()) return LaunchAnswer{2, std::string("Tidwen: ") + textsNotFound + "\n"};
    QCommandLineParser parser;
    declare(parser);
    (void)parser.parse(words); // the toolkit's own options are unknown to it
    if (parser.isSet(QStringLiteral("help"))) return LaunchAnswer{0, help(texts)};
    if (parser.isSet(QStringLiteral("version"))) return LaunchAnswer{0, "Tidwen " + version + "\n"};
    return std::nullopt;
}

tl::expected<LaunchOptions, LaunchAnswer> readLaunchOptions(const QStringList& words, const Texts& texts) {
    QCommandLineParser parser;
    declare(parser);
    if (!parser.parse(words)) {
        const auto unknown = parser.unknownOptionNames();
        if (!unknown.isEmpty())
            return tl::unexpected(wrong(
                texts, texts.text("cli.usage.unknownOption %@", {"--" + unknown.front().toStdString()})));
        for (const auto& word : words)
            if (const auto sign = word.indexOf(QLatin1Char('='));
                word.startsWith(QLatin1Char('-')) && sign > 0)
                return tl::unexpected(
                    wrong(texts, texts.text("cli.usage.takesNoValue %@", {word.left(sign).toStdString()})));
        return tl::unexpected(
            wrong(texts, texts.text("cli.usage.needsValue %@", {words.back().toStdString()})));
    }
    const auto value = [&](const char* name) -> std::optional<std::string> {
        const auto option = QString::fromLatin1(name);
        return parser.isSet(option) ? std::optional(parser.value(option).toStdString()) : std::nullopt;
    };
    return LaunchOptions{value("volume"), value("home"), parser.isSet(QStringLiteral("sample"))};
}

} // namespace tidwen
