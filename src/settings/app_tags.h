#pragma once

#include "base/letter_case.h"
#include "base/observable.h"
#include "base/property_list.h"
#include "base/texts.h"
#include "platform/defaults.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace tidwen {

/// The user's own tags on applications. Main thread only.
///
/// Tag names are trimmed, never empty, at most 64 characters, and compared without regard to letter case;
/// identifiers as well.
class AppTags {
  public:
    static constexpr const char* defaultsKey = "tidwen.appTags";

    /// `texts`: of the language in which people read.
    AppTags(Defaults& defaults, const Texts& texts);

    /// Tags of one application, in the order of `all()`.
    std::vector<std::string> tags(const std::string& bundleID) const;
    /// Every tag in use, as the language orders them.
    std::vector<std::string> all() const { return sorted(all(byApp_)); }
    /// Identifiers of the applications that carry a tag.
    std::set<std::string> tagged(const std::string& tag) const;
    bool isTagged(const std::string& bundleID, const std::string& tag) const;

    /// Why nothing changed.
    enum class Refusal { unusableName, thereAlready, notThere, notStored };
    using Result = tl::expected<void, Refusal>;

    /// Several applications are one change; refused only if it changes none of them.
    Result add(const std::vector<std::string>& bundleIDs, const std::string& tag);
    Result add(const std::string& bundleID, const std::string& tag) {
        return add(std::vector{bundleID}, tag);
    }
    Result remove(const std::vector<std::string>& bundleIDs, const std::string& tag);
    Result remove(const std::string& bundleID, const std::string& tag) {
        return remove(std::vector{bundleID}, tag);
    }
    /// Renames the tag everywhere; if the new name is in use, the two are merged.
    Result rename(const std::string& tag, const std::string& newName);
    /// Removes the tag from every application.
    Result erase(const std::string& tag);

    /// Reads everything again after another process changed it.
    void reload();

    /// Emitted with the identifiers of the applications whose tags have changed.
    Signal<const std::set<std::string>&> changed;

  private:
    /// Identifier → tags, each once.
    using Store = std::map<std::string, std::vector<std::string>, AnyCase>;
    static Store read(const std::optional<PropertyListValue>& stored);
    static std::vector<std::string> all(const Store& store);
    static std::string spelling(const std::string& tag, const Store& store);
    /// Returns `unchanged` when the edit changes nothing.
    Result change(Refusal unchanged, const std::function<void(Store&)>& edit);
    void show(Store store);

    std::vector<std::string> sorted(std::vector<std::string> tags) const;

    Defaults& defaults_;
    const Texts& texts_;
    Store byApp_;
};

} // namespace tidwen
