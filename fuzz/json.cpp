// JSON documents: parsed like the JSON library does, except for what the library tolerates (deep nesting,
// duplicate keys); what is parsed can be written and reads back equal.

#include "base/json.h"

#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using nlohmann::json;

/// Checks a document for what the library tolerates.
class StrictnessCheck : public nlohmann::json_sax<json> {
  public:
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t& text) override {
        return text.find_first_of(".eE") != text.npos; // an integer that does not fit in 64 bits
    }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return open(); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override { return keys_.back().insert(name).second; }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

  private:
    bool open() {
        keys_.emplace_back();
        return keys_.size() <= 64;
    }
    bool close() {
        keys_.pop_back();
        return true;
    }
    std::vector<std::set<std::string>> keys_;
};

std::optional<json> parsedByTheLibrary(std::string_view text) {
    StrictnessCheck check;
    if (!json::sax_parse(text, &check)) return std::nullopt;
    return json::parse(text);
}

/// Equal including the types of numbers, which `==` ignores.
bool isSame(const std::optional<json>& a, const std::optional<json>& b) {
    return a.has_value() == b.has_value() && (!a || (*a == *b && a->dump() == b->dump()));
}

void require(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto value = tidwen::parseJson(text);
    require(isSame(value, parsedByTheLibrary(text)));
    if (value) require(tidwen::parseJson(tidwen::writeJson(*value)) == *value);
    return 0;
}
