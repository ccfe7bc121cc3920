#include "scan/applications/bundle.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/file_absence.h"
#include "platform/property_list_file.h"

#include <type_traits>
#include <variant>

namespace tidwen {
namespace {

// The largest real Info.plists (with every document type of an office suite) are below 200 KB.
constexpr PropertyListLimits infoLimits = {.bytes = 4u << 20, .nodes = 200'000, .depth = 64};

std::optional<PropertyListDictionary> readInfo(const FileSystem& files, const Path& infoFile) {
    const auto list = readPropertyList(files, infoFile, infoLimits);
    const auto* dictionary = list ? list->asDictionary() : nullptr;
    return dictionary ? std::optional(*dictionary) : std::nullopt;
}

/// The item of this name, or of the same name in other letter case: Mac disks are usually case-insensitive,
/// but a copy may be on a case-sensitive one.
Path itemNamed(const FileSystem& files, const Path& folder, std::string_view name) {
    Path item = folder / name;
    if (files.exists(item)) return item;
    const auto entries = files.list(folder);
    if (!entries) return item;
    const auto wanted = lowercased(name);
    for (const auto& entry : *entries)
        if (lowercased(entry.name) == wanted) return folder / entry.name;
    return item;
}

/// The Info.plist that describes the bundle; the path in "Contents" when there is none.
Path findInfo(const FileSystem& files, const Path& root) {
    const auto infoIn = [&](const Path& folder) { return itemNamed(files, folder, "Info.plist"); };
    Path info = infoIn(itemNamed(files, root, "Contents"));
    if (files.exists(info)) return info;
    if (Path flat = infoIn(root); files.exists(flat)) return flat;

    // A link to "Wrapper/<name>.app". One that leads out of the bundle would give it another's identity.
    const auto wrapped = files.resolve(root / "WrappedBundle");
    const auto resolvedRoot = files.resolve(root);
    const bool staysInside =
        wrapped && resolvedRoot && *wrapped != *resolvedRoot && wrapped->isWithin(*resolvedRoot);
    if (!staysInside) return info;
    const Path ofWrapped = infoIn(root / "WrappedBundle");
    return files.exists(ofWrapped) ? ofWrapped : info;
}

/// A single name that does not leave its folder.
bool isPlainName(std::string_view name) {
    return !name.empty() && name != "." && name != ".."
           && name.find_first_of(std::string_view("/\0", 2)) == name.npos;
}

bool isTruthy(const PropertyListValue& value) {
    return std::visit(
        [](const auto& held) {
            using Held = std::decay_t<decltype(held)>;
            if constexpr (std::is_arithmetic_v<Held>) {
                return held != Held{};
            } else if constexpr (std::is_same_v<Held, std::string>) {
                const std::string text = lowercased(held);
                return text == "1" || text == "yes" || text == "true";
            } else {
                return false;
            }
        },
        value.storage());
}

} // namespace

std::optional<Bundle> Bundle::open(const FileSystem& files, const Path& root) {
    const std::string& text = root.string();
    if (!root.isAbsolute() || text.find('\0') != std::string::npos) return std::nullopt;

    // Nearly all bundles have it there, and hundreds are opened in one scan: when it exists, nothing else is
    // checked.
    const Path contents = root / "Contents";
    Path infoFile = contents / "Info.plist";
    if (auto info = readInfo(files, infoFile))
        return Bundle{
            .root = root, .contents = contents, .infoFile = std::move(infoFile), .info = std::move(info)};
    if (!files.isDirectoryFollowingLinks(root)) return std::nullopt;
    infoFile = findInfo(files, root);
    Bundle bundle{
        .root = root, .contents = infoFile.parent(), .infoFile = infoFile, .info = readInfo(files, infoFile)};
    bundle.isDamaged = !bundle.info && mayBeThere(files, infoFile);
    return bundle;
}

bool isBundle(const FileSystem& files, const Path& folder) {
    return mayBeThere(files, folder / "Contents/Info.plist") || mayBeThere(files, findInfo(files, folder));
}

const std::string* Bundle::infoString(std::string_view key) const {
    if (!info) return nullptr;
    const auto found = info->find(key);
    return found == info->end() ? nullptr : found->second.asString();
}

std::optional<std::string> Bundle::identifier() const {
    const auto* text = infoString("CFBundleIdentifier");
    // Tools would stop reading an argument at a NUL byte and act on another application.
    if (!text || text->empty() || text->find('\0') != text->npos) return std::nullopt;
    return *text;
}

std::string Bundle::name() const {
    for (const char* key : {"CFBundleDisplayName", "CFBundleName"})
        if (const auto* text = infoString(key)) return *text;
    return root.stem();
}

bool Bundle::infoFlag(std::string_view key) const {
    if (!info) return false;
    const auto found = info->find(key);
    return found != info->end() && isTruthy(found->second);
}

Path Bundle::executable() const {
    const auto* declared = infoString("CFBundleExecutable");
    const std::string file = declared && isPlainName(*declared) ? *declared : root.stem();
    const bool isDeep = contents != root && lowercased(contents.lastComponent()) == "contents";
    return isDeep ? contents / "MacOS" / file : contents / file;
}

} // namespace tidwen
