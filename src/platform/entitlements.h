#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Larger entitlements are not read; real ones take a few kilobytes.
inline constexpr std::size_t maxEntitlementBytes = 1u << 20;

/// The application groups that entitlements name, in their order, empty ones dropped. None when the key is
/// absent or holds anything but strings. Nothing at all when the bytes are no entitlements of that form.
using ApplicationGroups = std::optional<std::vector<std::string>>;

/// From a property list, bare or wrapped as a signature blob (magic 0xfade7171, length, list).
ApplicationGroups groupsFromXmlEntitlements(std::string_view bytes);

/// From a signature blob (magic 0xfade7172, length) that holds a DER dictionary: [application 16] { INTEGER
/// 1, [context 16] { SEQUENCE { UTF8String key, value } … } }.
ApplicationGroups groupsFromDerEntitlements(std::string_view bytes);

} // namespace tidwen
