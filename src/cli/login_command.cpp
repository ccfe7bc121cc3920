#include "cli/login_command.h"

#include "program/resources.h"

#include <filesystem>
#include <system_error>

namespace tidwen {

namespace fs = std::filesystem;

std::vector<std::string> loginCommand(const Arguments& arguments) {
    const auto program = programFile(arguments.program.c_str());
    std::vector<std::string> words = {program.empty() ? arguments.program : program.string()};
    if (arguments.volume) {
        std::error_code failure;
        const auto folder = fs::canonical(*arguments.volume, failure);
        words.insert(words.end(), {"--volume", (failure ? *arguments.volume : folder).string()});
    }
    if (arguments.home) words.insert(words.end(), {"--home", *arguments.home});
    words.insert(words.end(), {"watch", "--at-login"});
    return words;
}

} // namespace tidwen
