#pragma once

#include "base/texts.h"

#include <QStringList>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// What the words of the command line ask the window to open.
struct LaunchOptions {
    std::optional<std::string> volume; ///< a folder laid out like a Mac's disk
    std::optional<std::string> home;   ///< on that volume
    bool isSample = false;
};

/// Ends the program before a window opens.
struct LaunchAnswer {
    int status;       ///< 0: the help or the version, for standard output; 2: wrong usage, or no texts
    std::string text; ///< whole lines
};

/// `words` begin with the program and hold none of the toolkit's own options.
tl::expected<LaunchOptions, LaunchAnswer> readLaunchOptions(const QStringList& words, const Texts& texts);

/// The help or the version, if asked for, or that there are no texts: needs no display, so it is looked for
/// before the toolkit starts.
std::optional<LaunchAnswer> answerBeforeLaunch(const QStringList& words, const Texts& texts,
                                               const std::string& version);

} // namespace tidwen
