#include "scan/applications/bundle_names.h"

#include "base/path.h"

#include <algorithm>
#include <array>
#include <string>

namespace tidwen {

bool isBundleName(std::string_view name) {
    constexpr std::array<std::string_view, 31> extensions = {"app",
                                                             "appex",
                                                             "bundle",
                                                             "plugin",
                                                             "component",
                                                             "framework",
                                                             "fs",
                                                             "kext",
                                                             "dext",
                                                             "xpc",
                                                             "prefpane",
                                                             "qlgenerator",
                                                             "mdimporter",
                                                             "saver",
                                                             "service",
                                                             "osax",
                                                             "vst",
                                                             "vst3",
                                                             "aaxplugin",
                                                             "clap",
                                                             "driver",
                                                             "action",
                                                             "colorpicker",
                                                             "wdgt",
                                                             "workflow",
                                                             "webplugin",
                                                             "systemextension",
                                                             "networkextension",
                                                             "mailbundle",
                                                             "ideplugin",
                                                             "fxplug"};
    const auto extension = Path(std::string(name)).lowercasedExtension();
    return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

} // namespace tidwen
