#include "companions/common/shell_word.h"

#include <algorithm>
#include <cctype>
#include <string_view>

std::string shell_word(const std::string& word) {
    const bool is_plain = !word.empty() && std::ranges::all_of(word, [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
               std::string_view("_-./+=:,@%").find(c) != std::string_view::npos;
    });
    if (is_plain) {
        return word;
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}
