#include "macos/user_keychain.h"

#include "macos/core_foundation.h"
#include "operations/keychain_dump.h"

#include <Security/Security.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

namespace {

/// A keychain that goes on giving the item that was just deleted is left alone.
constexpr int mostDeletions = 1000;

// Deprecated with the keychains that are files; but there applications outside the sandbox keep their
// passwords, and nothing else names the user's own one or forbids every prompt.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
CFOwned<SecKeychainRef> openKeychain(const std::string& file) {
    SecKeychainRef keychain = nullptr;
    const auto status =
        file.empty() ? SecKeychainCopyDefault(&keychain) : SecKeychainOpen(file.c_str(), &keychain);
    return CFOwned(status == errSecSuccess ? keychain : nullptr);
}

void forbidPrompts() {
    SecKeychainSetUserInteractionAllowed(false);
}
#pragma GCC diagnostic pop

/// Items of a class in one keychain; without it the whole search list would be asked, the system's too.
CFOwned<CFDictionaryRef> queryFor(const CFOwned<SecKeychainRef>& keychain, CFStringRef itemClass,
                                  std::initializer_list<std::pair<CFStringRef, CFTypeRef>> more) {
    const void* only[] = {keychain.get()};
    const CFOwned searched(CFArrayCreate(nullptr, only, 1, &kCFTypeArrayCallBacks));
    std::vector<const void*> keys = {kSecClass, kSecMatchSearchList};
    std::vector<const void*> values = {itemClass, searched.get()};
    keys.reserve(keys.size() + more.size());
    values.reserve(values.size() + more.size());
    for (const auto& [key, value] : more) {
        keys.push_back(key);
        values.push_back(value);
    }
    return CFOwned(CFDictionaryCreate(nullptr, keys.data(), values.data(), static_cast<CFIndex>(keys.size()),
                                      &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
}

/// What names the service of an item of the class.
CFStringRef serviceAttribute(KeychainItemClass itemClass) {
    return itemClass == KeychainItemClass::genericPassword ? kSecAttrService : kSecAttrServer;
}
CFStringRef systemName(KeychainItemClass itemClass) {
    return itemClass == KeychainItemClass::genericPassword ? kSecClassGenericPassword
                                                           : kSecClassInternetPassword;
}

} // namespace

UserKeychain::UserKeychain(ProcessRunner& processes, std::string file)
    : processes_(processes), file_(std::move(file)) {
    forbidPrompts();
}

std::vector<KeychainEntry> UserKeychain::entries() const {
    std::vector<std::string> services;
    const auto keychain = openKeychain(file_);
    for (const auto itemClass : {KeychainItemClass::genericPassword, KeychainItemClass::internetPassword}) {
        if (!keychain) break;
        const auto query =
            queryFor(keychain, systemName(itemClass),
                     {{kSecMatchLimit, kSecMatchLimitAll},
                      {kSecReturnAttributes, kCFBooleanTrue},
                      {kSecUseAuthenticationUI, kSecUseAuthenticationUISkip}}); // for listing alone
        CFTypeRef found = nullptr;
        if (SecItemCopyMatching(query.get(), &found) != errSecSuccess || !found) continue;
        const CFOwned items(static_cast<CFArrayRef>(found));
        for (CFIndex i = 0; i < CFArrayGetCount(items.get()); ++i) {
            const auto* item = static_cast<CFDictionaryRef>(CFArrayGetValueAtIndex(items.get(), i));
            if (auto service = textOf(CFDictionaryGetValue(item, serviceAttribute(itemClass))))
                services.push_back(std::move(*service));
        }
    }
    auto entries = countedServices(std::move(services), false);
    for (auto& entry : listSystemKeychain(processes_))
        entries.push_back(std::move(entry));
    return entries;
}

std::int32_t UserKeychain::deleteItems(KeychainItemClass itemClass, const std::string& service) {
    const auto keychain = openKeychain(file_);
    const auto name = makeString(service);
    if (!keychain) return errSecNoDefaultKeychain;
    if (!name) return errSecItemNotFound;
    const auto query = queryFor(keychain, systemName(itemClass), {{serviceAttribute(itemClass), name.get()}});
    // One call may delete one item only.
    std::int32_t status = SecItemDelete(query.get());
    if (status != errSecSuccess) return status;
    for (int deleted = 1; deleted < mostDeletions && status == errSecSuccess; ++deleted)
        status = SecItemDelete(query.get());
    if (status == errSecSuccess) return errSecInternalComponent; // there is always one more
    return status == errSecItemNotFound ? errSecSuccess : status;
}

} // namespace tidwen
