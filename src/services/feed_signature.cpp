#include "services/feed_signature.h"

#include "base/base64.h"

#include <sodium.h>

namespace tidwen {

namespace {

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

bool isSignedBy(const std::string& publicKey, std::string_view content, std::string_view signature) {
    const auto key = decodeBase64(publicKey);
    const auto mark = decodeBase64(signature);
    if (!key || key->size() != crypto_sign_PUBLICKEYBYTES) return false;
    if (!mark || mark->size() != crypto_sign_BYTES) return false;
    if (sodium_init() < 0) return false;
    return crypto_sign_verify_detached(bytes(*mark), bytes(content), content.size(), bytes(*key)) == 0;
}

} // namespace tidwen
