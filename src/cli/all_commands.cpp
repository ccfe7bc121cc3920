#include "cli/command.h"

#include <vector>

namespace tidwen {

Command sampleCommand();
Command appsCommand();
Command scanCommand();
Command removeCommand();
Command resetCommand();
Command historyCommand();
Command undoCommand();
Command recoverCommand();
Command purgeCommand();
Command orphansCommand();
Command installersCommand();
Command startupCommand();
Command permissionsCommand();
Command protectCommand();
Command tagsCommand();
Command settingsCommand();
Command watchCommand();
Command requestsCommand();
Command updatesCommand();
Command completionsCommand();
Command completeCommand();

std::vector<Command> allCommands() {
    return {
        sampleCommand(),     appsCommand(),    scanCommand(),        removeCommand(),  resetCommand(),
        historyCommand(),    undoCommand(),    recoverCommand(),     purgeCommand(),   orphansCommand(),
        installersCommand(), startupCommand(), permissionsCommand(), protectCommand(), tagsCommand(),
        settingsCommand(),   watchCommand(),   requestsCommand(),    updatesCommand(), completionsCommand(),
        completeCommand(),
    };
}

} // namespace tidwen
