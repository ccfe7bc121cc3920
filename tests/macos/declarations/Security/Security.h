// What Tidwen uses of the keychain services; see CoreFoundation.h in the folder beside this one.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

using SecKeychainRef = struct SecKeychain*;

constexpr OSStatus errSecSuccess = 0;
constexpr OSStatus errSecInternalComponent = -2070;
constexpr OSStatus errSecNoDefaultKeychain = -25307;
constexpr OSStatus errSecItemNotFound = -25300;

extern "C" {
extern const CFStringRef kSecClass;
extern const CFStringRef kSecClassGenericPassword;
extern const CFStringRef kSecClassInternetPassword;
extern const CFStringRef kSecAttrService;
extern const CFStringRef kSecAttrServer;
extern const CFStringRef kSecMatchLimit;
extern const CFStringRef kSecMatchLimitAll;
extern const CFStringRef kSecMatchSearchList;
extern const CFStringRef kSecReturnAttributes;
extern const CFStringRef kSecUseAuthenticationUI;
extern const CFStringRef kSecUseAuthenticationUISkip;

OSStatus SecItemCopyMatching(CFDictionaryRef query, CFTypeRef* result);
OSStatus SecItemDelete(CFDictionaryRef query);
OSStatus SecKeychainCopyDefault(SecKeychainRef* keychain) TIDWEN_DEPRECATED(10.10);
OSStatus SecKeychainOpen(const char* path, SecKeychainRef* keychain) TIDWEN_DEPRECATED(10.10);
OSStatus SecKeychainSetUserInteractionAllowed(Boolean isAllowed) TIDWEN_DEPRECATED(10.10);
}
