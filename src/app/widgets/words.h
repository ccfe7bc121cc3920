#pragma once

#include "base/texts.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Text that came from a disk, for being shown: what is not printable is made visible, so no name can turn
/// the line around or hide a part of itself.
QString shown(std::string_view text);
/// The same with room for a new line behind each dot and slash, for an identifier or a path in a narrow
/// place.
QString breakable(QString text);
QString words(const Texts& texts, std::string_view key, const std::vector<std::string>& arguments = {});
/// "2.1 MB"; empty when it is not known.
QString sizeWords(std::optional<std::int64_t> bytes, const Texts& texts);

} // namespace tidwen
