#pragma once

#include "base/log.h"
#include "platform/login_item.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <tl/expected.hpp>

namespace tidwen {

/// A login item that is a file in a folder that the system reads at login; it exists while the item is
/// enabled. Errors are logged with the path.
class LoginFile : public LoginItem {
  public:
    LoginFile(std::filesystem::path file, Log& log) : file_(std::move(file)), log_(log) {}

    /// A file that is marked as disabled counts as absent.
    bool isEnabled() const override;
    /// Writes the file again, or removes it. A link of that name is replaced or removed, never followed.
    bool setEnabled(bool enabled) override;

  protected:
    const std::filesystem::path& file() const { return file_; }

  private:
    /// The content of the file, or why it cannot be expressed.
    virtual tl::expected<std::string, std::string> text() const = 0;
    virtual bool isOn(const std::string& text) const = 0;
    bool failed(std::string_view what, std::string_view reason) const;

    std::filesystem::path file_;
    Log& log_;
};

} // namespace tidwen
