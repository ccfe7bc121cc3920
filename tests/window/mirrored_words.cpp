#include "window/mirrored_words.h"

#include "base/strings_file.h"
#include "support/trees.h"

#include <fstream>
#include <iterator>
#include <string>

namespace tidwen::test {

namespace fs = std::filesystem;

void addMirroredWords(const fs::path& folder) {
    const fs::path shipped = TIDWEN_RESOURCES;
    for (const auto& entry : fs::directory_iterator(shipped))
        if (entry.path().extension() == ".lproj")
            fs::create_directory_symlink(entry.path(), folder / entry.path().filename());
    std::ifstream file(shipped / "en.lproj/Localizable.strings", std::ios::binary);
    const std::string english(std::istreambuf_iterator<char>(file), {});
    const auto quoted = [](std::string text) {
        for (std::size_t at = 0; (at = text.find_first_of("\"\\", at)) != text.npos; at += 2)
            text.insert(at, "\\");
        return '"' + text + '"';
    };
    const auto parsed = parseStringsFile(english).value();
    std::string words;
    for (const auto& [key, text] : parsed)
        words += quoted(key) + " = " + quoted("⟦אב " + text + " גד⟧") + ";\n";
    writeFile(folder / (std::string(mirrored) + ".lproj/Localizable.strings"), words);
}

} // namespace tidwen::test
