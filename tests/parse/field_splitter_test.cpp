#include "tools/parse/field_splitter.h"

#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace {

using Fields = std::vector<std::string>;

// Nothing when a field is not closed.
std::optional<Fields> split(std::string line, int max_fields = max_al_fields) {
    LineText fields[max_al_fields];
    const int count = get_al_fields({line.data(), line.size()}, fields, max_fields);
    EXPECT_GE(count, -1);
    Fields result;
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(fields[i].text[fields[i].size], '\0');
        result.emplace_back(fields[i].text, fields[i].size);
    }
    return count < 0 ? std::nullopt : std::optional(result);
}

// The rules, one character at a time.
std::optional<Fields> split_plainly(const std::string& line) {
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
        if (result.size() == max_al_fields) {
            return result;
        }
        at = line.find_first_not_of(" \t", end + 1);
    }
    return result;
}

} // namespace

TEST(FieldSplitter, StopsAtTheGreatestNumberOfFields) {
    std::string line;
    for (int i = 0; i < 30; ++i) {
        line += " w" + std::to_string(i);
    }
    const std::optional<Fields> result = split(line);
    ASSERT_TRUE(result && result->size() == 25);
    EXPECT_EQ(result->back(), "w24");
    EXPECT_EQ(split("a b \"not closed", 2), (Fields{"a", "b"}));
}

TEST(FieldSplitter, AgreesWithAPlainSplitter) {
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string line;
        for (size_t length = random() % 120; length != 0; --length) {
            line += "\"\"[] \t\\a\xffzzz   "[random() % 15];
        }
        ASSERT_EQ(split(line), split_plainly(line)) << line;
    }
}
