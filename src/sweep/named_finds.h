#pragma once

#include "base/path.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"
#include "sweep/known_owners.h"

#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

struct OrphanGroup;

/// An item in a search location with a name but no identifier ("Application Support/Marlin Notes"). The name
/// alone does not show its owner.
struct NamedCandidate {
    std::string name; ///< as written, without what wraps it
    TraceCategory category = TraceCategory::supportFiles;
    Path path;
    bool requiresRoot = false;
    bool mayHoldOthers = false; ///< as in `Trace`
};

/// Whether the name is distinctive enough to identify an owner: five characters or more, and not used by
/// macOS, many applications or ordinary language.
bool isTellingName(std::string_view canonicalName);

/// The component of an identifier that names the application: the last, or the one before it if the last is a
/// plain word ("com.tidepool.desktop").
std::string nameInIdentifier(const std::string& identifier);

/// Adds to each group the items with its name: the name of its application, or the naming component of its
/// identifier. Not when two groups have that name, or an owner in use may. Such finds are for review, because
/// a name is no proof. A group without a name of its own takes that of such a find.
void addNamedFinds(std::vector<OrphanGroup>& groups, const std::vector<NamedCandidate>& candidates,
                   const KnownOwners& owners);

} // namespace tidwen
