#pragma once

#include <string>
#include <string_view>

namespace tidwen {

/// Whether `signature` (Ed25519, 64 bytes in Base64, white space passed over) was made over exactly these
/// bytes with the private half of `publicKey` (32 bytes in Base64). Anything malformed is no signature.
bool isSignedBy(const std::string& publicKey, std::string_view content, std::string_view signature);

} // namespace tidwen
