#pragma once

#include "base/message.h"
#include "base/path.h"
#include "platform/file_system.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// The panes of System Settings that the program refers users to.
struct SystemSettingsLauncher {
    enum class Pane { fullDiskAccess, loginItemsAndExtensions, privacyAndSecurity };

    /// The URL with which macOS opens a pane.
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

/// By which macOS opens the list of the applications that may change others; no button leads there.
inline constexpr std::string_view appManagementAddress =
    "x-apple.systempreferences:com.apple.preference.security?Privacy_AppBundles";

/// What the desktop does for this program: showing items, and icons of applications. Calls block; not for the
/// main thread.
class Workspace {
  public:
    /// In bytes; larger than any real icon.
    static constexpr std::size_t maxIconBytes = 16u << 20;

    /// The message says why the item could not be shown.
    using Result = tl::expected<void, Message>;

    virtual ~Workspace() = default;
    /// Selects an item in its folder. Opens and starts nothing and follows no link.
    virtual Result reveal(const Path& item) = 0;
    virtual Result openSettingsPane(SystemSettingsLauncher::Pane pane) = 0;
    /// The content of the bundle's icon file, in Apple's "icns" form, of at most `maxIconBytes`. `missing`
    /// when the bundle names none that exists; `throughLink` when it lies outside the bundle, `notSupported`
    /// when it has another form.
    virtual FileResult<std::string> iconOf(const Path& bundle) const = 0;
};

} // namespace tidwen
