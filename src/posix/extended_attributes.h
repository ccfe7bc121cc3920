#pragma once

#include "base/descriptor.h"

#include <map>
#include <string>

namespace tidwen {

/// The errno for an attribute that does not exist.
#ifdef __APPLE__
constexpr int noSuchAttribute = ENOATTR;
#else
constexpr int noSuchAttribute = ENODATA;
#endif

/// The extended attributes of an open plain file or folder by their names on this system. Omits what the
/// system itself sets on every file it creates (its security label) and what it keeps out of copies, because
/// it does not belong to the item. Empty on file systems without attributes.
OsResult<std::map<std::string, std::string>> extendedAttributesOf(int descriptor);

/// The attribute that is called `name` on a Mac; `noSuchAttribute` when there is none.
OsResult<std::string> macAttributeOf(int descriptor, const std::string& name);

/// Replaces the attributes of `to` by those of `from`. Returns 0 or the errno; ENOTSUP where the file system
/// cannot store one.
int copyExtendedAttributes(int from, int to);

} // namespace tidwen
