#include "host/running_user.h"

#include "base/path.h"
#include "base/text.h"

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace tidwen {

namespace {

std::string homeOf(uid_t user) {
    passwd record{};
    passwd* found = nullptr;
    std::vector<char> buffer(16u << 10);
    const int failed = ::getpwuid_r(user, &record, buffer.data(), buffer.size(), &found);
    return failed == 0 && found && found->pw_dir ? found->pw_dir : "";
}

/// The accounts of services have folders of the system's for homes.
std::vector<std::string> homesOfPersons() {
    constexpr uid_t firstPerson = 501, nobody = 65534;
    constexpr int mostAccounts = 10'000;
    std::vector<std::string> homes;
    static std::mutex oneAtATime; // the list of accounts has one place for the whole process
    const std::lock_guard lock(oneAtATime);
    // NOLINTBEGIN(concurrency-mt-unsafe): nothing else in Tidwen walks the accounts
    ::setpwent();
    for (int seen = 0; seen < mostAccounts; ++seen) {
        const passwd* account = ::getpwent();
        if (!account) break;
        const bool isPersons = account->pw_uid >= firstPerson && account->pw_uid < nobody;
        if (isPersons && account->pw_dir) homes.emplace_back(account->pw_dir);
    }
    ::endpwent();
    // NOLINTEND(concurrency-mt-unsafe)
    return homes;
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

/// Each home where its account names it, and where it really lies.
std::vector<Path> othersOf(const std::vector<std::string>& homes, const Path& own) {
    std::vector<Path> others;
    const auto add = [&](const std::string& text) {
        const auto home = folderNamed(text);
        const bool isNew = home && *home != own && std::ranges::find(others, *home) == others.end();
        if (isNew && !home->isRoot()) others.push_back(*home);
    };
    for (const auto& home : homes) {
        std::error_code failed;
        const auto real = std::filesystem::canonical(home, failed);
        add(home);
        if (!failed) add(real.string());
    }
    return others;
}

} // namespace

ProcessAccount processAccount() {
    ProcessAccount account{.realID = ::getuid(),
                           .effectiveID = ::geteuid(),
                           .home = homeOf(::getuid()),
                           .personsHomes = homesOfPersons()};
#ifdef __APPLE__
    account.cacheFolder = configured(_CS_DARWIN_USER_CACHE_DIR);
    account.temporaryFolder = configured(_CS_DARWIN_USER_TEMP_DIR);
#endif
    return account;
}

tl::expected<UserEnvironment, Message> runningUser(const ProcessAccount& account) {
    if (account.realID == 0 || account.effectiveID == 0) return tl::unexpected(Message{"running.root"});
    const auto home = folderNamed(account.home);
    if (!home || home->isRoot()) return tl::unexpected(Message{"running.noHome"});
    return UserEnvironment{*home, account.realID, folderNamed(account.cacheFolder),
                           folderNamed(account.temporaryFolder), othersOf(account.personsHomes, *home)};
}

} // namespace tidwen
