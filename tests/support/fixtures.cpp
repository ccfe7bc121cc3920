#include "support/fixtures.h"
#include "base/log.h"
#include "base/path.h"
#include "base/property_list.h"
#include "platform/user_environment.h"

#include <algorithm>
#include <string_view>

namespace tidwen::test {

void RecordingLog::write(LogLevel, std::string_view line) {
    const std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
}

std::vector<std::string> RecordingLog::lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

bool RecordingLog::contains(std::string_view part) const {
    const auto all = lines();
    return std::any_of(all.begin(), all.end(),
                       [&](const auto& line) { return line.find(part) != line.npos; });
}

UserEnvironment alice() {
    return {.home = Path("/Users/alice"),
            .userID = 501,
            .cacheFolder = Path("/private/var/folders/ab/xyz123/C"),
            .temporaryFolder = Path("/private/var/folders/ab/xyz123/T")};
}

void writeBundle(const TemporaryVolume& volume, std::string_view macPath, PropertyListDictionary info) {
    const std::string root(macPath);
    const auto executable = info.find("CFBundleExecutable");
    if (executable != info.end() && executable->second.asString())
        volume.write(root + "/Contents/MacOS/" + *executable->second.asString(), "not really code");
    volume.write(root + "/Contents/Info.plist", writeXmlPropertyList(std::move(info)));
}

void writeBundle(const TemporaryVolume& volume, std::string_view macPath, std::string_view bundleID,
                 std::string_view name) {
    writeBundle(volume, macPath,
                {{"CFBundleIdentifier", std::string(bundleID)},
                 {"CFBundleName", std::string(name)},
                 {"CFBundleExecutable", std::string(name)}});
}

} // namespace tidwen::test
