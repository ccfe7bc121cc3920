#include "scan/job_program.h"

#include "base/text.h"

#include <algorithm>
#include <array>

namespace tidwen {
namespace {

/// The folder that is there or away as a whole: "/Library", "/usr/bin", "/Volumes/Disk".
Path placeOf(const Path& program) {
    static constexpr std::array<std::string_view, 5> ofParts = {"Volumes", "System", "usr", "Users",
                                                                "private"};
    const auto parts = program.components();
    const Path top = Path("/") / parts.at(1);
    const bool isOfParts = std::find(ofParts.begin(), ofParts.end(), parts[1]) != ofParts.end();
    return isOfParts && parts.size() > 3 ? top / parts[2] : top;
}

/// Every Mac has these, and whatever is installed on it lies elsewhere; "/Volumes" is where other disks are.
bool isOfSystemOrOtherDisk(const Path& path) {
    if (path.isWithinIgnoringCase(Path("/usr/local"))) return false;
    static constexpr std::array<std::string_view, 5> places = {"/System", "/Volumes", "/bin", "/sbin",
                                                               "/usr"};
    return std::any_of(places.begin(), places.end(), [&](std::string_view place) {
        return path.isWithinIgnoringCase(Path(std::string(place)));
    });
}

/// An empty folder may be where a disk is attached, but for those that are always on the disk itself.
bool holds(const FileSystem& files, const Path& place) {
    const auto entries = files.list(place);
    return entries && (!entries->empty() || place == Path("/Applications") || place == Path("/Library"));
}

bool isMissing(const FileError& error) {
    return error.fault == FileFault::missing || error.fault == FileFault::notDirectory;
}

/// A Mac's disk finds a name in other letter case, or composed in another way; the disk that holds the copy
/// may not.
bool hasOtherSpelling(const FileSystem& files, const Path& folder, const std::string& name) {
    const auto entries = files.list(folder);
    if (!entries) return true; // what cannot be listed may hold it
    return std::any_of(entries->begin(), entries->end(), [key = fileNameKey(name)](const auto& entry) {
        return fileNameKey(entry.name) == key;
    });
}

/// Judges a path of which something is missing by the deepest folder that is there.
JobProgram judgeMissing(const FileSystem& files, const Path& program) {
    Path absent = program;
    FileResult<FileInfo> there = files.infoFollowingLinks(absent.parent());
    for (; !there && isMissing(there.error()); there = files.infoFollowingLinks(absent.parent()))
        absent = absent.parent();
    const Path folder = absent.parent();
    const auto real = files.resolve(folder);
    if (!there || !real) return JobProgram::away;
    // Where a link leads that leads nowhere, gone or away, is not known.
    if (files.exists(absent) || hasOtherSpelling(files, folder, absent.lastComponent()))
        return JobProgram::away;

    const Path target(real->string() + program.string().substr(folder.isRoot() ? 0 : folder.string().size()));
    const Path place = placeOf(target);
    if (place == target || holds(files, place)) return JobProgram::gone;
    return isOfSystemOrOtherDisk(target) ? JobProgram::away : JobProgram::unknown;
}

} // namespace

JobProgram findJobProgram(const FileSystem& files, const std::string& program) {
    const Path path = Path(program).standardized();
    if (!path.isAbsolute() || path.isRoot()) return JobProgram::away;
    const auto found = files.infoFollowingLinks(path);
    if (found) return JobProgram::present;
    return isMissing(found.error()) ? judgeMissing(files, path) : JobProgram::away;
}

} // namespace tidwen
