#pragma once

#include "base/path.h"
#include "base/uuid.h"
#include "platform/user_environment.h"
#include "removal/unseen.h"
#include "scan/applications/app_target.h"
#include "scan/matching/scan_result.h"
#include "scan/matching/trace.h"
#include "sweep/orphan_scanner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tidwen {

/// An application, a group of leftovers or an offer, with its traces.
struct FoundGroup {
    AppTarget target;              ///< for leftovers and an offer only names
    std::span<const Trace> traces; ///< owned by the findings
    /// Not selected by default: the application cannot be removed or is protected.
    bool isKeptByDefault = false;
};

/// One group per result; the results must outlive them.
std::vector<FoundGroup> groupsOf(const std::vector<ScanResult>& scanned);

/// The results of a search, from which a removal is selected. Immutable and shared with the views. Traces are
/// numbered from 0 across all groups.
class Findings {
  public:
    using Scanned = std::shared_ptr<const std::vector<ScanResult>>;
    using Swept = std::shared_ptr<const OrphanScanResult>;

    Findings() = default; ///< no groups
    Findings(Scanned scanned, const UserEnvironment& user);
    explicit Findings(const Swept& swept);
    Findings(const std::string& name, std::vector<Trace> offered);

    const std::vector<FoundGroup>& groups() const { return groups_; }
    /// Empty unless applications were scanned; otherwise in the order of the groups.
    const std::vector<ScanResult>& scanned() const;
    /// As of the scan that found the trace; false where nothing was scanned.
    bool resetsNothing(std::size_t group, const Trace& trace) const;
    /// Whether a program of the application was given permissions by its path; as of the scan.
    bool hasPathPermissions(const FoundGroup& group) const;
    const Unseen& unseen() const { return unseen_; }
    /// Items that can be neither shown nor removed, without duplicates: their names are not valid UTF-8.
    const std::vector<Path>& skippedNames() const { return skippedNames_; }

    std::size_t traceCount() const { return numbers_.size(); }
    std::size_t firstNumber(std::size_t group) const { return firstNumbers_[group]; }
    std::optional<std::size_t> number(const Uuid& id) const;
    /// Unknown identifiers are skipped. Fast if they are in the order of the traces.
    std::vector<std::size_t> numbers(const std::vector<Uuid>& ids) const;

    /// The number of an item that traces move; several traces may move the same item.
    using Place = std::uint32_t;
    static constexpr Place noPlace = UINT32_MAX;
    Place place(std::size_t trace) const { return places_[trace]; }
    /// The nearest item that contains this one.
    Place outer(Place place) const { return outer_[place]; }
    std::size_t placeCount() const { return outer_.size(); }

  private:
    void index();
    void numberPlaces();

    std::shared_ptr<const void> owner_; ///< of the traces
    Scanned scanned_;
    std::vector<FoundGroup> groups_;
    std::vector<std::size_t> firstNumbers_;
    std::vector<Uuid> ids_;                             ///< by number
    std::vector<std::pair<Uuid, std::size_t>> numbers_; ///< by identifier
    std::vector<Place> places_, outer_;
    Unseen unseen_;
    std::vector<Path> skippedNames_;
};

} // namespace tidwen
