#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// Larger entitlements are not read; real ones take a few kilobytes.
inline constexpr std::size_t maxEntitlementBytes = 1u << 20;

/// The application groups named by entitlements, in order, without empty ones. Empty when the key is absent
/// or holds anything but strings; nullopt when the bytes are not entitlements of that form.
using ApplicationGroups = std::optional<std::vector<std::string>>;

/// From a property list, bare or wrapped as a signature blob (magic 0xfade7171, length, list).
ApplicationGroups groupsFromXmlEntitlements(std::string_view bytes);

/// From a signature blob (magic 0xfade7172, length) that holds a DER dictionary: [application 16] { INTEGER
/// 1, [context 16] { SEQUENCE { UTF8String key, value } … } }.
ApplicationGroups groupsFromDerEntitlements(std::string_view bytes);

} // namespace tidwen
