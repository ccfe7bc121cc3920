#pragma once

#include "platform/login_item.h"
#include "platform/process_runner.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tidwen {

/// The application's login item as another program of the bundle sees it. macOS tells only the application
/// itself about it, so its main program is asked: started with "--login-item" and a word, it answers and
/// ends.
class ApplicationLoginItem : public LoginItem {
  public:
    /// `program`: the main program of the bundle. Where it cannot be run the item counts as off.
    ApplicationLoginItem(ProcessRunner& processes, std::filesystem::path program)
        : processes_(processes), program_(std::move(program)) {}

    bool isEnabled() const override;
    bool setEnabled(bool enabled) override;

  private:
    bool holds(const char* word) const;

    ProcessRunner& processes_;
    std::filesystem::path program_;
};

/// What the main program ends with when it was asked about its login item; nullopt for any other start.
/// `words` are those of the command line, with the program's own.
std::optional<int> answerAboutLoginItem(LoginItem& item, int count, const char* const* words);

/// The main program of the bundle in which `helper` lies ("Tidwen.app/Contents/Helpers/tidwen"); nullopt
/// outside of one.
std::optional<std::filesystem::path> mainProgramBeside(const std::filesystem::path& helper);

} // namespace tidwen
