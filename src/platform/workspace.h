#pragma once

#include "base/message.h"
#include "platform/file_system.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// The panes of System Settings that people are sent to.
struct SystemSettingsLauncher {
    enum class Pane { fullDiskAccess, loginItemsAndExtensions, privacyAndSecurity };

    /// The address by which macOS opens a pane.
    static constexpr std::string_view address(Pane pane) {
        switch (pane) {
        case Pane::fullDiskAccess:
            return "x-apple.systempreferences:com.apple.preference.security?Privacy_AllFiles";
        case Pane::loginItemsAndExtensions:
            return "x-apple.systempreferences:com.apple.LoginItems-Settings.extension";
        case Pane::privacyAndSecurity:
            break;
        }
        return "x-apple.systempreferences:com.apple.preference.security";
    }
};

/// What the desktop shows for this program, and how it shows applications. Calls block; any thread but the
/// main one.
class Workspace {
  public:
    /// Larger than any icon that people draw, in bytes.
    static constexpr std::size_t maxIconBytes = 16u << 20;

    /// The message says why nothing was shown.
    using Result = tl::expected<void, Message>;

    virtual ~Workspace() = default;
    /// Shows an item, chosen, in its folder. Opens nothing, starts nothing and follows no link.
    virtual Result reveal(const Path& item) = 0;
    virtual Result openSettingsPane(SystemSettingsLauncher::Pane pane) = 0;
    /// The bytes of the bundle's icon file, in Apple's "icns" form, of at most `maxIconBytes`. `missing` when
    /// the bundle names none that is there; `throughLink` when it lies outside the bundle, `notSupported`
    /// when it is something else.
    virtual FileResult<std::string> iconOf(const Path& bundle) const = 0;
};

} // namespace tidwen
