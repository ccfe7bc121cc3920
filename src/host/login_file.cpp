#include "host/login_file.h"

#include "posix/file_faults.h"
#include "settings/shared_file.h"

#include <cerrno>
#include <string_view>
#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maximumBytes = 64u << 10;

} // namespace

bool LoginFile::isEnabled() const {
    const auto stored = SharedFile(file_, SharedFile::Links::kept).read(maximumBytes);
    return stored && isOn(*stored);
}

bool LoginFile::setEnabled(bool enabled) {
    std::error_code failure;
    if (!enabled) {
        fs::remove(file_, failure);
        return !failure || failed("remove", failure.message());
    }
    const auto wanted = text();
    if (!wanted) return failed("write", wanted.error());
    const SharedFile shared(file_, SharedFile::Links::kept);
    errno = 0;
    if (!shared.makeFolder()) return failed("write", std::generic_category().message(errno));
    const auto lock = shared.lockFolder(); // `settings set` and a running `watch` may both write it
    errno = 0;
    return (lock.isHeld() && shared.replace(*wanted))
           || failed("write", std::generic_category().message(errno));
}

bool LoginFile::failed(std::string_view what, std::string_view reason) const {
    log_.error("Cannot {} the login entry {}: {}", what, file_.string(), reason);
    return false;
}

} // namespace tidwen
