#pragma once

#include "base/text.h"

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <utility>

namespace tidwen {

/// Owns a reference returned by a Core Foundation function with "Create" or "Copy" in its name.
template<class Ref>
class CFOwned {
  public:
    explicit CFOwned(Ref object) : object_(object) {}
    ~CFOwned() {
        if (object_) CFRelease(object_);
    }
    CFOwned(CFOwned&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CFOwned& operator=(CFOwned&&) = delete;

    Ref get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    Ref object_;
};

/// Null when the text is not UTF-8.
inline CFOwned<CFStringRef> makeString(const std::string& text) {
    return CFOwned(CFStringCreateWithBytes(nullptr, reinterpret_cast<const UInt8*>(text.data()),
                                           static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

/// The text of a string, or of data that is UTF-8; nothing of anything else.
inline std::optional<std::string> textOf(CFTypeRef value) {
    if (value && CFGetTypeID(value) == CFDataGetTypeID()) {
        const auto* data = static_cast<CFDataRef>(value);
        std::string bytes(reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
                          static_cast<std::size_t>(CFDataGetLength(data)));
        return isValidUtf8(bytes) ? std::optional(std::move(bytes)) : std::nullopt;
    }
    if (!value || CFGetTypeID(value) != CFStringGetTypeID()) return std::nullopt;
    const auto* string = static_cast<CFStringRef>(value);
    const CFRange all{0, CFStringGetLength(string)};
    std::string text(
        static_cast<std::size_t>(CFStringGetMaximumSizeForEncoding(all.length, kCFStringEncodingUTF8)), '\0');
    CFIndex used = 0;
    const auto converted =
        CFStringGetBytes(string, all, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(text.data()),
                         static_cast<CFIndex>(text.size()), &used);
    if (converted != all.length) return std::nullopt;
    text.resize(static_cast<std::size_t>(used));
    return text;
}

} // namespace tidwen
