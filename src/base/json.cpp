#include "base/json.h"

#include "base/json_reader.h"
#include "base/parallel.h"
#include "base/text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <variant>

namespace tidwen {

using nlohmann::json;

namespace {

void writeString(std::string& out, std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    out += '"';
    const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\' && c != '/'; };
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto start = at; // most text needs no escape
        while (at < text.size() && isPlain(text[at]))
            ++at;
        out.append(text, start, at - start);
        if (at == text.size()) break;
        const char c = text[at];
        if (!isAscii(c)) {
            const auto* end = std::find_if(text.begin() + at, text.end(), isAscii);
            const auto length = static_cast<std::size_t>(end - text.begin()) - at;
            out += printable(text.substr(at, length), EscapeForm::json);
            at += length - 1;
            continue;
        }
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '/':
            out += "\\/";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            out += printable(std::string_view(&c, 1), EscapeForm::json);
        }
    }
    out += '"';
}

void writeValue(std::string& out, const json& value, std::size_t indent);

/// One element or member per line between the brackets.
template<class Write>
void writeLines(std::string& out, char open, char close, const json& value, std::size_t indent,
                Write writeLine) {
    out += open;
    bool first = true;
    for (auto item = value.begin(); item != value.end(); ++item) {
        out += first ? "\n" : ",\n";
        first = false;
        out.append(indent + 2, ' ');
        writeLine(item);
    }
    if (!first) out.append("\n").append(indent, ' ');
    out += close;
}

void writeValue(std::string& out, const json& value, std::size_t indent) {
    if (value.is_object()) {
        writeLines(out, '{', '}', value, indent, [&](const json::const_iterator& member) {
            writeString(out, member.key());
            out += " : ";
            writeValue(out, *member, indent + 2);
        });
    } else if (value.is_array()) {
        writeLines(out, '[', ']', value, indent,
                   [&](const json::const_iterator& element) { writeValue(out, *element, indent + 2); });
    } else if (value.is_string()) {
        writeString(out, value.get_ref<const std::string&>());
    } else {
        out += value.dump(); // numbers, true, false, null: these cannot fail
    }
}

/// Takes the next value. Nested no deeper than the reader allows.
json takeValue(JsonReader& reader) {
    json value;
    switch (reader.next()) {
    case JsonReader::Kind::null:
        break;
    case JsonReader::Kind::boolean:
        value = reader.boolean();
        break;
    case JsonReader::Kind::number:
        std::visit([&](auto number) { value = number; }, reader.number());
        break;
    case JsonReader::Kind::string:
        value = std::string(reader.string());
        break;
    case JsonReader::Kind::array:
        value = json::array();
        reader.array([&] { value.push_back(takeValue(reader)); });
        break;
    case JsonReader::Kind::object:
        value = json::object();
        reader.object([&](std::string_view key) { value[std::string(key)] = takeValue(reader); });
        break;
    case JsonReader::Kind::none:
        break;
    }
    return value;
}

} // namespace

std::string writeJson(const json& value) {
    std::string out;
    writeValue(out, value, 0);
    out += '\n';
    return out;
}

void JsonStream::beginLine() {
    if (open_.empty() || isAfterKey_) {
        isAfterKey_ = false;
        return;
    }
    text_ += open_.back().isEmpty ? "\n" : ",\n";
    open_.back().isEmpty = false;
    text_.append(2 * open_.size(), ' ');
}

void JsonStream::begin(char open, char close) {
    beginLine();
    text_ += open;
    open_.push_back({close});
}

void JsonStream::end() {
    const auto closed = open_.back();
    open_.pop_back();
    if (!closed.isEmpty) text_.append("\n").append(2 * open_.size(), ' ');
    text_ += closed.bracket;
    if (open_.empty()) text_ += '\n';
    flush(open_.empty() ? 0 : pieceBytes);
}

void JsonStream::key(std::string_view name) {
    beginLine();
    writeString(text_, name);
    text_ += " : ";
    isAfterKey_ = true;
}

void JsonStream::value(const json& value) {
    beginLine();
    writeValue(text_, value, 2 * open_.size());
    flush(pieceBytes);
}

void JsonStream::values(std::size_t count, const std::function<json(std::size_t)>& make) {
    constexpr std::size_t mostAtOnce = 1024;
    for (std::size_t begin = 0; begin < count; begin += mostAtOnce) {
        std::vector<std::string> texts(std::min(mostAtOnce, count - begin));
        parallelFor(texts.size(),
                    [&](std::size_t i) { writeValue(texts[i], make(begin + i), 2 * open_.size()); });
        for (const auto& text : texts) {
            beginLine();
            text_ += text;
            flush(pieceBytes);
        }
    }
}

void JsonStream::flush(std::size_t mostKept) {
    if (text_.size() <= mostKept) return;
    sink_(text_);
    text_.clear();
}

std::optional<json> parseJson(std::string_view text, std::size_t maxBytes) {
    if (text.size() > maxBytes) return std::nullopt;
    JsonReader reader(text);
    auto value = takeValue(reader);
    if (!reader.finish()) return std::nullopt;
    return value;
}

} // namespace tidwen
