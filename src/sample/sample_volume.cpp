#include "sample/sample_volume.h"

#include "base/message.h"
#include "base/property_list.h"
#include "platform/file_system.h"
#include "posix/file_faults.h"
#include "sample/bill_of_materials_writer.h"
#include "sample/icon_writer.h"
#include "sample/mach_o_stub.h"
#include "sample/privacy_database_writer.h"
#include "sample/sample_contents.h"
#include "sample/sample_tree.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tidwen {

namespace fs = std::filesystem;

namespace sample {

namespace {

constexpr double secondsTo2024 = 725'846'400; ///< from 2001, the epoch of property lists

std::string text(std::string_view value) {
    return std::string(value);
}

constexpr int leastWithIcon = 300; ///< kilobytes of resources; helpers have no icon of their own
constexpr int blockBytes = 4096;   ///< what a disk gives a file at least

std::string encoded(const PropertyListDictionary& dictionary, bool isBinary) {
    return isBinary ? writeBinaryPropertyList(dictionary) : writeXmlPropertyList(dictionary);
}

/// Plausible content for a file of this name.
std::string content(std::string_view path, int kilobytes) {
    const auto bytes = static_cast<std::size_t>(kilobytes) * 1024;
    const fs::path name(path);
    const auto extension = name.extension().string();
    if (extension == ".plist" || extension == ".sfl3")
        return writeBinaryPropertyList(PropertyListDictionary{
            {"NSWindow Frame Main", "120 80 1024 700 0 0 1512 944 "}, {"lastVersion", name.stem().string()}});
    static constexpr std::array texts = {".log", ".ips", ".txt", ".json", ".conf"};
    if (std::find(texts.begin(), texts.end(), extension) == texts.end()) return noise(path, bytes);
    std::string lines;
    for (int number = 1; lines.size() < bytes; ++number)
        lines += name.filename().string() + " line " + std::to_string(number) + "\n";
    return lines;
}

std::string_view packageType(const fs::path& bundle) {
    const auto extension = bundle.extension();
    if (extension == ".app") return "APPL";
    return extension == ".systemextension" ? "SYSX" : "XPC!";
}

void writeBundle(SampleTree& tree, const Bundle& bundle) {
    PropertyListDictionary info{{"CFBundleIdentifier", text(bundle.bundleID)},
                                {"CFBundleName", text(bundle.name)},
                                {"CFBundleExecutable", text(bundle.name)},
                                {"CFBundleShortVersionString", text(bundle.version)},
                                {"CFBundleVersion", text(bundle.version)},
                                {"CFBundlePackageType", text(packageType(fs::path(bundle.path)))},
                                {"CFBundleInfoDictionaryVersion", "6.0"},
                                {"LSMinimumSystemVersion", "13.0"}};
    if (!bundle.category.empty())
        info["LSApplicationCategoryType"] = "public.app-category." + text(bundle.category);
    if (bundle.isBackgroundAgent) info["LSUIElement"] = true;
    const bool hasIcon = bundle.kilobytes >= leastWithIcon;
    const auto icon = hasIcon ? writeIcon(bundle.bundleID) : std::string();
    if (hasIcon) info["CFBundleIconFile"] = "AppIcon";

    MachOStub stub{.identifier = text(bundle.bundleID),
                   .teamID = text(bundle.teamID),
                   .universal = bundle.isUniversal,
                   .padding = std::size_t{16} * 1024};
    for (const auto& group : bundle.groups)
        stub.applicationGroups.push_back(text(group));

    const auto contents = text(bundle.path) + "/Contents/";
    tree.file(contents + "Info.plist", encoded(info, bundle.hasBinaryInfo));
    tree.file(contents + "MacOS/" + text(bundle.name), writeMachOStub(stub), true);
    if (hasIcon) tree.file(contents + "Resources/AppIcon.icns", icon);
    const auto iconBlocks = static_cast<int>((icon.size() + blockBytes - 1) / blockBytes);
    tree.file(contents + "Resources/Assets.car",
              content(bundle.path, bundle.kilobytes - iconBlocks * blockBytes / 1024));
    if (packageType(fs::path(bundle.path)) == "APPL") tree.file(contents + "PkgInfo", "APPL????");
}

void writeItems(SampleTree& tree, const std::vector<Item>& items) {
    for (const auto& item : items) {
        if (item.path.ends_with('/'))
            tree.folder(item.path);
        else
            tree.file(item.path, content(item.path, item.kilobytes));
    }
}

void writeContainer(SampleTree& tree, const Container& container) {
    tree.file(text(container.folder) + "/.com.apple.containermanagerd.metadata.plist",
              writeBinaryPropertyList(PropertyListDictionary{
                  {"MCMMetadataIdentifier", text(container.identifier)},
                  {"MCMMetadataContentClass", 2},
                  {"MCMMetadataVersion", 7},
                  {"MCMMetadataUserIdentity", PropertyListDictionary{{"posixUID", 501}}}}));
}

void writeJobs(SampleTree& tree) {
    PropertyListDictionary switchedOff;
    for (const auto& job : jobs()) {
        const PropertyListDictionary list{
            {"Label", text(job.label)},
            {"ProgramArguments", PropertyListArray{expandHome(job.program), "--quiet"}},
            {"RunAtLoad", true}};
        tree.file(job.plist, encoded(list, job.hasBinaryForm));
        if (job.isSwitchedOff) switchedOff[text(job.label)] = true;
    }
    tree.file("/private/var/db/com.apple.xpc.launchd/disabled.plist", writeXmlPropertyList(switchedOff));
}

void writePackage(SampleTree& tree, const Package& package) {
    const auto base = "/private/var/db/receipts/" + text(package.packageID);
    tree.file(base + ".plist", writeBinaryPropertyList(PropertyListDictionary{
                                   {"PackageIdentifier", text(package.packageID)},
                                   {"PackageVersion", text(package.version)},
                                   {"PackageFileName", text(package.packageID) + ".pkg"},
                                   {"InstallPrefixPath", text(package.prefix)},
                                   {"InstallProcessName", "installer"},
                                   {"InstallDate", PropertyListDate{secondsTo2024}}}));
    std::vector<BomEntry> entries;
    for (auto file : package.files) {
        const bool isFolder = file.ends_with('/');
        if (isFolder) file.remove_suffix(1);
        entries.push_back({.path = text(file), .isDirectory = isFolder, .size = isFolder ? 0U : 1024U});
    }
    tree.file(base + ".bom", writeBillOfMaterials(entries));
}

void writeSystemExtensions(SampleTree& tree) {
    PropertyListArray extensions;
    for (const auto& extension : systemExtensions()) {
        const auto origin = text(extension.application) + "/Contents/Library/SystemExtensions/"
                            + text(extension.bundleID) + ".systemextension";
        extensions.emplace_back(PropertyListDictionary{
            {"identifier", text(extension.bundleID)},
            {"teamID", text(extension.teamID)},
            {"state", "activated_enabled"},
            {"uniqueID", "B7A1C0DE-2F43-5E60-8A1B-9C7D5E3F1A20"},
            {"originPath", origin},
            {"container", PropertyListDictionary{{"bundlePath", text(extension.application)}}},
            {"categories", PropertyListArray{"com.apple.system_extension.network_extension"}}});
    }
    tree.file("/Library/SystemExtensions/db.plist",
              writeBinaryPropertyList(
                  PropertyListDictionary{{"extensions", std::move(extensions)}, {"version", 1}}));
}

void writeEverything(SampleTree& tree) {
    for (const auto& bundle : bundles())
        writeBundle(tree, bundle);
    writeItems(tree, userItems());
    writeItems(tree, systemItems());
    for (const auto& link : links())
        tree.link(link.path, link.target);
    for (const auto& container : containers())
        writeContainer(tree, container);
    writeJobs(tree);
    for (const auto& package : packages())
        writePackage(tree, package);
    writeSystemExtensions(tree);
    tree.file("~/Library/Application Support/com.apple.TCC/TCC.db", writePrivacyDatabase(grants(), false));
    tree.file("/Library/Application Support/com.apple.TCC/TCC.db", writePrivacyDatabase(grants(), true));
    tree.setModesAndTimes();
}

/// Number of stand-alone applications in the table that are not in the Trash.
int installedCount() {
    const auto all = bundles();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [](const Bundle& bundle) {
        return bundle.path.find(".app/") == std::string_view::npos && bundle.path.ends_with(".app")
               && bundle.path.find("/.Trash/") == std::string_view::npos;
    }));
}

} // namespace

} // namespace sample

