#pragma once

#include "base/log.h"
#include "base/texts.h"
#include "base/timestamp.h"
#include "platform/applications.h"
#include "platform/code_signatures.h"
#include "platform/defaults.h"
#include "platform/file_system.h"
#include "platform/keychain.h"
#include "platform/known_applications.h"
#include "platform/launchd.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "platform/workspace.h"

namespace tidwen {

/// The ports to one Mac, running or on a volume. Created once by `main`, which owns the objects and outlives
/// this. Services take the few ports they use, not this.
struct System {
    FileSystem& files;
    CodeSignatures& signatures;
    Receipts& receipts;
    Keychain& keychain;
    SystemExtensions& systemExtensions;
    RunningApplications& runningApplications;
    KnownApplications& knownApplications;
    Launchd& launchd;
    Workspace& workspace;
    Defaults& defaults;
    const Texts& texts;
    Clock& clock;
    Log& log;
    UserEnvironment user;
};

} // namespace tidwen
