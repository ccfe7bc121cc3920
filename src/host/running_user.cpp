#include "host/running_user.h"

#include "base/text.h"

#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace tidwen {

namespace {

std::string homeOf(uid_t user) {
    passwd record{};
    passwd* found = nullptr;
    std::vector<char> buffer(16u << 10);
    const int failed = ::getpwuid_r(user, &record, buffer.data(), buffer.size(), &found);
    return failed == 0 && found && found->pw_dir ? found->pw_dir : "";
}

#ifdef __APPLE__
std::string configured(int name) {
    std::string value(::confstr(name, nullptr, 0), '\0'); // counts the zero at the end; 0 when it fails
    if (value.empty() || ::confstr(name, value.data(), value.size()) != value.size()) return {};
    value.pop_back();
    return value;
}
#endif

/// Under its own name: "/var" is a link to "/private/var", and nothing is moved through links.
std::optional<Path> folderNamed(const std::string& text) {
    if (!text.starts_with('/') || !isValidUtf8(text)) return std::nullopt;
    return Path((text.starts_with("/var/") ? "/private" : "") + text).standardized();
}

} // namespace

ProcessAccount processAccount() {
    ProcessAccount account{.realID = ::getuid(), .effectiveID = ::geteuid(), .home = homeOf(::getuid())};
#ifdef __APPLE__
    account.cacheFolder = configured(_CS_DARWIN_USER_CACHE_DIR);
    account.temporaryFolder = configured(_CS_DARWIN_USER_TEMP_DIR);
#endif
    return account;
}

tl::expected<UserEnvironment, Message> runningUser(const ProcessAccount& account) {
    if (account.realID == 0 || account.effectiveID == 0) return tl::unexpected(Message{"running.root"});
    const auto home = folderNamed(account.home);
    if (!home || home->string() == "/") return tl::unexpected(Message{"running.noHome"});
    return UserEnvironment{*home, account.realID, folderNamed(account.cacheFolder),
                           folderNamed(account.temporaryFolder)};
}

} // namespace tidwen
