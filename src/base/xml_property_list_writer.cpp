#include "base/property_list.h"

#include "base/base64.h"
#include "base/text.h"
#include "base/timestamp.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <fmt/format.h>
#include <string>
#include <string_view>
#include <variant>

namespace tidwen {

namespace {

constexpr std::string_view opening = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                     "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                     "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                     "<plist version=\"1.0\">\n";

/// Whether `rest` starts with U+FFFE or U+FFFF, which XML forbids like control characters.
bool isNonCharacter(std::string_view rest) {
    return rest.starts_with("\xEF\xBF\xBE") || rest.starts_with("\xEF\xBF\xBF");
}

std::string escaped(std::string_view text) {
    const auto valid = validUtf8(text);
    std::string out;
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const char c = valid[i];
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (c == '\r') {
            out += "&#13;"; // unescaped, it would be read as a line feed
        } else if (isNonCharacter(std::string_view(valid).substr(i))) {
            out += "\xEF\xBF\xBD";
            i += 2;
        } else if (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') {
            out += "\xEF\xBF\xBD";
        } else {
            out += c;
        }
    }
    return out;
}

std::string realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-infinity" : "+infinity";
    return fmt::format("{}", value);
}

/// The text form has a four-digit year and no fractions.
std::string dateText(PropertyListDate date) {
    constexpr std::chrono::sys_days epoch = std::chrono::year(2001) / 1 / 1;
    constexpr std::chrono::sys_seconds first = std::chrono::sys_days(std::chrono::year(0) / 1 / 1);
    constexpr std::chrono::sys_seconds last =
        std::chrono::sys_days(std::chrono::year(10000) / 1 / 1) - std::chrono::seconds(1);
    if (std::isnan(date.secondsSince2001)) return iso8601(epoch);
    const auto seconds =
        std::clamp(std::floor(date.secondsSince2001), static_cast<double>((first - epoch).count()),
                   static_cast<double>((last - epoch).count()));
    return iso8601(epoch + std::chrono::seconds(static_cast<std::int64_t>(seconds)));
}

class XmlWriter {
  public:
    std::string write(const PropertyListValue& value) {
        out_ = opening;
        add(value);
        out_ += "</plist>\n";
        return std::move(out_);
    }

  private:
    void add(const PropertyListValue& value) {
        std::visit([this](const auto& held) { addHeld(held); }, value.storage());
    }

    void line(std::string_view text) { out_.append(indent_, '\t').append(text).append("\n"); }
    void element(std::string_view name, std::string_view text) {
        line(fmt::format("<{0}>{1}</{0}>", name, text));
    }

    void addHeld(bool value) { line(value ? "<true/>" : "<false/>"); }
    void addHeld(std::int64_t value) { element("integer", fmt::to_string(value)); }
    void addHeld(std::uint64_t value) { element("integer", fmt::to_string(value)); }
    void addHeld(double value) { element("real", realText(value)); }
    void addHeld(const std::string& text) { element("string", escaped(text)); }
    void addHeld(PropertyListDate date) { element("date", dateText(date)); }
    void addHeld(PropertyListUid uid) {
        addHeld(PropertyListDictionary{{"CF$UID", PropertyListValue(uid.value)}});
    }

    void addHeld(const PropertyListData& data) {
        const auto text = encodeBase64(data.bytes);
        const std::size_t width =
            76 - std::min<std::size_t>(8 * indent_, 64); // a tab counts as eight columns
        line("<data>");
        for (std::size_t at = 0; at < text.size(); at += width)
            line(std::string_view(text).substr(at, width));
        line("</data>");
    }

    void addHeld(const PropertyListArray& array) {
        if (array.empty()) return line("<array/>");
        line("<array>");
        ++indent_;
        for (const auto& value : array)
            add(value);
        --indent_;
        line("</array>");
    }

    void addHeld(const PropertyListDictionary& dictionary) {
        if (dictionary.empty()) return line("<dict/>");
        line("<dict>");
        ++indent_;
        for (const auto& [key, value] : dictionary) {
            element("key", escaped(key));
            add(value);
        }
        --indent_;
        line("</dict>");
    }

    std::string out_;
    std::size_t indent_ = 0;
};

} // namespace

std::string writeXmlPropertyList(const PropertyListValue& value) {
    return XmlWriter().write(value);
}

} // namespace tidwen
