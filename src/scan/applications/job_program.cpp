#include "scan/applications/job_program.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/file_absence.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tidwen {
namespace {

/// The folder that exists or is missing as a whole: "/Library", "/usr/bin".
Path placeOf(const Path& program) {
    static constexpr std::array<std::string_view, 4> ofParts = {"System", "usr", "Users", "private"};
    const auto parts = program.components();
    const Path top = Path("/") / parts.at(1);
    const bool isOfParts = std::find(ofParts.begin(), ofParts.end(), parts[1]) != ofParts.end();
    return isOfParts && parts.size() > 3 ? top / parts[2] : top;
}

/// Exists on every Mac; everything installed is elsewhere.
bool isOfSystem(const Path& path) {
    if (path.isWithinIgnoringCase(Path("/usr/local"))) return false;
    static constexpr std::array<std::string_view, 4> places = {"/System", "/bin", "/sbin", "/usr"};
    return std::any_of(places.begin(), places.end(), [&](std::string_view place) {
        return path.isWithinIgnoringCase(Path(std::string(place)));
    });
}

// Twice the depth of programs in helpers of helpers.
constexpr std::size_t mostComponents = 24;

} // namespace

JobProgram JobPrograms::find(const std::string& program) {
    const Path path = Path(program).standardized();
    if (!path.isAbsolute() || path.isRoot()) return JobProgram::away;
    const auto found = files_.infoFollowingLinks(path);
    if (found) return JobProgram::present;
    const bool isJudged = isAbsence(found.error()) && path.components().size() <= mostComponents;
    return isJudged ? judgeMissing(path) : JobProgram::away;
}

/// Judges a path with a missing part by its deepest existing folder.
JobProgram JobPrograms::judgeMissing(const Path& program) {
    Path absent = program;
    auto there = files_.infoFollowingLinks(absent.parent());
    for (; !there && isAbsence(there.error()); there = files_.infoFollowingLinks(absent.parent()))
        absent = absent.parent();
    const Path folder = absent.parent();
    const auto real = files_.resolve(folder);
    const auto* names = namesIn(folder);
    if (!there || !real || !names) return JobProgram::away;
    // A broken link may lead to a missing disk; and a Mac's disk finds a name in other letter case or
    // normalization, which the disk with the copy may not.
    if (names->contains(fileNameKey(absent.lastComponent()))) return JobProgram::away;

    const Path target(real->string() + program.string().substr(folder.isRoot() ? 0 : folder.string().size()));
    if (target.isWithinIgnoringCase(Path("/Volumes"))) return JobProgram::away; // another disk
    const Path place = placeOf(target);
    if (place == target || holds(place)) return JobProgram::gone;
    return isOfSystem(target) ? JobProgram::away : JobProgram::unknown;
}

/// An empty folder may be the mount point of a disk, except for those that are always on the disk itself.
bool JobPrograms::holds(const Path& place) {
    const auto* names = namesIn(place);
    return names && (!names->empty() || place == Path("/Applications") || place == Path("/Library"));
}

const JobPrograms::Names* JobPrograms::namesIn(const Path& folder) {
    const auto [known, isNew] = listed_.try_emplace(folder);
    auto& names = known->second;
    if (isNew && entriesLeft_ > 0)
        if (const auto entries = files_.list(folder)) {
            if (entries->size() <= entriesLeft_) {
                names.emplace();
                for (const auto& entry : *entries)
                    names->insert(fileNameKey(entry.name));
            }
            entriesLeft_ -= std::min(entriesLeft_, entries->size());
        }
    return names ? &*names : nullptr;
}

} // namespace tidwen
