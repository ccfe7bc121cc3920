#pragma once

#include <CoreFoundation/CoreFoundation.h>

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

} // namespace tidwen
