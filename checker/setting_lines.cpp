#include "checker/setting_lines.h"

#include "checker/file_state.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

constexpr size_t line_size = 2048;

// How inline objects are treated is decided from complete_url.list on; the others decide nothing.
constexpr const char* neutral_keywords[] = {"INLINE_OBJECT_MODE", "DEFAULT_HOST", "NEW_USER_TIME"};

bool begins_with(const std::string& line, const char* keyword) {
    return strncasecmp(line.c_str(), keyword, std::strlen(keyword)) == 0;
}

bool is_neutral(const std::string& line) {
    return line.empty() || line[0] == '#' ||
           std::any_of(std::begin(neutral_keywords), std::end(neutral_keywords),
                       [&](const char* keyword) { return begins_with(line, keyword); });
}

} // namespace

bool SettingLines::read(const FileDescriptor& file) {
    return read_lines(file, line_size,
                      [this](LineText line) { lines_.emplace_back(line.text, line.size); });
}

std::vector<std::string> SettingLines::loading_lines() const {
    std::vector<std::string> loading;
    std::remove_copy_if(lines_.begin(), lines_.end(), std::back_inserter(loading), is_neutral);
    return loading;
}

// The value begins one character after the keyword, whatever that character is.
int SettingLines::number(const char* keyword, int absent) const {
    int number = absent;
    for (const std::string& line : lines_) {
        if (begins_with(line, keyword)) {
            number = std::atoi(line.c_str() + std::min(line.size(), std::strlen(keyword) + 1));
        }
    }
    return number;
}
