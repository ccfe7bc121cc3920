#pragma once

#include "support/temporary_folder.h"

#include <cstdlib>

namespace tidwen::test {

/// While it lives, settings are read from and written to a folder of their own. Made before any thread.
class SettingsOfNobody {
  public:
    SettingsOfNobody() {
        setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        setenv("XDG_DATA_HOME", folder_.path().c_str(), 1);   // NOLINT(concurrency-mt-unsafe)
        setenv("TZ", "UTC", 1);                               // NOLINT(concurrency-mt-unsafe)
        setenv("LC_ALL", "C", 1);                             // NOLINT(concurrency-mt-unsafe)
    }

  private:
    TemporaryFolder folder_;
};

} // namespace tidwen::test
