#pragma once

/// The macOS tools that Tidwen runs. Always absolute, so no search path is used. (The administrator batch has
/// its own literal paths, because its exact text is a contract.)
namespace tidwen::toolPaths {

inline constexpr const char* osascript = "/usr/bin/osascript";
inline constexpr const char* launchctl = "/bin/launchctl";
inline constexpr const char* tccutil = "/usr/bin/tccutil";
inline constexpr const char* security = "/usr/bin/security";
inline constexpr const char* pkgutil = "/usr/sbin/pkgutil";
inline constexpr const char* systemextensionsctl = "/usr/bin/systemextensionsctl";
inline constexpr const char* open = "/usr/bin/open";
inline constexpr const char* killall = "/usr/bin/killall";
inline constexpr const char* lsregister = "/System/Library/Frameworks/CoreServices.framework/Frameworks/"
                                          "LaunchServices.framework/Support/lsregister";

inline constexpr const char* systemKeychain = "/Library/Keychains/System.keychain";

} // namespace tidwen::toolPaths
