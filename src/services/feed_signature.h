#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// Whether `signature` (Ed25519, 64 bytes in Base64, white space ignored) is valid for exactly these bytes
/// and `publicKey` (32 bytes in Base64). False for anything malformed.
bool isSignedBy(const std::string& publicKey, std::string_view content, std::string_view signature);

} // namespace tidwen
