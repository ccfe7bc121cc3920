#pragma once

#include <compare>
#include <string>
#include <string_view>
#include <vector>

namespace tidwen {

/// A path as the Mac itself writes it ("/Library/Caches/com.example.app"), whatever disk the item is on.
///
/// The bytes are carried as they are: a name that is not valid UTF-8 stays what it was. Splitting follows
/// Foundation: a trailing slash and doubled slashes do not count, ".hidden" has no extension.
class Path {
  public:
    Path() : text_("/") {}
    explicit Path(std::string text);

    /// The text as given, less doubled and trailing slashes.
    const std::string& string() const { return text_; }

    bool isAbsolute() const { return !text_.empty() && text_.front() == '/'; }
    bool isRoot() const { return text_ == "/"; }

    /// "/", then one entry per component: "/a/b" gives {"/", "a", "b"}.
    std::vector<std::string> components() const;

    /// The last component; "/" for the root.
    std::string lastComponent() const;
    /// The last component without its extension.
    std::string stem() const;
    /// Without the point and with its letter case; empty when there is none.
    std::string extension() const;
    /// The extension in lower case, for comparisons.
    std::string lowercasedExtension() const;

    /// The root is its own parent.
    Path parent() const;

    /// Resolves "." and ".." by text alone; symbolic links are not looked at.
    Path standardized() const;

    /// True when any component is "..".
    bool hasTraversal() const;

    /// True when this is `ancestor` or lies below it. Whole components, letter case counts.
    bool isWithin(const Path& ancestor) const;

    /// The same with letter case ignored, as the safety rules compare.
    bool isWithinIgnoringCase(const Path& ancestor) const;

    /// Appends one component or several ("a/b").
    Path operator/(std::string_view component) const;

    friend bool operator==(const Path&, const Path&) = default;
    friend auto operator<=>(const Path& a, const Path& b) { return a.text_ <=> b.text_; }

  private:
    std::string text_;
};

} // namespace tidwen
