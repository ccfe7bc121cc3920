#include "scan/applications/container_identity.h"

#include "base/path.h"
#include "base/property_list.h"
#include "platform/budgeted_files.h"
#include "platform/file_absence.h"
#include "platform/property_list_file.h"

#include <string_view>

namespace tidwen {

namespace {

// Real ones contain a sandbox profile of some ten kilobytes.
constexpr PropertyListLimits limits = {.bytes = 4u << 20, .nodes = 100'000, .depth = 64};

constexpr const char* metadataName = ".com.apple.containermanagerd.metadata.plist";
constexpr const char* olderName = "Container.plist";

std::optional<std::string> nonEmpty(const PropertyListValue& dictionary, std::string_view key) {
    const auto* text = dictionary.findString(key);
    return text && !text->empty() ? std::optional(*text) : std::nullopt;
}

/// It exists, or its absence cannot be established.
bool hasRecord(const FileSystem& files, const Path& container) {
    return mayBeThere(files, container / metadataName) || mayBeThere(files, container / olderName);
}

} // namespace

std::optional<std::string> containerIdentity(const FileSystem& files, const Path& container) {
    if (const auto metadata = readPropertyList(files, container / metadataName, limits))
        return nonEmpty(*metadata, "MCMMetadataIdentifier");

    const auto older = readPropertyList(files, container / olderName, limits);
    const auto* validation = older ? older->find("SandboxProfileDataValidationInfo") : nullptr;
    const auto* parameters =
        validation ? validation->find("SandboxProfileDataValidationParametersKey") : nullptr;
    if (!parameters) return std::nullopt;
    if (auto identifier = nonEmpty(*parameters, "application_container_id")) return identifier;
    return nonEmpty(*parameters, "application_bundle_id");
}

std::vector<std::string> containerGroups(const FileSystem& files, const Path& container) {
    auto record = readPropertyList(files, container / metadataName, limits);
    const auto* info = record ? record->find("MCMMetadataInfo") : nullptr;
    if (!info) record = readPropertyList(files, container / olderName, limits);
    if (!info && record) info = &*record;
    for (const auto* key : {"SandboxProfileDataValidationInfo", "SandboxProfileDataValidationEntitlementsKey",
                            "com.apple.security.application-groups"})
        info = info ? info->find(key) : nullptr;
    return info ? info->asStrings().value_or(std::vector<std::string>()) : std::vector<std::string>();
}

std::optional<std::string> containerOwner(const FileSystem& files, const Path& container) {
    if (auto identity = containerIdentity(files, container)) return identity;
    const bool isUnknown = BudgetedFiles::isSpent(files) || hasRecord(files, container);
    return isUnknown ? std::nullopt : std::optional(container.lastComponent());
}

bool hidesItsOwner(const FileSystem& files, const Path& container) {
    return !BudgetedFiles::isSpent(files) && hasRecord(files, container)
           && !containerIdentity(files, container);
}

} // namespace tidwen
