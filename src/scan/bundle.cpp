#include "scan/bundle.h"

#include "base/text.h"
#include "platform/property_list_file.h"
#include "scan/file_absence.h"

#include <type_traits>
#include <variant>

namespace tidwen {
namespace {

// The largest Info.plists in use (every document type of an office suite) stay below 200 KB.
constexpr PropertyListLimits infoLimits = {.bytes = 4u << 20, .nodes = 200'000, .depth = 64};

std::optional<PropertyListDictionary> readInfo(const FileSystem& files, const Path& contents) {
    const auto list = readPropertyList(files, contents / "Info.plist", infoLimits);
    const auto* dictionary = list ? list->asDictionary() : nullptr;
    return dictionary ? std::optional(*dictionary) : std::nullopt;
}

/// The folder whose Info.plist describes the bundle; "Contents" when there is none at all.
Path contentsFolder(const FileSystem& files, const Path& root) {
    const auto holdsInfo = [&](const Path& folder) { return files.exists(folder / "Info.plist"); };
    Path contents = root / "Contents";
    if (holdsInfo(contents)) return contents;
    if (holdsInfo(root)) return root;

    // A link to "Wrapper/<name>.app". One that leads out of the bundle would lend it a stranger's identity.
    const auto wrapped = files.resolve(root / "WrappedBundle");
    const auto resolvedRoot = files.resolve(root);
    const bool staysInside =
        wrapped && resolvedRoot && *wrapped != *resolvedRoot && wrapped->isWithin(*resolvedRoot);
    if (staysInside && holdsInfo(*wrapped)) return root / "WrappedBundle";
    return contents;
}

/// One name, not a way out of its folder.
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

    // Nearly all bundles have it where Macs put it, and hundreds are opened for one scan: when it is there,
    // nothing else has to be asked.
    if (auto info = readInfo(files, root / "Contents"))
        return Bundle{.root = root, .contents = root / "Contents", .info = std::move(info)};
    if (!files.isDirectoryFollowingLinks(root)) return std::nullopt;
    const Path contents = contentsFolder(files, root);
    Bundle bundle{.root = root, .contents = contents, .info = readInfo(files, contents)};
    bundle.isDamaged = !bundle.info && mayBeThere(files, contents / "Info.plist");
    return bundle;
}

const std::string* Bundle::infoString(std::string_view key) const {
    if (!info) return nullptr;
    const auto found = info->find(key);
    return found == info->end() ? nullptr : found->second.asString();
}

std::optional<std::string> Bundle::identifier() const {
    const auto* text = infoString("CFBundleIdentifier");
    // Tools end their arguments at a zero byte: they would act on another application.
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
    return contents == root / "Contents" ? contents / "MacOS" / file : contents / file;
}

} // namespace tidwen
