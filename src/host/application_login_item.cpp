#include "host/application_login_item.h"

#include <chrono>
#include <string_view>
#include <system_error>

namespace tidwen {

namespace {

constexpr const char* option = "--login-item";
constexpr std::chrono::seconds patience{20};

} // namespace

bool ApplicationLoginItem::holds(const char* word) const {
    const auto answer = processes_.run(program_.string(), {option, word}, patience);
    return answer && answer->exitCode == 0;
}

bool ApplicationLoginItem::isEnabled() const {
    return holds("is-on");
}

bool ApplicationLoginItem::setEnabled(bool enabled) {
    return holds(enabled ? "on" : "off");
}

std::optional<int> answerAboutLoginItem(LoginItem& item, int count, const char* const* words) {
    if (count != 3 || std::string_view(words[1]) != option) return std::nullopt;
    const std::string_view word = words[2];
    if (word == "is-on") return item.isEnabled() ? 0 : 1;
    if (word == "on" || word == "off") return item.setEnabled(word == "on") ? 0 : 1;
    return 2;
}

std::optional<std::filesystem::path> mainProgramBeside(const std::filesystem::path& helper) {
    const auto contents = helper.parent_path().parent_path();
    auto program = contents / "MacOS/Tidwen";
    std::error_code failure;
    if (helper.parent_path().filename() != "Helpers" || contents.filename() != "Contents"
        || !std::filesystem::is_regular_file(program, failure))
        return std::nullopt;
    return program;
}

} // namespace tidwen
