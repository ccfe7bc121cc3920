#include "app/widgets/words.h"

#include "base/byte_count.h"
#include "base/text.h"

#include <QGuiApplication>

namespace tidwen {

QString shown(std::string_view text) {
    auto words = QString::fromStdString(printable(text));
    if (!QGuiApplication::isRightToLeft() || words.isEmpty()) return words;
    // Isolated: written from the right, a path would fall apart at its separators.
    return QChar(0x2068) + words + QChar(0x2069);
}

QString breakable(const QString& text) {
    constexpr int longestPiece = 24; // characters
    const QChar zeroWidthSpace(0x200B);
    QString pieces;
    int length = 0; // since the last place for a new line
    for (const QChar character : text) {
        pieces += character;
        const bool isPlace = QStringLiteral("./_").contains(character)
                             || (++length >= longestPiece && !character.isHighSurrogate());
        if (isPlace) pieces += zeroWidthSpace;
        if (isPlace || character.isSpace()) length = 0;
    }
    return pieces;
}

QString words(const Texts& texts, std::string_view key, const std::vector<std::string>& arguments) {
    return QString::fromStdString(texts.text(key, arguments));
}

QString sizeWords(std::optional<std::int64_t> bytes, const Texts& texts) {
    return bytes ? QString::fromStdString(formatByteCount(*bytes, texts.language())) : QString();
}

QString firstLines(const QStringList& lines, qsizetype most, const Texts& texts) {
    if (lines.size() <= most) return lines.join(QLatin1Char('\n'));
    const auto others = words(texts, "report.more %lld", {std::to_string(lines.size() - most)});
    return (lines.first(most) << others).join(QLatin1Char('\n'));
}

} // namespace tidwen
