#include "sweep/linked_places.h"

#include "sweep/known_owners.h"

namespace tidwen {

bool holdsWhatIsInUse(const KnownOwners& owners, const Path& find, const LinkedPlaces& linked) {
    if (owners.holdsWhatIsInUse(find)) return true;
    const auto real = linked.resolve(find);
    return real != find && owners.holdsWhatIsInUse(real);
}

} // namespace tidwen
