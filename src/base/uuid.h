#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tidwen {

/// A random (version 4) identifier in its text form, capital letters: "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
class Uuid {
  public:
    /// From the system's random source; safe to call from any thread.
    static Uuid random();
    /// Nothing unless the text has the form above; letter case is not looked at.
    static std::optional<Uuid> parse(std::string_view text);

    const std::string& string() const { return text_; }

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid& a, const Uuid& b) { return a.text_ <=> b.text_; }

  private:
    explicit Uuid(std::string text) : text_(std::move(text)) {}
    std::string text_;
};

} // namespace tidwen
