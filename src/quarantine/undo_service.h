#pragma once

#include "base/log.h"
#include "base/texts.h"
#include "operations/privileged_runner.h"
#include "platform/user_environment.h"
#include "quarantine/manifest.h"

#include <set>
#include <string>
#include <vector>

namespace tidwen {

struct UndoReport {
    int restoredCount = 0;
    int totalCount = 0;
    std::vector<std::string> failures; ///< "path: reason" in the user's language
    int relaunchedJobs = 0;
    std::vector<Path> renamed = {}; ///< where items went whose old place is taken
    friend bool operator==(const UndoReport&, const UndoReport&) = default;
};

/// Puts a run's items back and loads their jobs again. The manifest is not trusted: every move is screened.
class UndoService {
  public:
    struct Ports {
        FileSystem& files;
        PrivilegedRunner& privilegedRunner; ///< moves that need an administrator and system jobs, one batch
        PrivilegedRunner& userRunner;       ///< jobs of the user's own session
        const Texts& texts;
        Log& log;
    };

    UndoService(Ports ports, UserEnvironment user) : ports_(ports), user_(std::move(user)) {}

    UndoReport undo(const Manifest& manifest);

  private:
    Ports ports_;
    UserEnvironment user_;
};

/// Where an item goes back to: its old place, or "Name 2.ext" … "Name 999.ext" beside what took it, or a name
/// with a fresh UUID and no extension. Names in `taken` count as existing.
Path restoreTarget(const Path& source, const FileSystem& files, const std::set<Path>& taken = {});

} // namespace tidwen
