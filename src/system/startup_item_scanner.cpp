#include "system/startup_item_scanner.h"

#include "base/path.h"
#include "base/text.h"
#include "platform/budgeted_files.h"
#include "platform/read_budget.h"
#include "scan/applications/shared_names.h"
#include "scan/matching/trace.h"
#include "scan/policy/trace_category.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <tuple>
#include <utility>

namespace tidwen {

namespace {

using Owner = StartupItem::Owner;

std::vector<std::string> pieces(const std::string& label) {
    std::vector<std::string> result;
    std::size_t start = 0;
    while (start <= label.size()) {
        const auto dot = std::min(label.find('.', start), label.size());
        if (dot > start) result.push_back(label.substr(start, dot - start));
        start = dot + 1;
    }
    return result;
}

std::string joined(const std::vector<std::string>& parts, std::size_t count) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += (i ? "." : "") + parts[i];
    return result;
}

/// Words in the labels of many products, so that sharing one is no evidence.
bool isCommonWord(std::string_view word) {
    static constexpr std::array<std::string_view, 13> words = {
        "agent",  "client", "daemon", "helper", "service",   "services",   "updater",
        "update", "launch", "login",  "system", "uninstall", "uninstaller"};
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

} // namespace

/// Applications indexed for attributing many jobs; the first that matches a rule counts. Searching is charged
/// to the budget.
class StartupItemScanner::Owners {
  public:
    Owners(const std::vector<InstalledApp>& apps, const ReadBudget& budget) : budget_(budget) {
        for (const auto& app : apps)
            add(app.url, app.name, app.bundleID);
    }

    void add(const Path& url, const std::string& name, const std::string& bundleID) {
        auto lower = lowercased(bundleID);
        auto parts = pieces(lower);
        owners_.push_back({url.standardized(), name, bundleID, std::move(lower), std::move(parts)});
    }

    /// As file systems compare them: most Mac disks ignore letter case.
    std::optional<Owner> containing(const Path& program) const {
        return installedWhere([path = program.standardized()](const Each& owner) {
            return path.isWithinIgnoringCase(owner.url) && !owner.url.isWithinIgnoringCase(path);
        });
    }

    std::optional<Owner> identifiedBy(const std::string& label) const {
        return installedWhere([&](const Each& owner) {
            const auto size = owner.lowerID.size();
            return size > 0 && label.starts_with(owner.lowerID)
                   && (label.size() == size || label[size] == '.');
        });
    }

    /// The owner whose identifier is the name of the program or of a folder in its path.
    std::optional<Owner> namedOnTheWay(const std::string& program) const {
        constexpr std::size_t longest = 1024;
        if (program.size() > longest) return std::nullopt;
        for (const auto& component : Path(program).standardized().components())
            if (contains(component, "."))
                if (auto owner = identifiedBy(lowercased(component))) return owner;
        return std::nullopt;
    }

    /// Its identifier occurs anywhere in the label: after a team's prefix or a word of its vendor.
    std::optional<Owner> identifiedWithin(const std::string& label) const {
        const auto framed = "." + label + ".";
        return installedWhere([&](const Each& owner) {
            return owner.parts.size() >= 2 && contains(framed, "." + owner.lowerID + ".");
        });
    }

    std::optional<Owner> relatedTo(const std::vector<std::string>& label) const {
        const auto* found = first([&](const Each& owner) {
            return sharesVendor(label, owner.parts) || sharesToken(label, owner.lowerID);
        });
        return found
                   ? std::optional(Owner{Owner::Kind::related, found->name, found->bundleID, {}, found->url})
                   : std::nullopt;
    }

    /// `bundleIDs` in lower case.
    std::optional<Owner> named(const std::vector<std::string>& bundleIDs) const {
        return installedWhere([&](const Each& owner) {
            return std::find(bundleIDs.begin(), bundleIDs.end(), owner.lowerID) != bundleIDs.end();
        });
    }

  private:
    struct Each {
        Path url;
        std::string name, bundleID, lowerID;
        std::vector<std::string> parts; ///< of the lower-cased identifier
    };

