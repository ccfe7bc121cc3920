#include "sample/sample_contents.h"

#include <vector>

namespace tidwen::sample {

std::vector<Item> userItems() {
    return {
        // Marlin Notes
        {"~/Library/Application Support/Marlin Notes/Library.marlindb", 2470},
        {"~/Library/Application Support/Marlin Notes/Attachments/0001.bin", 780},
        {"~/Library/Application Support/Marlin Notes/Attachments/0002.bin", 420},
        {"~/Library/Application Support/com.marlinworks.capture/queue.sqlite", 90},
        {"~/Library/Preferences/com.marlinworks.notes.plist"},
        {"~/Library/Preferences/com.marlinworks.capture.plist"},
        {"~/Library/Preferences/ByHost/com.marlinworks.notes.8F0C2A71-5B0E-5C1C-9C55-0D6E0A7F2B11.plist"},
        {"~/Library/Caches/com.marlinworks.notes/Cache.db", 1760},
        {"~/Library/Caches/com.marlinworks.notes/fsCachedData/preview", 270},
        {"~/Library/HTTPStorages/com.marlinworks.notes/httpstorages.sqlite", 36},
        {"~/Library/HTTPStorages/com.marlinworks.notes.binarycookies", 2},
        {"~/Library/WebKit/com.marlinworks.notes/WebsiteData/salt", 1},
        {"~/Library/Saved Application State/com.marlinworks.notes.savedState/windows.plist"},
        {"~/Library/Saved Application State/com.marlinworks.notes.savedState/data.data", 60},
        {"~/Library/Logs/Marlin Notes/marlin.log", 180},
        {"~/Library/Logs/DiagnosticReports/Marlin Notes_2025-03-02-101500_sea.ips", 40},
        {"~/Library/Application Support/CrashReporter/"
         "Marlin Notes_7D3C0B52-1C6B-5B0C-8C0D-4B8E6B3B7E11.plist"},
        {"~/Library/Application Support/com.apple.sharedfilelist/"
         "com.apple.LSSharedFileList.ApplicationRecentDocuments/com.marlinworks.notes.sfl3",
         3},
        {"~/Library/Group Containers/group.com.marlinworks.notes/Inbox/clip.bin", 220},
        {"~/Library/Group Containers/MRLN7WRK42.com.marlinworks.shared/palette.bin", 150},
        {"~/Library/Application Scripts/com.marlinworks.notes/"},
        {"/private/var/folders/7k/q2w8xw0d5f9_1n4c0000gn/C/com.marlinworks.notes/thumbnails.data", 210},
        {"/private/var/folders/7k/q2w8xw0d5f9_1n4c0000gn/T/com.marlinworks.notes/draft.tmp", 12},

        // Marlin Sketch stores its data in the vendor's folder
        {"~/Library/Application Support/Marlinworks/Marlin Sketch/brushes.pack", 580},
        {"~/Library/Application Support/Marlinworks/com.marlinworks.sketch/state.bin", 25},
        {"~/Library/Preferences/com.marlinworks.sketch.plist"},
        {"~/Library/Caches/com.marlinworks.sketch/tiles.cache", 720},

        // Brightwell Studio and its tuner
        {"~/Library/Application Support/Brightwell/Studio/presets.bank", 460},
        {"~/Library/Application Support/Brightwell/Brightwell Studio/session.bak", 330},
        {"~/Library/Preferences/com.brightwell.studio.plist"},
        {"~/Library/Preferences/com.brightwell.tuner.plist"},
        {"~/Library/Caches/com.brightwell.studio/waveforms.cache", 2140},
        {"~/Library/Caches/com.brightwell.render-service/frames.cache", 420},
        {"~/Library/Caches/com.brightwell.tuner/a440.cache", 48},
        {"~/Library/Audio/Plug-Ins/Components/Brightwell Studio.component/Contents/Resources/synth.bin", 230},
        {"~/Library/Audio/Plug-Ins/VST/Brightwell Studio Helper.vst/Contents/Resources/bridge.bin", 120},
        {"~/Library/Logs/Brightwell Studio/engine.log", 75},

        // Harbor VPN
        {"~/Library/Application Support/Harbor VPN/servers.json", 210},
        {"~/Library/Preferences/net.harborvpn.client.plist"},
        {"~/Library/Caches/net.harborvpn.client/map.tiles", 570},
        {"~/Library/Group Containers/HRBR5VPN61.net.harborvpn.client/tunnel.conf", 4},
        {"~/Library/Logs/DiagnosticReports/net.harborvpn.client_2025-01-19-220110_sea.ips", 35},

        // Pantry
        {"~/Library/Containers/io.pantryapp.Pantry/Data/Documents/recipes.sqlite", 1040},
        {"~/Library/Containers/io.pantryapp.Pantry/Data/Library/Preferences/io.pantryapp.Pantry.plist"},
        {"~/Library/Containers/io.pantryapp.Pantry/Data/Library/Saved Application State/"
         "io.pantryapp.Pantry.savedState/windows.plist"},
        {"~/Library/Containers/5E0B7C1A-4D2F-5B8E-9A63-2C1D0E9F8B7A/Data/tmp/widget.cache", 45},
        {"~/Library/Daemon Containers/C3A9D2E4-7B61-5F08-8D1E-6A5B4C3D2E1F/Data/sync.db", 80},
        {"~/Library/Group Containers/group.io.pantryapp.recipes/shared.sqlite", 260},
        {"~/Library/Application Scripts/io.pantryapp.Pantry/"},
        {"~/Library/Application Scripts/io.pantryapp.Pantry.Widget/"},

        // Kip and Notes: only items with the identifier can be attributed
        {"~/Library/Application Support/com.littlefin.kip/kip.db", 130},
        {"~/Library/Application Support/Kip/holiday plans.bin", 20},
        {"~/Library/Preferences/com.littlefin.kip.plist"},
        {"~/Library/Preferences/org.paperplane.notes.plist"},
        {"~/Library/Caches/org.paperplane.notes/pages.cache", 200},
        {"~/Library/Application Support/Notes/somebody's notes.bin", 15},

        // Lumen and Lumen Beta
        {"~/Library/Application Support/Lumen/catalogue.lumendb", 1240},
        {"~/Library/Application Support/Lumen Beta/catalogue.lumendb", 520},
        {"~/Library/Preferences/com.lumenlight.lumen.plist"},
        {"~/Library/Preferences/com.lumenlight.lumen.beta.plist"},
        {"~/Library/Caches/com.lumenlight.lumen/previews.cache", 1360},
        {"~/Library/Caches/com.lumenlight.lumen.beta/previews.cache", 490},

        // Café Sync, its names decomposed as older file systems store them
        {"~/Library/Application Support/Cafe\u0301 Sync/index.db", 350},
        {"~/Library/Logs/Cafe\u0301 Sync/sync.log", 66},
        {"~/Library/Preferences/com.cafesync.mac.plist"},
        {"~/Library/Cookies/com.cafesync.mac.binarycookies", 2},

        {"~/Library/Application Support/\u5199\u4f5c Studio/\u8349\u7a3f.bin", 310},
        {"~/Library/Preferences/cn.xiezuogongfang.studio.plist"},
        {"~/Library/Autosave Information/cn.xiezuogongfang.studio/\u672a\u547d\u540d.bin", 33},

        {"~/Library/Application Support/Bob's \"Best\" Player/queue.bin", 95},
        {"~/Library/Preferences/com.bobsoft.best-player.plist"},
        {"~/Library/Caches/com.bobsoft.best-player/covers.cache", 910},

        {"~/Library/Application Support/com.quillpad.menubar/keepalive", 40},
        {"~/Library/Application Support/Quillpad/scratch.bin", 17},
        {"~/Library/Preferences/com.quillpad.menubar.plist"},
        {"~/Library/Services/Quillpad.service/Contents/Resources/menu.bin", 8},

        {"~/Library/Application Support/Gravel/highscores.bin", 9},
        {"~/Library/Caches/com.gravelworks.gravel/levels.cache", 810},
        {"~/Library/Preferences/com.gravelworks.gravel.plist"},

        // Leftovers of applications that are gone
        {"~/Library/Application Support/Old Ferry/timetable.db", 400},
        {"~/Library/Preferences/com.oldferry.timetable.plist"},
        {"~/Library/Caches/com.oldferry.timetable/map.cache", 1140},
        {"~/Library/Containers/com.tinylantern.Lantern/Data/Documents/wicks.bin", 200},
        {"~/Library/HTTPStorages/com.tinylantern.Lantern/httpstorages.sqlite", 28},

        // Alice's own files, which nothing may touch
        {"~/Documents/Novel.txt", 120},
        {"~/Documents/Marlin Notes/How I use it.txt", 3},
        {"~/Desktop/Shopping list.txt", 1},
        {"~/Pictures/Harbour.bin", 580},
        {"~/Downloads/Marlin Notes 4.2.1.dmg", 1560},
        {"~/Downloads/BrightwellStudio-12.pkg", 1100},
        {"~/Downloads/Old Ferry Setup.dmg", 570},
        {"~/Downloads/Tickets.txt", 2},
        {"~/Library/Preferences/.GlobalPreferences.plist"},
    };
}

std::vector<Item> systemItems() {
    return {
        {"/Library/PrivilegedHelperTools/com.brightwell.studio.licensed", 160},
        {"/Library/Application Support/Brightwell/Studio/tray", 70},
        {"/Library/Application Support/Brightwell/Brightwell Studio/samples.pack", 1880},
        {"/Library/Preferences/com.brightwell.studio.plist"},
        {"/Library/Caches/com.brightwell.studio/licence.cache", 12},
        {"/Library/Audio/Plug-Ins/VST3/Brightwell Studio.vst3/Contents/Resources/synth.bin", 540},
        {"/Library/Logs/com.brightwell.studio/licensed.log", 55},
        {"/Library/Logs/DiagnosticReports/com.brightwell.studio.licensed_2025-02-11-073000_sea.ips", 30},
        {"/Users/Shared/Brightwell Studio/projects.bin", 290},
        {"/usr/local/bin/brightwell-bounce", 90},
        {"/Library/Preferences/net.harborvpn.client.plist"},
        {"/Library/Application Support/Harbor VPN/keys.bin", 6},
        {"/Library/PrivilegedHelperTools/com.oldferry.timetable.updated", 140},
        {"/Library/Application Support/", 0},
        {"/Library/LaunchAgents/", 0},
        {"/private/tmp/", 0},
        {"/private/etc/", 0},
        {"/Users/Shared/.localized", 0},
        {"/private/var/folders/7k/q2w8xw0d5f9_1n4c0000gn/0/", 0},
        {"/private/var/folders/7k/q2w8xw0d5f9_1n4c0000gn/C/", 0},
        {"/private/var/folders/7k/q2w8xw0d5f9_1n4c0000gn/T/", 0},
    };
}

std::vector<Link> links() {
    return {
        {"/var", "private/var"},
        {"/tmp", "private/tmp"},
        {"/etc", "private/etc"},
        // Sandboxed applications keep their window state in the container and link to it.
        {"~/Library/Saved Application State/io.pantryapp.Pantry.savedState",
         "../Containers/io.pantryapp.Pantry/Data/Library/Saved Application State/"
         "io.pantryapp.Pantry.savedState"},
    };
}

std::vector<Container> containers() {
    return {
        {"~/Library/Containers/io.pantryapp.Pantry", "io.pantryapp.Pantry"},
        {"~/Library/Containers/5E0B7C1A-4D2F-5B8E-9A63-2C1D0E9F8B7A", "io.pantryapp.Pantry.Widget"},
        {"~/Library/Daemon Containers/C3A9D2E4-7B61-5F08-8D1E-6A5B4C3D2E1F", "io.pantryapp.Pantry.Sync"},
        {"~/Library/Containers/com.tinylantern.Lantern", "com.tinylantern.Lantern"},
        {"~/Library/Group Containers/group.io.pantryapp.recipes", "group.io.pantryapp.recipes"},
        {"~/Library/Group Containers/group.com.marlinworks.notes", "group.com.marlinworks.notes"},
        {"~/Library/Group Containers/MRLN7WRK42.com.marlinworks.shared", "MRLN7WRK42.com.marlinworks.shared"},
        {"~/Library/Group Containers/HRBR5VPN61.net.harborvpn.client", "HRBR5VPN61.net.harborvpn.client"},
    };
}

std::vector<Package> packages() {
    return {
        {.packageID = "com.brightwell.studio.pkg",
         .version = "12.0.3",
         .prefix = "/",
         .files = {"Applications/Brightwell Studio/Brightwell Studio.app/",
                   "Library/Audio/Plug-Ins/VST3/Brightwell Studio.vst3/",
                   "Library/LaunchDaemons/com.brightwell.studio.licensed.plist",
                   "Library/PrivilegedHelperTools/com.brightwell.studio.licensed",
                   "Library/Application Support/Brightwell/Studio/tray", "usr/local/bin/brightwell-bounce",
                   "Library/Application Support/Brightwell/removed by an update.bin"}},
        {.packageID = "com.oldferry.timetable",
         .version = "2.2",
         .prefix = "Applications",
         .files = {"Old Ferry.app/"}},
    };
}

std::vector<Grant> grants() {
    constexpr bool system = true;
    return {
        {.service = "Calendar", .client = "com.marlinworks.notes"},
        {.service = "SystemPolicyDocumentsFolder", .client = "com.marlinworks.notes"},
        {.service = "Photos", .client = "com.marlinworks.notes", .authValue = 3},
        {.service = "Camera", .client = "com.marlinworks.sketch", .authValue = 0},
        {.service = "Microphone", .client = "com.brightwell.studio"},
        {.service = "Reminders", .client = "io.pantryapp.Pantry", .authValue = 1},
        {.service = "Photos", .client = "com.lumenlight.lumen"},
        {.service = "Photos", .client = "com.lumenlight.lumen.beta"},
        {.service = "MediaLibrary", .client = "com.bobsoft.best-player"},
        {.service = "SystemPolicyDownloadsFolder", .client = "com.oldferry.timetable"},
        {.isSystemScope = system, .service = "Accessibility", .client = "com.marlinworks.notes"},
        {.isSystemScope = system, .service = "ScreenCapture", .client = "com.marlinworks.notes"},
        {.isSystemScope = system, .service = "SystemPolicyAllFiles", .client = "net.harborvpn.client"},
        // The same permission by identifier and by path, as older releases stored it.
        {.isSystemScope = system,
         .service = "SystemPolicyAllFiles",
         .client = "/Applications/Harbor VPN.app",
         .isPathClient = true},
        {.isSystemScope = system,
         .service = "Accessibility",
         .client = "/Applications/Bob's \"Best\" Player.app",
         .isPathClient = true},
        {.isSystemScope = system, .service = "ListenEvent", .client = "com.quillpad.menubar", .authValue = 0},
    };
}

} // namespace tidwen::sample