tl::expected<SampleSummary, SampleError> writeSampleVolume(const fs::path& folder) {
    const auto refusal = [&](const char* key) {
        return tl::unexpected(SampleError{true, {key, {folder.string()}}});
    };
    bool begun = false;
    try {
        auto root = fs::absolute(folder).lexically_normal();
        if (root.filename().empty()) root = root.parent_path(); // given with a trailing slash
        if (const auto status = fs::symlink_status(root); fs::exists(status)) {
            if (!fs::is_directory(fs::status(root))) return refusal("cli.sample.notAFolder %@");
            if (!fs::is_empty(root)) return refusal("cli.sample.notEmpty %@");
        }
        fs::create_directories(root);
        begun = true;
        sample::SampleTree tree(root);
        sample::writeEverything(tree);
        return SampleSummary{root, sample::installedCount(), tree.bytesWritten()};
    } catch (const fs::filesystem_error& error) {
        const Message why{std::string(failureKey(faultOf(error.code().value())))};
        return tl::unexpected(SampleError{false, {"cli.sample.failed %@ %@", {error.path1().string(), why}}});
    } catch (const std::exception& error) {
        return tl::unexpected(
            SampleError{!begun, {"cli.sample.failed %@ %@", {folder.string(), error.what()}}});
    }
}

} // namespace tidwen