    template<class Fits>
    const Each* first(const Fits& fits) const {
        const ReadBudget::Work work(budget_, ReadBudget::Measure::exactly);
        const auto found = std::find_if(owners_.begin(), owners_.end(), fits);
        return found == owners_.end() ? nullptr : &*found;
    }

    template<class Fits>
    std::optional<Owner> installedWhere(const Fits& fits) const {
        const auto* found = first(fits);
        if (!found) return std::nullopt;
        return Owner{Owner::Kind::installed, found->name, found->bundleID, {}, found->url};
    }

    static bool sharesVendor(const std::vector<std::string>& label, const std::vector<std::string>& other) {
        return label.size() >= 3 && other.size() >= 3 && label[0] == other[0] && label[1] == other[1];
    }

    static bool sharesToken(const std::vector<std::string>& label, const std::string& bundleID) {
        return std::any_of(label.begin(), label.end(), [&](const std::string& piece) {
            return contains(bundleID, piece) && characterCount(piece) >= 5 && !isCommonWord(piece);
        });
    }

    const ReadBudget& budget_;
    std::vector<Each> owners_;
};

namespace {

StartupItem makeItem(const LaunchItem& job, StartupItem::Source source, Owner owner) {
    return {job.label, std::move(source), job.isSystemDomain, job.programPath, std::move(owner)};
}

/// Orphans first, then in display order.
void sortForDisplay(std::vector<StartupItem>& items, const std::string& locale) {
    using Key = std::tuple<bool, std::string, std::size_t>;
    std::vector<Key> order;
    for (std::size_t i = 0; i < items.size(); ++i)
        order.emplace_back(items[i].owner.kind != Owner::Kind::missing,
                           displayOrderKey(lowercased(items[i].label), locale), i);
    std::sort(order.begin(), order.end());
    std::vector<StartupItem> sorted;
    sorted.reserve(items.size());
    for (const auto& key : order)
        sorted.push_back(std::move(items[std::get<std::size_t>(key)]));
    items = std::move(sorted);
}

} // namespace

std::vector<StartupItemScanner::Directory> StartupItemScanner::directories(const UserEnvironment& user) {
    return {{user.libraryFolder() / "LaunchAgents", false},
            {Path("/Library/LaunchAgents"), false},
            {Path("/Library/LaunchDaemons"), true}};
}

Owner StartupItemScanner::attributeOwner(const std::string& label,
                                         const std::optional<std::string>& programPath,
                                         const std::vector<InstalledApp>& apps) const {
    JobPrograms programs(files_);
    const ReadBudget budget;
    return attributeOwner(label, programPath, Owners(apps, budget), programs);
}

Owner StartupItemScanner::attributeOwner(const std::string& label,
                                         const std::optional<std::string>& programPath, const Owners& owners,
                                         JobPrograms& programs) const {
    const auto lowered = lowercased(label);
    if (isFromApple(label)) return {Owner::Kind::apple, {}, {}, {}};
    if (programPath) {
        if (const auto owner = owners.containing(Path(*programPath))) return *owner;
        const auto real = files_.resolve(Path(*programPath)); // it may be reached through a link
        if (const auto owner = real ? owners.containing(*real) : std::nullopt) return *owner;
    }
    if (const auto owner = owners.identifiedBy(lowered)) return *owner;

    const auto parts = pieces(lowered);
    for (auto count = parts.size(); count >= 3; --count)
        if (const auto parent = joined(parts, count - 1); isRegistered_(parent))
            return {Owner::Kind::registered, {}, parent, {}};
    if (const auto owner = owners.relatedTo(parts)) return *owner;
    if (const auto owner = owners.identifiedWithin(lowered)) return *owner;
    const auto found = programPath && !programPath->empty() ? programs.find(*programPath) : JobProgram::gone;
    // In a part of macOS or on another disk that is missing; assumed to exist.
    if (found == JobProgram::present || found == JobProgram::away)
        return {Owner::Kind::program, {}, {}, *programPath};
    if (programPath)
        if (auto owner = owners.namedOnTheWay(*programPath)) return *owner;
    const bool isLost = found == JobProgram::gone && parts.size() >= 2;
    return {isLost ? Owner::Kind::missing : Owner::Kind::unknown, {}, {}, {}};
}

/// One run; everything it reads and searches is charged to one budget.
class StartupItemScanner::Run {
  public:
    Run(const StartupItemScanner& scanner, const Inventory& inventory)
        : scanner_(scanner),
          files_(scanner.files_),
          apps_(inventory(files_)),
          bundles_(scanner.installed_.look(InstalledBundles::Reach::further, {}, files_.budget())),
          owners_(apps_, files_.budget()),
          seesAllOwners_(bundles_->coverage().uncounted.empty()) {
        // After the applications of the list all other bundles, each under both of its names.
        for (const auto& bundle : bundles_->bundles()) {
            if (isApplesIdentifier(lowercased(bundle.bundleID))) continue;
            owners_.add(bundle.url, bundle.name, bundle.bundleID);
            if (bundle.place != bundle.url) owners_.add(bundle.place, bundle.name, bundle.bundleID);
        }
    }

