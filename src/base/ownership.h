#pragma once

#include "base/descriptor.h"

#include <sys/types.h>

namespace tidwen {

/// Whose a file is. What root creates inside somebody's home has to be given to that somebody, who could
/// neither read nor delete it otherwise; for anybody else this changes nothing that the kernel forbids.
struct Ownership {
    uid_t user = 0;
    gid_t group = 0;
};

/// Of an open file or folder.
OsResult<Ownership> ownershipOf(int descriptor);

/// Gives away an open file that this process has created. 0 or the errno.
int giveFile(int file, const Ownership& owner);

/// Gives away the folder that this process has just created under `name`, never through a link: EBUSY when
/// something else has taken its name since, so that nothing but a new, empty folder changes hands. 0 or the
/// errno.
int giveNewFolder(int parent, const char* name, const Ownership& owner);

} // namespace tidwen
