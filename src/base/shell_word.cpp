#include "base/shell_word.h"

namespace tidwen {

std::string shellWord(std::string_view text) {
    std::string word = "'";
    for (const char c : text)
        c == '\'' ? word += R"('\'')" : word += c;
    return word + "'";
}

} // namespace tidwen
