#pragma once

#include "base/language.h"
#include "base/texts.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Text that came from a disk, for being shown: what is not printable is made visible, so no name can turn
/// the line around or hide a part of itself.
QString shown(std::string_view text);
/// The same with room for a new line behind each dot, slash and underscore and within a very long word, for
/// an identifier, a name or a path in a narrow place.
QString breakable(const QString& text);
QString words(const Texts& texts, std::string_view key, const std::vector<std::string>& arguments = {});
/// "Kip, Pantry and Marlin Notes": the `name` of each, from a disk.
template<class Things, class Name>
QString listed(const Things& things, Name name, const Texts& texts) {
    std::vector<std::string> names;
    names.reserve(std::size(things));
    for (const auto& thing : things)
        names.push_back(shown(std::invoke(name, thing)).toStdString());
    return QString::fromStdString(formatList(names, texts.language()));
}
/// "2.1 MB"; empty when it is not known.
QString sizeWords(std::optional<std::int64_t> bytes, const Texts& texts);

/// The lines of a notice: more would leave no room for the screen below.
inline constexpr qsizetype mostNoticeLines = 6;
/// One under the other, the first `most` of them and how many more there are.
QString firstLines(const QStringList& lines, qsizetype most, const Texts& texts);

} // namespace tidwen
