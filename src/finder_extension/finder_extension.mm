// The menu entry in the Finder. macOS loads the class that the extension's Info.plist names.

#include "macos/foundation_text.h"
#include "macos/group_container.h"
#include "macos/unified_log.h"
#include "posix/rooted_file_system.h"
#include "scan/applications/app_target.h"
#include "system/uninstall_service.h"

#import <FinderSync/FinderSync.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace tidwen;

/// The folder shared with the program; the sandbox lets this process write nowhere else.
std::unique_ptr<RootedFileSystem> openContainer() {
    const auto named = textOf([NSBundle.mainBundle objectForInfoDictionaryKey:@"CorvellaAppGroup"]);
    const auto place = groupContainer(named.empty() ? std::string(tidwenApplicationGroup) : named);
    if (!place) return nullptr;
    auto files = RootedFileSystem::open(place->string());
    return files ? std::move(*files) : nullptr;
}

std::vector<Path> selection() {
    std::vector<Path> paths;
    for (NSURL* each in [FIFinderSyncController.defaultController selectedItemURLs])
        paths.emplace_back(each.fileSystemRepresentation);
    return paths;
}

bool isApplication(const Path& item) {
    return item.lowercasedExtension() == "app";
}

} // namespace

@interface TidwenFinderExtension : FIFinderSync
@end

@implementation TidwenFinderExtension
- (instancetype)init {
    self = [super init];
    NSURL* const everywhere = [NSURL fileURLWithPath:@"/" isDirectory:YES];
    if (self) FIFinderSyncController.defaultController.directoryURLs = [NSSet setWithObject:everywhere];
    return self;
}

- (NSMenu*)menuForMenuKind:(FIMenuKind)kind {
    const auto chosen = selection();
    if (kind != FIMenuKindContextualMenuForItems || chosen.empty()) return nil;
    if (!std::all_of(chosen.begin(), chosen.end(), isApplication)) return nil;
    const auto files = openContainer();
    UnifiedLog log{std::string(tidwenBundleID)};
    if (!files || !RequestInbox(*files, Path("/"), log).isFinderGateOpen()) return nil;
    NSMenu* const menu = [[NSMenu alloc] initWithTitle:@""];
    [menu addItemWithTitle:[NSBundle.mainBundle localizedStringForKey:@"macos.service" value:nil table:nil]
                    action:@selector(uninstall:)
             keyEquivalent:@""];
    return menu;
}

- (void)uninstall:(id)__unused sender {
    const auto files = openContainer();
    if (!files) return;
    UnifiedLog log{std::string(tidwenBundleID)};
    RequestInbox inbox(*files, Path("/"), log);
    if (UninstallService(inbox, log).handOver(selection()) != UninstallService::Outcome::handedOver) return;
    // Contents/PlugIns/TidwenFinder.appex lies in the program, which drains the inbox when it comes to the
    // front.
    NSURL* place = NSBundle.mainBundle.bundleURL;
    for (int i = 0; i < 3; ++i)
        place = place.URLByDeletingLastPathComponent;
    [NSWorkspace.sharedWorkspace openURL:place];
}
@end
