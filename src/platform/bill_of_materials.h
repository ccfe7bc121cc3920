#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// The paths that a bill of materials (".bom" of an installer receipt) lists, relative and without the
/// leading
/// "./", in the order of its leaves. Nothing when it is no such file or is malformed: offsets past the end,
/// loops between nodes or parents, names without an end.
std::optional<std::vector<std::string>> readBillOfMaterials(std::string_view bytes);

} // namespace tidwen
