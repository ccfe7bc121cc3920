#pragma once

#include "base/descriptor.h"

#include <map>
#include <string>

namespace tidwen {

/// What a call answers for an attribute that is not there (errno).
#ifdef __APPLE__
constexpr int noSuchAttribute = ENOATTR;
#else
constexpr int noSuchAttribute = ENODATA;
#endif

/// The extended attributes of an open plain file or folder by their names on this system. What the system
/// itself puts on every file it creates (its security label) is left out: it is not the item's own.
/// A disk that has no such attributes gives none.
OsResult<std::map<std::string, std::string>> extendedAttributesOf(int descriptor);

/// The attribute that a Mac calls `name`; `noSuchAttribute` when there is none.
OsResult<std::string> macAttributeOf(int descriptor, const std::string& name);

/// Makes the attributes of `to` those of `from`. 0 or the errno; ENOTSUP where the disk cannot hold one.
int copyExtendedAttributes(int from, int to);

} // namespace tidwen
