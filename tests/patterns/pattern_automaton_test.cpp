#include "tools/patterns/pattern_automaton.h"

#include "tools/patterns/pattern_regex.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

namespace {

bool covers(const std::string& pattern, std::string_view url, size_t memory_bound = 1 << 20) {
    const PatternSyntax syntax = parse_pattern(encode_stars(pattern.c_str()));
    EXPECT_FALSE(syntax.needs_library) << pattern;
    const PatternProgram program = compile_program(syntax.root);
    return PatternAutomaton(program, memory_bound).covers(url);
}

double seconds_of(const std::string& pattern, std::string_view url, bool expected) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(covers(pattern, url), expected) << pattern;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

// The C library finds other matches here than the longest of the leftmost: it lets an anchor that
// is written out more than once hold where it does not, and takes a line feed for the end of a
// line, which no flag asks it to.
TEST(PatternAutomaton, GoesByTheRuleWhereTheLibraryBreaksIt) {
    const std::tuple<std::string, std::string> rows[] = {
        {"(.?\\`\\*){40}", "aa"}, {"[(]?(\\'ab){,2}{2,3}", "ab"}, {"(\\`b{0,1}){1,}{0,1}", "bb"},
        {"\\w+$[^a]", "a\n"},     {"a{,2}.^[^a]", "\nA"},
    };
    for (const auto& [pattern, url] : rows) {
        EXPECT_FALSE(covers(pattern, url)) << pattern;
    }
}

// In the form that the library searches by, each of these takes seconds to minutes; the limit
// leaves room for slow machines and sanitizers.
TEST(PatternAutomaton, ReadsALongUrlInLinearTime) {
    std::string url;
    for (uint32_t i = 0, random = 1; i < 100'000; ++i, random = random * 1664525 + 1013904223) {
        url += (random >> 24) % 2 == 0 ? 'a' : 'b';
    }
    const std::tuple<std::string, bool> rows[] = {
        {"/*\\.gif", false},
        {"[^?]*", true},
        {"*(a|b)*\\?", false},
        {"*a(a|b){980}", url[url.size() - 981] == 'a'}, // all 980 last places differ
        {"*a(((a?b){5}){10}){10}c", false},
        {"*((a?|b){10}){90}c", false},
        {"*c?a((a|b)|ab|ba){0,150}", true},
    };
    for (const auto& [pattern, expected] : rows) {
        EXPECT_LT(seconds_of(pattern, url, expected), 3) << pattern;
    }
}
