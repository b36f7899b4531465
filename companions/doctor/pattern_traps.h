#pragma once

#include <string>
#include <string_view>
#include <vector>

// What is surely not meant in a pattern that compiles, by its text alone.

enum class TrapKind {
    question_mark_operator, // '?' where the URL was meant to have one
    dot_operator,           // '.' between letters, which takes any character
    dot_star,               // '.*', of which the star alone is any text
    star_after_set,         // '[0-9]*', whose star repeats nothing
    escaped_star,           // '\*', which takes dots
    behind_the_cut,         // text behind a '?', '#' or ';' at which URLs are cut
    no_star_at_the_cut,     // the pattern ends where a cut URL has a star
    no_slash_at_start       // the pattern has to match the URL from its first character
};

struct PatternTrap {
    TrapKind kind;
    std::string likely; // the pattern as it was likely meant; empty: not known
};

// Each kind once. `queries_are_cut`: URLs end in "?*", "#*" or ";*" where they had more.
std::vector<PatternTrap> find_traps(std::string_view pattern, bool queries_are_cut);

// Where a pattern that is refused is wrong, as far as that can be found out in some hundredths of a
// second: the character, from 1, and what stands there. Empty when it is not known.
std::string find_refused_place(const std::string& pattern);
