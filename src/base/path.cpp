#include "base/path.h"

#include "base/text.h"

#include <algorithm>

namespace tidwen {

namespace {

std::string withoutSpareSlashes(std::string text) {
    if (text.find("//") != text.npos)
        text.erase(std::unique(text.begin(), text.end(), [](char a, char b) { return a == '/' && b == '/'; }),
                   text.end());
    if (text.size() > 1 && text.back() == '/') text.pop_back();
    return text;
}

/// Position of the extension's dot; `npos` when there is none. A leading dot makes a hidden file, and a name
/// that ends with a dot has no extension either.
std::size_t extensionPoint(std::string_view name) {
    const auto point = name.rfind('.');
    if (point == 0 || point == name.npos || point + 1 == name.size()) return name.npos;
    return point;
}

bool textIsWithin(std::string_view text, std::string_view ancestor) {
    if (!text.starts_with(ancestor)) return false;
    return text.size() == ancestor.size() || ancestor.ends_with('/') || text[ancestor.size()] == '/';
}

} // namespace

Path::Path(std::string text) : text_(withoutSpareSlashes(std::move(text))) {}

std::vector<std::string> Path::components() const {
    std::vector<std::string> parts;
    std::size_t start = 0;
    if (isAbsolute()) {
        parts.emplace_back("/");
        start = 1;
    }
    while (start < text_.size()) {
        const auto end = std::min(text_.find('/', start), text_.size());
        parts.push_back(text_.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string Path::lastComponent() const {
    if (isRoot()) return text_;
    return text_.substr(text_.rfind('/') + 1);
}

std::string Path::stem() const {
    const auto name = lastComponent();
    return name.substr(0, extensionPoint(name));
}

std::string Path::extension() const {
    const auto name = lastComponent();
    const auto point = extensionPoint(name);
    return point == name.npos ? std::string() : name.substr(point + 1);
}

std::string Path::lowercasedExtension() const {
    return lowercased(extension());
}

Path Path::parent() const {
    const auto slash = text_.rfind('/');
    if (slash == text_.npos) return Path(std::string());
    return Path(text_.substr(0, std::max<std::size_t>(slash, 1)));
}

Path Path::standardized() const {
    // Without a component that begins with a dot there is nothing to resolve.
    if (!text_.starts_with('.') && text_.find("/.") == text_.npos) return *this;
    std::vector<std::string> kept;
    for (auto& part : components()) {
        if (part == ".") continue;
        const bool canGoUp = !kept.empty() && kept.back() != "/" && kept.back() != "..";
        if (part == ".." && canGoUp) {
            kept.pop_back();
        } else if (part != ".." || !isAbsolute()) { // ".." of the root is the root
            kept.push_back(std::move(part));
        }
    }
    std::string text;
    for (const auto& part : kept)
        text.append(text.empty() || text == "/" ? "" : "/").append(part);
    return Path(std::move(text));
}

bool Path::hasTraversal() const {
    const auto parts = components();
    return std::find(parts.begin(), parts.end(), "..") != parts.end();
}

bool Path::isWithin(const Path& ancestor) const {
    return textIsWithin(text_, ancestor.text_);
}

bool Path::isWithinIgnoringCase(const Path& ancestor) const {
    // Mac file systems treat composed and decomposed names as equal, so both are normalized.
    return textIsWithin(folded(text_), folded(ancestor.text_));
}

Path Path::operator/(std::string_view component) const {
    if (component.empty()) return *this;
    if (text_.empty()) return Path(std::string(component));
    return Path(text_ + "/" + std::string(component));
}

} // namespace tidwen