    /// An application there could own any job.
    void addUnreadableApplications(const Path& folder) {
        for (const auto& place : bundles_->coverage().unreadable)
            if (place.isWithin(folder)) {
                result_.unreadable.push_back(place);
                seesAllOwners_ = false;
            }
    }

    void addFolder(const Directory& directory) {
        std::vector<Path> unreadable;
        const auto jobs = listLaunchItems(files_, directory.url, directory.isSystemDomain, {}, &unreadable);
        const auto folder = files_.infoFollowingLinks(directory.url);
        if (folder && folder->kind != FileKind::directory) unreadable.push_back(directory.url);
        // What the budget leaves out is counted, not named.
        if (!files_.budget().isExhausted())
            std::ranges::move(unreadable, std::back_inserter(result_.unreadable));
        for (const auto& job : jobs) {
            StartupItem::Plist plist{job.plist};
            if (const auto info = files_.info(job.plist))
                plist.found = foundItem(*info, TraceCategory::launchItems);
            result_.items.push_back(makeItem(job, std::move(plist), attribute(job)));
        }
    }

    void addEmbedded() {
        for (const auto& app : apps_)
            addEmbedded(app);
    }

    StartupScanResult take(const std::string& locale) {
        sortForDisplay(result_.items, locale);
        result_.leftOut = files_.budget().leftOut();
        return std::move(result_);
    }

  private:
    void addEmbedded(const InstalledApp& app) {
        const auto library = app.url / "Contents/Library";
        for (const auto& [folder, isSystemDomain] :
             {std::pair("LaunchAgents", false), std::pair("LaunchDaemons", true)})
            for (const auto& job : listLaunchItems(files_, library / folder, isSystemDomain))
                result_.items.push_back(
                    makeItem(job, StartupItem::Embedded{app.url, app.name},
                             {Owner::Kind::installed, app.name, app.bundleID, {}, app.url}));
    }

    Owner attribute(const LaunchItem& job) {
        const auto& budget = files_.budget();
        if (budget.isExhausted()) return budget.leaveOut(), Owner{Owner::Kind::unknown, {}, {}, {}};
        auto owner = scanner_.attributeOwner(job.label, job.programPath, owners_, programs_);
        if (owner.kind != Owner::Kind::missing) return owner;
        if (auto named = owners_.named(readAssociatedBundleIDs(files_, job.plist))) return *named;
        // An owner that was not examined may own it.
        if (!seesAllOwners_ || budget.isExhausted()) owner.kind = Owner::Kind::unknown;
        return owner;
    }

    const StartupItemScanner& scanner_;
    const BudgetedFiles files_;
    const std::vector<InstalledApp> apps_;
    std::shared_ptr<const BundleSnapshot> bundles_;
    Owners owners_;
    bool seesAllOwners_;
    JobPrograms programs_{files_};
    StartupScanResult result_;
};

StartupScanResult StartupItemScanner::scan(const Inventory& inventory, const std::string& locale) const {
    Run run(*this, inventory);
    for (const auto& folder : {Path("/Applications"), user_.home / "Applications"})
        run.addUnreadableApplications(folder);
    for (const auto& directory : directories(user_))
        run.addFolder(directory);
    run.addEmbedded();
    return run.take(locale);
}

} // namespace tidwen
