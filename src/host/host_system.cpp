#include "host/host_system.h"

#include "services/version_number.h"

#include <string_view>
#include <sys/utsname.h>
#ifdef __APPLE__
#include <sys/sysctl.h>
#endif

namespace tidwen {

namespace {

/// "6.1.0-13-amd64" counts as 6.1.0.
VersionNumber leadingNumbers(std::string_view text) {
    text = text.substr(0, text.find_first_not_of("0123456789."));
    while (text.ends_with('.'))
        text.remove_suffix(1);
    return VersionNumber::parse(text).value_or(VersionNumber{});
}

} // namespace

HostSystem hostSystem() {
#ifdef __APPLE__
    char version[64] = {};
    std::size_t size = sizeof version - 1;
    if (::sysctlbyname("kern.osproductversion", version, &size, nullptr, 0) != 0) size = 0;
    return {"macOS", leadingNumbers(std::string_view(version))};
#else
    struct utsname system {};
    if (::uname(&system) != 0) return {};
    return {system.sysname, leadingNumbers(system.release)};
#endif
}

} // namespace tidwen
