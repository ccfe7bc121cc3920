#pragma once

#import <Foundation/Foundation.h>

#include <string>

namespace tidwen {

/// Empty for text that is not UTF-8.
inline NSString* _Nonnull nsString(const std::string& text) {
    NSString* const made = [NSString stringWithUTF8String:text.c_str()];
    return made ? made : @"";
}

/// Empty for what is no text.
inline std::string textOf(id _Nullable object) {
    if (![object isKindOfClass:[NSString class]]) return {};
    const char* const text = ((NSString*)object).UTF8String;
    return text ? text : "";
}

} // namespace tidwen
