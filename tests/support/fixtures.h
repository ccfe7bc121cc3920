#pragma once

#include "base/log.h"
#include "base/property_list.h"
#include "platform/user_environment.h"
#include "support/temporary_folder.h"

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen::test {

/// Records every line for later checks.
class RecordingLog : public Log {
  public:
    void write(LogLevel level, std::string_view line) override;
    std::vector<std::string> lines() const;
    bool contains(std::string_view part) const;

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

/// "/Users/alice" with user 501 and her temporary folders.
UserEnvironment alice();

/// Writes an application bundle: Info.plist (XML) from `info` and an executable of a few bytes.
void writeBundle(const TemporaryVolume& volume, std::string_view macPath, PropertyListDictionary info);

/// A bundle with only identifier and name.
void writeBundle(const TemporaryVolume& volume, std::string_view macPath, std::string_view bundleID,
                 std::string_view name);

} // namespace tidwen::test
