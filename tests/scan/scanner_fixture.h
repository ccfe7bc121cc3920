#pragma once

#include "base/path.h"
#include "base/property_list.h"
#include "base/step_progress.h"
#include "base/stop_token.h"
#include "base/texts.h"
#include "platform/code_signatures.h"
#include "platform/receipts.h"
#include "platform/system_extensions.h"
#include "platform/user_environment.h"
#include "scan/applications/app_target.h"
#include "scan/applications/bundle_coverage.h"
#include "scan/applications/installed_bundles.h"
#include "scan/applications/owning_bundle.h"
#include "scan/matching/residue_scanner.h"
#include "scan/matching/scan_result.h"
#include "scan/owner.h"
#include "scan/policy/trace_category.h"

#include "platform/budgeted_files.h"
#include "scan/policy/search_location.h"
#include "support/fixtures.h"
#include "support/matchers.h"
#include "support/stand_ins.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tidwen {

// A small Mac with applications and test doubles for every port of a scan.

inline const std::string library = "/Users/alice/Library/";
inline const std::string bundle = "/Applications/Marlin Notes.app";

struct FakeReceipts : Receipts {
    std::vector<std::string> packageIDs() const override { return eachOf(all, &Receipt::packageID); }
    std::optional<Receipt> read(const std::string& packageID) const override {
        for (const auto& receipt : all)
            if (receipt.packageID == packageID) return receipt;
        return std::nullopt;
    }
    std::vector<Receipt> all;
};

struct FakeExtensions : SystemExtensions {
    std::vector<SystemExtensionRecord> list() const override { return all; }
    std::vector<SystemExtensionRecord> all;
};

struct GroupsByBundle : CodeSignatures {
    CodeSignature read(const Path& place, const Path&) const override {
        const auto found = groups.find(place);
        return {std::nullopt, found == groups.end() ? std::vector<std::string>() : found->second};
    }
    std::map<Path, std::vector<std::string>> groups;
};

/// The paths in a colon-separated list.
inline std::vector<std::string> pathsOf(const std::string& list) {
    std::vector<std::string> paths;
    std::istringstream words(list);
    for (std::string path; std::getline(words, path, ':');)
        paths.push_back(path);
    return paths;
}

class Scanner : public testing::Test {
  protected:
    Scanner() {
        test::writeBundle(volume, bundle, "com.corvella.marlin.notes", "Marlin Notes");
        coverage.seesApplications = true;
    }

    ScanResult scan(const StopToken& stop = {}, const OnStep& onStep = {}) {
        const auto bundles =
            std::make_shared<const BundleSnapshot>(volume.files(), signatures, installed, coverage);
        ResidueScanner scanner({volume.files(), receipts, keychain, extensions, texts, log}, user, bundles);
        return scanner.scan(target, stop, together, onStep);
    }

    /// "category reason value: what" of every trace except the bundle and its permissions.
    std::vector<std::string> found() {
        std::vector<std::string> lines;
        for (const auto& trace : scan().traces) {
            if (trace.category == TraceCategory::application || trace.category == TraceCategory::permissions)
                continue;
            auto what = displayName(trace, texts);
            if (what.starts_with(library)) what = "~" + what.substr(library.size());
            lines.push_back(
                fmt::format("{} {}: {}{}{}{}", name(trace.category), name(trace.reason.kind), what,
                            trace.requiresRoot ? " root" : "",
                            std::holds_alternative<action::BootoutAndMove>(trace.action) ? " job" : "",
                            trace.contestedBy ? " contested by " + trace.contestedBy->bundleID : ""));
        }
        return lines;
    }

    void writeJob(const std::string& plist, const char* label, const char* program) {
        volume.write(plist,
                     writeXmlPropertyList(PropertyListDictionary{{"Label", label}, {"Program", program}}));
    }

    test::TemporaryVolume volume;
    test::RecordingLog log;
    Texts texts;
    FakeReceipts receipts;
    test::FakeKeychain keychain;
    FakeExtensions extensions;
    std::vector<OwningBundle> installed = {test::owner(bundle, "com.corvella.marlin.notes", "Marlin Notes")};
    std::vector<AppTarget> together;
    BundleCoverage coverage;
    GroupsByBundle signatures;
    UserEnvironment user = test::alice();
    AppTarget target{.bundleURL = Path(bundle),
                     .bundleID = "com.corvella.marlin.notes",
                     .name = "Marlin Notes",
                     .executableName = "MarlinEngine"};
};

} // namespace tidwen
