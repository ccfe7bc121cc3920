#pragma once

#include "scan/matching/trace.h"
#include "sweep/known_owners.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

struct OrphanGroup;

/// Something in a search location that carries a name and no identifier ("Application Support/Marlin Notes").
/// It tells nothing of its owner by itself.
struct NamedCandidate {
    std::string name; ///< as it is written, without what wraps it
    TraceCategory category = TraceCategory::supportFiles;
    Path path;
    bool requiresRoot = false;
};

/// The name could tell whose something is: five characters or more, and none that macOS, many applications or
/// plain language use.
bool isTellingName(std::string_view canonicalName);

/// The piece of an identifier that says which application it is: the last, or where that is a plain word
/// ("com.tidepool.desktop") the one before it.
std::string nameInIdentifier(const std::string& identifier);

/// Gives to each group what bears its name: the name that its application is known by, or the piece of its
/// identifier that says which it is. Not when two groups are called so, nor when somebody who lives may be
/// meant. Such finds are for review, for a name is no proof. A group without a name of its own takes that of
/// such a find.
void addNamedFinds(std::vector<OrphanGroup>& groups, const std::vector<NamedCandidate>& candidates,
                   const KnownOwners& owners);

} // namespace tidwen
