#pragma once

#include "base/message.h"
#include "base/observable.h"
#include "platform/defaults.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

// The user's settings: values, stored texts and names for people.

enum class HomeGrouping { lastUsed, category, tag, none };
enum class HomeSort { automatic, name, size, lastUsed };
enum class UnusedThreshold { oneMonth, threeMonths, sixMonths, twelveMonths };
enum class QuarantineRetention { never, sevenDays, thirtyDays, ninetyDays };

// The texts under which the settings are stored; an unknown text means the default.
HomeGrouping homeGrouping(std::string_view raw);
HomeSort homeSort(std::string_view raw);
UnusedThreshold unusedThreshold(std::string_view raw);
QuarantineRetention quarantineRetention(std::string_view raw);

/// Days without use after which an application counts as unused.
int days(UnusedThreshold threshold);
/// Days that quarantined items are kept; 0 means forever.
int days(QuarantineRetention retention);

/// What becomes of the quarantine folder of a removal by itself; nullopt where it is kept.
std::optional<Message> describe(QuarantineRetention retention);

/// One setting as people name, read and change it.
struct PreferenceDescription {
    std::string_view name;                     ///< "quarantineRetention"
    std::string_view key;                      ///< "tidwen.quarantineRetention"
    std::string_view fallback;                 ///< stored text of the default; "false" or "true" for switches
    std::vector<std::string_view> values = {}; ///< allowed values, besides a language; empty: any text
    bool isSwitch = false;
};

/// The settings that `AppPreferences` keeps, in the order of the settings screen.
const std::vector<PreferenceDescription>& preferenceDescriptions();

/// The user's settings: read once, published, written when they change. Enumerated values keep their stored
/// text, so that a value of a newer version is not lost. Main thread only.
class AppPreferences {
  public:
    /// `languages`: the translations available, which `set` accepts besides "system".
    explicit AppPreferences(Defaults& defaults, std::vector<std::string> languages = {});

    Property<std::string> language;
    Property<std::string> appearance;
    Property<std::string> homeGrouping;
    Property<std::string> homeSort;
    Property<std::string> unusedThreshold;
    Property<std::string> quarantineRetention;
    Property<bool> catchTrashedApps;
    Property<bool> hasCompletedOnboarding;
    Property<bool> checksForUpdates;
    Property<std::string>
        updateFeed; ///< address of a feed to use instead of the built-in one; empty: built-in

    /// Reads everything again after another process changed the settings. Publishes only differences.
    void reload();

    /// By name, for the terminal. `set` refuses an unknown name or value.
    std::optional<std::string> get(std::string_view name) const;
    bool set(std::string_view name, std::string_view value);
    /// The allowed values of a setting; empty: any text.
    std::vector<std::string> values(const PreferenceDescription& description) const;

  private:
    struct Text {
        const PreferenceDescription& description;
        Property<std::string>& property;
    };
    struct Switch {
        const PreferenceDescription& description;
        Property<bool>& property;
    };
    std::vector<Text> texts();
    std::vector<Switch> switches();

    Defaults& defaults_;
    std::vector<std::string> languages_;
    bool reloading_ = false; ///< values just read need not be written
    std::vector<Subscription> writers_;
};

} // namespace tidwen
