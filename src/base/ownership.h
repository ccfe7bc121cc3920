#pragma once

#include "base/descriptor.h"

#include <sys/types.h>

namespace tidwen {

/// Owner and group of a file. What root creates inside a user's home is given to that user, who could
/// otherwise neither read nor delete it. Other processes may not change owners; for them a refusal is no
/// error.
struct Ownership {
    uid_t user = 0;
    gid_t group = 0;
};

/// Of an open file or folder.
OsResult<Ownership> ownershipOf(int descriptor);

/// Changes the owner of an open file that this process has created. Returns 0 or the errno.
int giveFile(int file, const Ownership& owner);

/// Changes the owner of the folder that this process has just created under `name`, never through a link.
/// EBUSY when something else has taken the name since, so that only a new, empty folder changes its owner.
/// Returns 0 or the errno.
int giveNewFolder(int parent, const char* name, const Ownership& owner);

} // namespace tidwen
