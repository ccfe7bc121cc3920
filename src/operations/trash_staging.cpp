#include "operations/trash_staging.h"

#include "base/path.h"
#include "operations/screened_move.h"
#include "platform/file_absence.h"

#include <string>
#include <string_view>

namespace tidwen {

namespace {

Message failure(FileFault fault) {
    return {std::string(failureKey(fault))};
}

} // namespace

std::optional<Path> stagingPlace(const Path& inTrash) {
    constexpr std::string_view trash = "/.Trash/";
    const auto& text = inTrash.string();
    const auto home = text.find(trash);
    if (home == text.npos) return std::nullopt;
    return Path(text.substr(0, home) + "/Library/Application Support/Tidwen/Staging/"
                + text.substr(home + trash.size()));
}

FileResult<void> makeStagingFolder(const Path& folder, FileSystem& files) {
    if (auto made = files.createDirectories(folder); !made) return made;
    if (files.resolve(folder).value_or(Path()) != folder)
        return tl::unexpected(FileError{FileFault::throughLink, folder});
    return {};
}

void dropEmptyStaging(const Path& folder, FileSystem& files) {
    // Other files of Tidwen are in the last of them.
    for (Path each = folder;
         each.lastComponent() != "Application Support" && files.removeEmptyDirectory(each);)
        each = each.parent();
}

bool isStaged(const Path& inTrash, const FileSystem& files) {
    const auto place = stagingPlace(inTrash);
    return place && files.exists(*place);
}

std::optional<Path> TrashStaging::placeFor(const Path& place) const {
    // A folder around the item that is below the run's own one.
    if (!policy_.isQuarantineEndpoint(place) || !policy_.isQuarantineEndpoint(place.parent()))
        return std::nullopt;
    return stagingPlace(place);
}

tl::expected<operation::Move, Message> TrashStaging::prepare(const operation::Move& move) {
    const auto to = placeFor(move.destination), from = placeFor(move.source);
    if (!to && !from) return move;
    const Path folder = (to ? *to : *from).parent(), above = to ? folder : folder.parent();
    if (const auto made = makeStagingFolder(above, files_); !made)
        return tl::unexpected(failure(made.error().fault));
    if (to) return operation::Move{move.source, *to};
    if (isMissing(files_, *from))
        if (const auto moved = files_.move(move.source.parent(), folder); !moved)
            return tl::unexpected(failure(moved.error().fault));
    return operation::Move{*from, move.destination};
}

std::optional<Message> TrashStaging::settle(const Path& place) {
    const auto staged = placeFor(place);
    if (!staged) return std::nullopt;
    const Path folder = staged->parent();
    std::optional<Message> failed;
    if (!isMissing(files_, folder) && !files_.removeEmptyDirectory(folder)) {
        const auto made = makeFolderInQuarantine(place.parent().parent(), files_, policy_);
        const auto moved =
            made ? files_.move(folder, place.parent()) : MoveResult(tl::unexpected(made.error()));
        if (!moved) failed = failure(moved.error().fault);
    }
    dropEmptyStaging(folder.parent(), files_);
    return failed;
}

} // namespace tidwen
