#include "base/path.h"
#include "base/property_list.h"
#include "base/text.h"
#include "platform/bill_of_materials.h"
#include "platform/file_absence.h"
#include "platform/file_system.h"
#include "platform/property_list_file.h"
#include "platform/receipts.h"
#include "volume/volume_sources.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

namespace {

constexpr std::string_view propertyListSuffix = ".plist";

Path receiptsFolder() {
    return Path("/private/var/db/receipts");
}

/// "", "/", "Applications" and "Applications/X.app/" all occur; each is relative to the root of the volume.
std::optional<Path> installBase(const PropertyListValue& receipt) {
    const auto* prefix = receipt.findString("InstallPrefixPath");
    if (!prefix) return Path();
    if (prefix->find('\0') != prefix->npos) return std::nullopt;
    return Path("/" + *prefix).standardized();
}

} // namespace

std::vector<std::string> VolumeReceipts::packageIDs() const {
    std::vector<std::string> identifiers;
    const auto entries = files_.list(receiptsFolder());
    if (!entries) return identifiers;
    for (const auto& [name, kind] : *entries)
        if (kind != FileKind::directory && name.size() > propertyListSuffix.size()
            && name.ends_with(propertyListSuffix) && isValidUtf8(name))
            identifiers.push_back(name.substr(0, name.size() - propertyListSuffix.size()));
    std::sort(identifiers.begin(), identifiers.end()); // the files were sorted with their suffix
    return identifiers;
}

std::optional<Receipt> VolumeReceipts::read(const std::string& packageID) const {
    constexpr PropertyListLimits limits{.bytes = 1u << 20, .nodes = 20'000, .depth = 16};
    constexpr std::size_t maxBillBytes = 64u << 20;
    if (packageID.empty() || packageID.find('/') != packageID.npos) return std::nullopt;

    const Path listFile = receiptsFolder() / (packageID + ".plist");
    const auto list = readPropertyList(files_, listFile, limits);
    if (!list && !mayBeThere(files_, listFile)) return std::nullopt;
    const auto base = list && list->asDictionary() ? installBase(*list) : std::nullopt;
    if (!base)
        return Receipt{
            .packageID = packageID, .installBase = Path(), .files = {}, .unreadableList = listFile};

    Receipt receipt{.packageID = packageID, .installBase = *base, .files = {}};
    const Path billFile = receiptsFolder() / (packageID + ".bom");
    const auto bill = files_.read(billFile, maxBillBytes);
    if (auto listed = bill ? readBillOfMaterials(*bill) : std::nullopt)
        receipt.files = std::move(*listed);
    else
        receipt.unreadableList = billFile;
    return receipt;
}

} // namespace tidwen
