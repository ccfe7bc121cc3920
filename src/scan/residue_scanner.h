#pragma once

#include "base/log.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "scan/other_applications.h"
#include "scan/residue_matcher.h"
#include "scan/scan_result.h"
#include "scan/search_location.h"
#include "scan/size_measurer.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace tidwen {

/// Finds everything one application left behind. Never fails: what could not be read is in the result.
/// One scan at a time; concurrent callers wait for one another.
class ResidueScanner {
  public:
    struct Ports {
        const FileSystem& files;
        const Receipts& receipts;
        const Keychain& keychain;
        const SystemExtensions& systemExtensions;
        const Texts& texts;
        Log& log;
    };

    /// The other installed applications, for attribution.
    struct Neighbours {
        std::vector<InstalledIdentity> installed;
        /// Lower-cased application groups that applications other than the given bundle declare, each with
        /// the identifier of one that does. Asked at
        /// most once per scan, and only when the target declares groups.
        std::function<std::map<std::string, std::string>(const Path& target)> groupsOfOthers;
    };

    using Progress = std::function<void(const std::string& phase)>; ///< a localised category title

    ResidueScanner(Ports ports, UserEnvironment user, Neighbours neighbours);

    ScanResult scan(const AppTarget& target, const StopToken& stop = {}, const Progress& progress = {});

  private:
    Ports ports_;
    UserEnvironment user_;
    Neighbours neighbours_;
    std::mutex oneAtATime_;
};

} // namespace tidwen
