#include "posix/extended_attributes.h"

#include <array>
#include <cerrno>
#include <sys/xattr.h>
#include <tl/expected.hpp>
#include <vector>
#ifdef __APPLE__
#include <xattr_flags.h>
#endif

namespace tidwen {

namespace {

#ifdef __APPLE__
ssize_t listNames(int descriptor, char* buffer, std::size_t size) {
    return ::flistxattr(descriptor, buffer, size, 0);
}
ssize_t getValue(int descriptor, const char* name, char* buffer, std::size_t size) {
    return ::fgetxattr(descriptor, name, buffer, size, 0, 0);
}
int setValue(int descriptor, const char* name, const char* value, std::size_t size) {
    return ::fsetxattr(descriptor, name, value, size, 0, 0);
}

int removeAttribute(int descriptor, const char* name) {
    return ::fremovexattr(descriptor, name, 0);
}
constexpr std::array<const char*, 1> macNamespaces{""};
constexpr const char* systemLabel = "com.apple.provenance";

/// What macOS says belongs to a copy. The rest it sets itself, or lets nobody set ("com.apple.macl").
bool travels(const std::string& name) {
    return ::xattr_preserve_for_intent(name.c_str(), XATTR_OPERATION_INTENT_COPY) != 0;
}
#else
ssize_t listNames(int descriptor, char* buffer, std::size_t size) {
    return ::flistxattr(descriptor, buffer, size);
}
ssize_t getValue(int descriptor, const char* name, char* buffer, std::size_t size) {
    return ::fgetxattr(descriptor, name, buffer, size);
}
int setValue(int descriptor, const char* name, const char* value, std::size_t size) {
    return ::fsetxattr(descriptor, name, value, size, 0);
}

int removeAttribute(int descriptor, const char* name) {
    return ::fremovexattr(descriptor, name);
}
// A Mac's attribute is in "user." where files were copied here, in "osx." where the Mac's disk is mounted.
constexpr std::array<const char*, 2> macNamespaces{"user.", "osx."};
constexpr const char* systemLabel = "security.selinux";

bool travels(const std::string&) {
    return true;
}
#endif

// A Mac stores resource forks as attributes; larger ones are refused rather than held in memory.
constexpr ssize_t valueLimit = 64 << 20;

/// Calls with growing buffers, because the value may grow between asking for its size and reading it.
template<class Call>
OsResult<std::string> readAll(Call call) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        const ssize_t size = call(nullptr, 0);
        if (size < 0) return tl::unexpected(errno);
        if (size > valueLimit) return tl::unexpected(EFBIG);
        std::string buffer(static_cast<std::size_t>(size), '\0');
        if (buffer.empty()) return buffer;
        const ssize_t length = call(buffer.data(), buffer.size());
        if (length >= 0) {
            buffer.resize(static_cast<std::size_t>(length));
            return buffer;
        }
        if (errno != ERANGE) return tl::unexpected(errno);
    }
    return tl::unexpected(EBUSY);
}

OsResult<std::string> valueOf(int descriptor, const std::string& name) {
    return readAll(
        [&](char* buffer, std::size_t size) { return getValue(descriptor, name.c_str(), buffer, size); });
}

} // namespace

OsResult<std::map<std::string, std::string>> extendedAttributesOf(int descriptor) {
    std::map<std::string, std::string> attributes;
    const auto names =
        readAll([&](char* buffer, std::size_t size) { return listNames(descriptor, buffer, size); });
    if (!names) {
        if (names.error() == ENOTSUP) return attributes;
        return tl::unexpected(names.error());
    }
    for (std::size_t at = 0; at < names->size();) {
        const std::string name(names->c_str() + at);
        at += name.size() + 1;
        if (name == systemLabel || !travels(name)) continue;
        auto value = valueOf(descriptor, name);
        if (value)
            attributes.emplace(name, std::move(*value));
        else if (value.error() != noSuchAttribute) // removed since it was listed
            return tl::unexpected(value.error());
    }
    return attributes;
}

OsResult<std::string> macAttributeOf(int descriptor, const std::string& name) {
    OsResult<std::string> value = tl::unexpected(noSuchAttribute);
    for (const char* prefix : macNamespaces) {
        value = valueOf(descriptor, prefix + name);
        if (value) return value;
        if (value.error() != noSuchAttribute && value.error() != ENOTSUP) return value;
    }
    return tl::unexpected(noSuchAttribute);
}

int copyExtendedAttributes(int from, int to) {
    const auto wanted = extendedAttributesOf(from), present = extendedAttributesOf(to);
    if (!wanted || !present) return wanted ? present.error() : wanted.error();
    // A folder can pass an access control list on to what is created in it.
    for (const auto& [name, value] : *present)
        if (!wanted->contains(name) && removeAttribute(to, name.c_str()) != 0) return errno;
    for (const auto& [name, value] : *wanted)
        if (setValue(to, name.c_str(), value.data(), value.size()) != 0) return errno;
    return 0;
}

} // namespace tidwen
