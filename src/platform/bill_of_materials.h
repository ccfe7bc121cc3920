#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The paths listed by a bill of materials (".bom" of an installer receipt), relative and without the leading
/// "./", in the order of its leaves. Returns nullopt when it is no such file or is malformed: offsets past
/// the end, cycles between nodes or parents, unterminated names.
std::optional<std::vector<std::string>> readBillOfMaterials(std::string_view bytes);

} // namespace tidwen
