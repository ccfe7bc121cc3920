#include "app/widgets/words.h"

#include "base/byte_count.h"
#include "base/text.h"

namespace tidwen {

QString shown(std::string_view text) {
    return QString::fromStdString(printable(text));
}

QString words(const Texts& texts, std::string_view key, const std::vector<std::string>& arguments) {
    return QString::fromStdString(texts.text(key, arguments));
}

QString sizeWords(std::optional<std::int64_t> bytes, const Texts& texts) {
    return bytes ? QString::fromStdString(formatByteCount(*bytes, texts.language())) : QString();
}

} // namespace tidwen
