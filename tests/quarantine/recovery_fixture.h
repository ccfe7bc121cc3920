#pragma once

#include "base/path.h"
#include "base/texts.h"
#include "operations/recording_runner.h"
#include "quarantine/manifest.h"
#include "quarantine/recovery.h"
#include "support/fixtures.h"
#include "support/stand_ins.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tidwen::test {

namespace fs = std::filesystem;

/// A volume with runs that were cut off, and what recovers them.
class Recovery : public testing::Test {
  protected:
    static Path folder(const std::string& name) { return alice().trash() / ("Tidwen - " + name); }
    RecoveryOutcome recoverAll() {
        return recoverInterruptedRemovals(alice(), volume.files(), FixedClock(), log);
    }
    std::vector<Manifest> recover() { return recoverAll().recovered; }
    void mode(const std::string& path, int bits) const {
        fs::permissions(volume.host(path), fs::perms(bits));
    }

    const Path root = folder("Notes");
    TemporaryVolume volume;
    RecordingLog log;
    RecordingRunner administrator, session;
    Texts texts;
    FixedClock clock;
};

} // namespace tidwen::test
