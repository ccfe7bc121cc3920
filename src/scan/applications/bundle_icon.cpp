#include "scan/applications/bundle_icon.h"

#include "base/path.h"
#include "platform/workspace.h"
#include "scan/applications/bundle.h"

#include <optional>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

namespace {

constexpr std::string_view iconMagic = "icns";
constexpr std::size_t headerBytes = 8; // the magic, and the length of the whole file

/// The icon's file name; nullopt when it is not declared or would leave the folder.
std::optional<std::string> iconName(const Bundle& bundle) {
    const auto* declared = bundle.infoString("CFBundleIconFile");
    if (!declared || declared->empty() || declared->find('/') != std::string::npos
        || declared->find('\0') != std::string::npos || declared->front() == '.')
        return std::nullopt;
    const bool hasExtension = Path("/" + *declared).lowercasedExtension() == iconMagic;
    return hasExtension ? *declared : *declared + ".icns";
}

/// The real location of the icon: a plain file inside the bundle.
FileResult<Path> resolveIcon(const FileSystem& files, const Path& icon, const Path& bundle) {
    auto place = files.resolve(icon);
    if (!place) return place;
    const auto root = files.resolve(bundle);
    if (!root) return root;
    if (!place->isWithin(*root)) return tl::unexpected(FileError{FileFault::throughLink, icon});
    const auto info = files.info(*place);
    if (!info) return tl::unexpected(info.error());
    if (info->kind != FileKind::regular) return tl::unexpected(FileError{FileFault::notRegular, icon});
    return place;
}

} // namespace

FileResult<std::string> readBundleIcon(const FileSystem& files, const Path& bundle) {
    const auto opened = Bundle::open(files, bundle);
    const auto name = opened ? iconName(*opened) : std::nullopt;
    if (!name) return tl::unexpected(FileError{FileFault::missing, bundle});
    const auto icon = opened->contents / "Resources" / *name;
    const auto place = resolveIcon(files, icon, bundle);
    if (!place) return tl::unexpected(place.error());
    auto bytes = files.read(*place, Workspace::maxIconBytes);
    if (bytes && (bytes->size() < headerBytes || !bytes->starts_with(iconMagic)))
        return tl::unexpected(FileError{FileFault::notSupported, icon});
    return bytes;
}

} // namespace tidwen
