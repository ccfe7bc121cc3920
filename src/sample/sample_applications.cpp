#include "sample/sample_contents.h"

#include <string_view>
#include <vector>

namespace tidwen::sample {

namespace {

constexpr std::string_view marlin = "MRLN7WRK42";
constexpr std::string_view brightwell = "BRTW3LLX90";
constexpr std::string_view harbor = "HRBR5VPN61";
constexpr std::string_view lumen = "LMN2LGHT77";

} // namespace

std::vector<Bundle> bundles() {
    return {
        // A well-behaved application with a login item; shares a group with its sister.
        {.path = "/Applications/Marlin Notes.app",
         .bundleID = "com.marlinworks.notes",
         .name = "Marlin Notes",
         .version = "4.2.1",
         .teamID = marlin,
         .groups = {"MRLN7WRK42.com.marlinworks.shared", "group.com.marlinworks.notes"},
         .kilobytes = 3380,
         .category = "productivity",
         .isUniversal = true},
        {.path = "/Applications/Marlin Notes.app/Contents/Library/LoginItems/Marlin Capture.app",
         .bundleID = "com.marlinworks.capture",
         .name = "Marlin Capture",
         .version = "4.2.1",
         .teamID = marlin,
         .isBackgroundAgent = true},
        {.path = "/Applications/Marlin Sketch.app",
         .bundleID = "com.marlinworks.sketch",
         .name = "Marlin Sketch",
         .version = "2.0",
         .teamID = marlin,
         .groups = {"MRLN7WRK42.com.marlinworks.shared"},
         .kilobytes = 2020,
         .category = "graphics-design",
         .hasBinaryInfo = true},

        // A suite from an installer package, with a daemon, a privileged tool and plug-ins.
        {.path = "/Applications/Brightwell Studio/Brightwell Studio.app",
         .bundleID = "com.brightwell.studio",
         .name = "Brightwell Studio",
         .version = "12.0.3",
         .teamID = brightwell,
         .kilobytes = 6110,
         .category = "music",
         .isUniversal = true},
        {.path = "/Applications/Brightwell Studio/Brightwell Studio.app/Contents/XPCServices/Render.xpc",
         .bundleID = "com.brightwell.render-service",
         .name = "Render",
         .version = "12.0.3",
         .teamID = brightwell},
        {.path = "/Applications/Brightwell Studio/Brightwell Tuner.app",
         .bundleID = "com.brightwell.tuner",
         .name = "Brightwell Tuner",
         .version = "3.1",
         .teamID = brightwell,
         .kilobytes = 580,
         .category = "music"},

        // Jobs inside the bundle, and a system extension that only the user can remove.
        {.path = "/Applications/Harbor VPN.app",
         .bundleID = "net.harborvpn.client",
         .name = "Harbor VPN",
         .version = "8.5",
         .teamID = harbor,
         .groups = {"HRBR5VPN61.net.harborvpn.client"},
         .kilobytes = 1690,
         .category = "utilities",
         .hasBinaryInfo = true},
        {.path = "/Applications/Harbor VPN.app/Contents/Library/SystemExtensions/"
                 "net.harborvpn.client.tunnel.systemextension",
         .bundleID = "net.harborvpn.client.tunnel",
         .name = "Harbor Tunnel",
         .version = "8.5",
         .teamID = harbor},

        // Sandboxed, so nearly all of its data is in containers.
        {.path = "/Applications/Pantry.app",
         .bundleID = "io.pantryapp.Pantry",
         .name = "Pantry",
         .version = "1.9",
         .teamID = "PNTRY00APP",
         .groups = {"group.io.pantryapp.recipes"},
         .kilobytes = 1170,
         .category = "lifestyle",
         .hasBinaryInfo = true},
        {.path = "/Applications/Pantry.app/Contents/PlugIns/Pantry Widget.appex",
         .bundleID = "io.pantryapp.Pantry.Widget",
         .name = "Pantry Widget",
         .version = "1.9",
         .teamID = "PNTRY00APP"},

        // Names unsuitable for matching: too short, too common.
        {.path = "/Applications/Kip.app",
         .bundleID = "com.littlefin.kip",
         .name = "Kip",
         .version = "0.9",
         .kilobytes = 270,
         .category = "developer-tools"},
        {.path = "/Applications/Notes.app",
         .bundleID = "org.paperplane.notes",
         .name = "Notes",
         .version = "1.4",
         .teamID = "PPRPLN1AAA",
         .kilobytes = 420,
         .category = "productivity"},

        // One identifier is a prefix of the other.
        {.path = "/Applications/Lumen.app",
         .bundleID = "com.lumenlight.lumen",
         .name = "Lumen",
         .version = "5.0",
         .teamID = lumen,
         .kilobytes = 1500,
         .category = "photography"},
        {.path = "/Applications/Lumen Beta.app",
         .bundleID = "com.lumenlight.lumen.beta",
         .name = "Lumen Beta",
         .version = "5.1b3",
         .teamID = lumen,
         .kilobytes = 1560,
         .category = "photography",
         .hasBinaryInfo = true},

        // Letters and marks that break careless programs. This name is composed, its leftovers' names are
        // decomposed.
        {.path = "/Applications/Caf\u00e9 Sync.app",
         .bundleID = "com.cafesync.mac",
         .name = "Caf\u00e9 Sync",
         .version = "3.3",
         .teamID = "CAFE5YNC00",
         .kilobytes = 490,
         .category = "utilities"},
        {.path = "/Applications/\u5199\u4f5c Studio.app",
         .bundleID = "cn.xiezuogongfang.studio",
         .name = "\u5199\u4f5c Studio",
         .version = "2.6",
         .kilobytes = 980,
         .category = "productivity"},
        {.path = "/Applications/Bob's \"Best\" Player.app",
         .bundleID = "com.bobsoft.best-player",
         .name = "Bob's \"Best\" Player",
         .version = "7",
         .kilobytes = 720,
         .category = "video"},

        // In the home's own Applications folder, in the menu bar, unsigned.
        {.path = "~/Applications/Quillpad.app",
         .bundleID = "com.quillpad.menubar",
         .name = "Quillpad",
         .version = "1.2",
         .kilobytes = 250,
         .category = "utilities",
         .isBackgroundAgent = true},

        // Moved to the Trash by hand; its leftovers remain.
        {.path = "~/.Trash/Gravel.app",
         .bundleID = "com.gravelworks.gravel",
         .name = "Gravel",
         .version = "6.1",
         .teamID = "GRVLWRKS99",
         .kilobytes = 580,
         .category = "games"},
    };
}

std::vector<Job> jobs() {
    return {
        {.plist = "~/Library/LaunchAgents/com.marlinworks.capture.plist",
         .label = "com.marlinworks.capture",
         .program = "/Applications/Marlin Notes.app/Contents/Library/LoginItems/Marlin Capture.app/"
                    "Contents/MacOS/Marlin Capture"},
        // Attributable by the program's path, not by the label.
        {.plist = "~/Library/LaunchAgents/local.quill.keepalive.plist",
         .label = "local.quill.keepalive",
         .program = "~/Library/Application Support/com.quillpad.menubar/keepalive",
         .hasBinaryForm = true},
        {.plist = "/Library/LaunchDaemons/com.brightwell.studio.licensed.plist",
         .label = "com.brightwell.studio.licensed",
         .program = "/Library/PrivilegedHelperTools/com.brightwell.studio.licensed"},
        {.plist = "/Library/LaunchAgents/com.brightwell.studio.tray.plist",
         .label = "com.brightwell.studio.tray",
         .program = "/Library/Application Support/Brightwell/Studio/tray",
         .hasBinaryForm = true},
        {.plist =
             "/Applications/Harbor VPN.app/Contents/Library/LaunchAgents/net.harborvpn.client.menu.plist",
         .label = "net.harborvpn.client.menu",
         .program = "Contents/MacOS/Harbor VPN"},
        {.plist =
             "/Applications/Harbor VPN.app/Contents/Library/LaunchDaemons/net.harborvpn.client.tunneld.plist",
         .label = "net.harborvpn.client.tunneld",
         .program = "Contents/MacOS/tunneld",
         .isSwitchedOff = true},
        // Jobs without an owner.
        {.plist = "~/Library/LaunchAgents/com.oldferry.timetable.sync.plist",
         .label = "com.oldferry.timetable.sync",
         .program = "/Applications/Old Ferry.app/Contents/MacOS/sync"},
        {.plist = "/Library/LaunchDaemons/com.oldferry.timetable.updated.plist",
         .label = "com.oldferry.timetable.updated",
         .program = "/Library/PrivilegedHelperTools/com.oldferry.timetable.updated"},
    };
}

std::vector<SystemExtension> systemExtensions() {
    return {{.bundleID = "net.harborvpn.client.tunnel",
             .teamID = harbor,
             .application = "/Applications/Harbor VPN.app"}};
}

} // namespace tidwen::sample
