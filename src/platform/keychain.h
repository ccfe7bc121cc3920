#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tidwen {

/// The password items of one service.
struct KeychainEntry {
    std::string service;
    int itemCount = 0;
    bool isSystemKeychain = false;
    friend bool operator==(const KeychainEntry&, const KeychainEntry&) = default;
};

enum class KeychainItemClass { genericPassword, internetPassword };

class Keychain {
  public:
    virtual ~Keychain() = default;
    /// Services of the user's keychain in first-seen order, then those of the system keychain. Never reads
    /// secrets and never prompts. Empty when the keychain cannot be read.
    virtual std::vector<KeychainEntry> entries() const = 0;
    /// Deletes the items of one class whose service (the server, for internet passwords) equals `service`
    /// from the user's keychain. Returns the keychain services' status: 0 deleted, -25300 not found, -25244
    /// refused.
    virtual std::int32_t deleteItems(KeychainItemClass itemClass, const std::string& service) = 0;
};

inline constexpr std::int32_t keychainItemNotFound = -25300;
inline constexpr std::int32_t keychainInvalidOwnerEdit = -25244;

} // namespace tidwen
