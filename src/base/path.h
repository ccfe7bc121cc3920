#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A path as the Mac itself writes it ("/Library/Caches/com.example.app"), independent of where its volume is
/// mounted.
///
/// Keeps the bytes as they are, including names that are not valid UTF-8. Splits as Foundation does: trailing
/// and repeated slashes are ignored, ".hidden" has no extension.
class Path {
  public:
    Path() : text_("/") {}
    explicit Path(std::string text);

    /// The text as given, without repeated and trailing slashes.
    const std::string& string() const { return text_; }

    bool isAbsolute() const { return !text_.empty() && text_.front() == '/'; }
    bool isRoot() const { return text_ == "/"; }

    /// "/", then one entry per component: "/a/b" gives {"/", "a", "b"}.
    std::vector<std::string> components() const;

    /// The last component; "/" for the root.
    std::string lastComponent() const;
    /// The last component without its extension.
    std::string stem() const;
    /// Without the dot, letter case kept; empty when there is none.
    std::string extension() const;
    /// The extension in lower case, for comparison.
    std::string lowercasedExtension() const;

    /// The root is its own parent.
    Path parent() const;

    /// Resolves "." and ".." lexically; symbolic links are not followed.
    Path standardized() const;

    /// True when any component is "..".
    bool hasTraversal() const;

    /// True when this is `ancestor` or lies below it. Compares whole components, case-sensitively.
    bool isWithin(const Path& ancestor) const;

    /// The same without regard to letter case, as the safety rules compare.
    bool isWithinIgnoringCase(const Path& ancestor) const;

    /// Appends one or more components ("a/b").
    Path operator/(std::string_view component) const;

    friend bool operator==(const Path&, const Path&) = default;
    friend auto operator<=>(const Path& a, const Path& b) { return a.text_ <=> b.text_; }

  private:
    std::string text_;
};

} // namespace tidwen
