#include "tools/parse/field_splitter.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using Fields = std::vector<std::string>;

struct SplitResult {
    int count;
    Fields fields;
};

SplitResult split(std::string line, int max_fields = max_al_fields) {
    LineText fields[max_al_fields];
    const int count = get_al_fields({line.data(), line.size()}, fields, max_fields);
    SplitResult result = {count, {}};
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(fields[i].text[fields[i].size], '\0');
        result.fields.emplace_back(fields[i].text, fields[i].size);
    }
    return result;
}

} // namespace

TEST(FieldSplitter, CutsWordsQuotedAndBracketedFields) {
    const struct {
        const char* oddity;
        const char* line;
        Fields fields;
    } rows[] = {
        {"combined log",
         R"(10.0.0.1 - - [10/Oct/2000:13:55:36 -0700] "GET / HTTP/1.1" 200)",
         {"10.0.0.1", "-", "-", "10/Oct/2000:13:55:36 -0700", "GET / HTTP/1.1", "200"}},
        {"blank line", " \t ", {}},
        {"empty line", "", {}},
        {"empty quoted field", R"("" "" x)", {"", "", "x"}},
        {"escaped quote", R"("a\" b" c)", {R"(a\" b)", "c"}},
        {"quote inside, not followed by a blank", R"("a"b" c)", {R"(a"b)", "c"}},
        {"quote followed by a tab does not close", "\"a\"\tb\" c", {"a\"\tb", "c"}},
        {"bracket needs no blank after it", "[a]b", {"a", "b"}},
        {"escaped bracket", R"([a\]b] c)", {R"(a\]b)", "c"}},
        {"empty brackets", "[] x", {"", "x"}},
        {"quote within a word is text", R"(a"b c)", {R"(a"b)", "c"}},
        {"tabs and runs of blanks", "a\t \tb  c \t", {"a", "b", "c"}},
        {"lone quote at the end of a word field", "a \"b\"", {"a", "b"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(split(row.line).fields, row.fields) << row.oddity;
    }
}

TEST(FieldSplitter, RefusesFieldsThatAreNotClosed) {
    for (const char* line : {"a \"b", "\"", "[a", "a [", R"("a\")", "\"a\"\t", R"([a\])"}) {
        EXPECT_EQ(split(line).count, -1) << line;
    }
}

TEST(FieldSplitter, StopsAtTheGreatestNumberOfFields) {
    std::string line;
    for (int i = 0; i < 30; ++i) {
        line += "w" + std::to_string(i) + " ";
    }
    const SplitResult result = split(line);
    EXPECT_EQ(result.count, 25);
    EXPECT_EQ(result.fields.back(), "w24");
    EXPECT_EQ(split("a b \"not closed", 2).count, 2);
}

namespace {

// The rules, one character at a time.
SplitResult split_plainly(const std::string& line) {
    SplitResult result = {0, {}};
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
                return {-1, {}};
            }
        } else {
            while (end < line.size() && !is_blank(line[end])) {
                ++end;
            }
        }
        result.fields.push_back(line.substr(at, end - at));
        if (++result.count == max_al_fields) {
            return result;
        }
        at = line.find_first_not_of(" \t", end + 1);
    }
    return result;
}

} // namespace

TEST(FieldSplitter, AgreesWithAPlainSplitter) {
    std::mt19937 random(11);
    for (int round = 0; round < 20000; ++round) {
        std::string line;
        for (size_t length = random() % 120; length != 0; --length) {
            line += "\"\"[] \t\\a\xffzzz   "[random() % 15];
        }
        const SplitResult expected = split_plainly(line);
        const SplitResult actual = split(line);
        ASSERT_EQ(actual.count, expected.count) << line;
        ASSERT_EQ(actual.fields, expected.fields) << line;
    }
}
