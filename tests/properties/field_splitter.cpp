#include "tools/parse/field_splitter.h"
#include "tools/config/field_layout.h"

#include "base/marked_line.h"
#include "tests/properties/properties.h"

#include <vector>

namespace {

using Fields = std::vector<std::string>;

// Nothing when a field is not closed.
std::optional<Fields> split(const std::string& text, int max_fields) {
    MarkedLine line(text, field_quote);
    LineText fields[max_al_fields];
    const int count = get_al_fields(line.text(), line.marks(), fields, max_fields);
    EXPECT_GE(count, -1);
    Fields result;
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(fields[i].text[fields[i].size], '\0');
        result.emplace_back(fields[i].text, fields[i].size);
    }
    return count < 0 ? std::nullopt : std::optional(result);
}

// The rules, one character at a time.
std::optional<Fields> split_plainly(const std::string& line, size_t max_fields) {
    Fields result;
    const auto is_blank = [](char c) { return c == ' ' || c == '\t'; };
    size_t at = line.find_first_not_of(" \t");
    while (at < line.size()) {
        const char first = line[at];
        size_t end = at;
        if (first == '"' || first == '[') {
            const char closing = first == '"' ? '"' : ']';
            const auto closes = [&](size_t place) {
                const bool ends_field =
                    first == '[' || place + 1 == line.size() || line[place + 1] == ' ';
                return line[place] == closing && line[place - 1] != '\\' && ends_field;
            };
            for (end = ++at; end < line.size() && !closes(end); ++end) {
            }
            if (end >= line.size()) {
                return std::nullopt;
            }
        } else {
            while (end < line.size() && !is_blank(line[end])) {
                ++end;
            }
        }
        result.push_back(line.substr(at, end - at));
        if (result.size() == max_fields) {
            return result;
        }
        at = line.find_first_not_of(" \t", end + 1);
    }
    return result;
}

} // namespace

void check_field_splitter(Choices& choices) {
    const size_t max_fields = max_al_fields - choices.below(max_al_fields);
    std::string line = choices.rest("\"\"[] \t\\a\xffzzz   ", 120);
    line.resize(std::min(line.size(), line.find('\0')));
    EXPECT_EQ(split(line, static_cast<int>(max_fields)), split_plainly(line, max_fields)) << line;
}
