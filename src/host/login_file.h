#pragma once

#include "base/log.h"
#include "platform/login_item.h"

#include <filesystem>
#include <string>
#include <tl/expected.hpp>

namespace tidwen {

/// A login item that is a file in a folder which the system reads at login: there while it is on. What goes
/// wrong is logged with the path.
class LoginFile : public LoginItem {
  public:
    LoginFile(std::filesystem::path file, Log& log) : file_(std::move(file)), log_(log) {}

    /// A file that says of itself that it is switched off counts as none.
    bool isEnabled() const override;
    /// Writes the file anew, or removes it. A link of its name is replaced or removed, never followed.
    bool setEnabled(bool enabled) override;

  private:
    /// What the system is to read, or why that cannot be written down.
    virtual tl::expected<std::string, std::string> text() const = 0;
    virtual bool isOn(const std::string& text) const = 0;
    bool failed(std::string_view what, std::string_view reason) const;

    std::filesystem::path file_;
    Log& log_;
};

} // namespace tidwen
