#pragma once

#include "base/path.h"
#include "base/property_list.h"
#include "base/stop_token.h"
#include "platform/receipts.h"
#include "scan/applications/installed_bundles.h"
#include "scan/matching/trace.h"
#include "sweep/orphan_scanner.h"

#include "platform/budgeted_files.h"
#include "platform/file_code_signatures.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tidwen {

// A Mac for sweeps: jobs, receipts and leftovers of missing applications.

inline const std::string home = "/Users/alice/Library/";

inline std::string job(const std::string& label, const std::string& program) {
    return writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", program}});
}

class ListedReceipts : public Receipts {
  public:
    std::vector<std::string> packageIDs() const override {
        std::vector<std::string> identifiers;
        for (const auto& [identifier, files] : packages)
            identifiers.push_back(identifier);
        return identifiers;
    }
    std::optional<Receipt> read(const std::string& packageID) const override {
        return Receipt{packageID, Path("/"), packages.at(packageID), unreadable};
    }
    std::optional<Path> unreadable;
    std::map<std::string, std::vector<std::string>> packages;
};

class OrphanScan : public testing::Test {
  protected:
    OrphanScan() { volume.makeFolder("/Applications"); }

    OrphanScanResult scan(const std::set<std::string>& protectedIDs = {}, const StopToken& stop = {}) {
        return scanner.scan(installed, protectedIDs, stop,
                            [this](const std::vector<Trace>& found) { streamed += found.size(); });
    }

    std::vector<std::string> orphans() { return eachOf(scan().groups, &OrphanGroup::bundleID); }

    test::TemporaryVolume volume;
    ListedReceipts receipts;
    test::RecordingLog log;
    test::FakeKnownApplications registered;
    std::size_t streamed = 0;
    const FileCodeSignatures signatures{volume.files()};
    test::FakeApplications running;
    InstalledBundles installed{volume.files(), signatures, test::alice()};
    OrphanScanner scanner{{volume.files(), receipts, running, log},
                          test::alice(),
                          [this](const std::string& id) { return registered.isKnown(id); }};
};

} // namespace tidwen
