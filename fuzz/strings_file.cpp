// ".strings" files: what is read is valid UTF-8 and reads back equal after writing.

#include "base/strings_file.h"
#include "base/text.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + "\"";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto words = tidwen::parseStringsFile({reinterpret_cast<const char*>(data), size});
    if (!words) return 0;
    std::string written = "/* so that nothing at the start is taken for a mark */\n";
    for (const auto& [key, value] : *words) {
        if (!tidwen::isValidUtf8(key) || !tidwen::isValidUtf8(value)) std::abort();
        written += quoted(key) + " = " + quoted(value) + ";\n";
    }
    if (tidwen::parseStringsFile(written) != words) std::abort();
    return 0;
}
