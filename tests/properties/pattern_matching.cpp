#include "tests/properties/properties.h"
#include "tools/patterns/pattern_automaton.h"
#include "tools/patterns/pattern_outline.h"
#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

// Every construct that the automaton takes, and what is refused or stands for itself in some
// places.
constexpr std::string_view constructs[] = {"a",
                                           "b",
                                           "c",
                                           "/",
                                           "ab",
                                           ".",
                                           ".*",
                                           "*",
                                           "(",
                                           ")",
                                           "(",
                                           ")",
                                           "|",
                                           "|",
                                           "()",
                                           "(|a)",
                                           "[ab]",
                                           "[^a]",
                                           "[]a]",
                                           "[^]a]",
                                           "[a-c]",
                                           "[a-]",
                                           "[--/]",
                                           "[[.a.]-b]",
                                           "[[=b=]]",
                                           "[[:alpha:]",
                                           "[",
                                           "]",
                                           "^",
                                           "$",
                                           "\\`",
                                           "\\'",
                                           "\\.",
                                           "\\w",
                                           "\\W",
                                           "\\s",
                                           "\\S",
                                           "\\",
                                           "}",
                                           ",",
                                           "1",
                                           "\xe9",
                                           "[\xe0-\xff]",
                                           "[^[:space:]]",
                                           "[[:punct:]a]",
                                           "\\[",
                                           "[(]",
                                           "[|*]"};
// The library writes these out, and needs seconds or gigabytes for some that come together.
constexpr size_t most_repetitions = 2;
constexpr std::string_view repetitions[] = {"?",    "+",          "*",     "{2}",   "{,2}",
                                            "{1,}", "{0}",        "{0,1}", "{2,3}", "{,}",
                                            "{1}",  "{\\0,1\\,}", "{3}",   "?"};

// As most real ones are.
std::string pattern_of_texts_and_stars(Choices& choices) {
    constexpr std::string_view parts[] = {"a", "b", "c", "/", "ab", ".", "\\.", "[a]", "*", "*"};
    std::string pattern;
    for (size_t left = 1 + choices.below(10); left > 0; --left) {
        pattern += choices.of(parts);
    }
    return encode_stars(pattern.c_str());
}

std::string random_pattern(Choices& choices) {
    if (choices.one_in(4)) {
        return pattern_of_texts_and_stars(choices);
    }
    std::string pattern;
    size_t repetitions_left = most_repetitions;
    for (size_t left = 1 + choices.below(10); left > 0; --left) {
        const bool repeats = repetitions_left > 0 && choices.one_in(3);
        pattern += repeats ? choices.of(repetitions) : choices.of(constructs);
        repetitions_left -= repeats ? 1 : 0;
    }
    // More positions than a word has bits. The library's time multiplies with empty parts.
    if (repetitions_left == most_repetitions && pattern.size() < 9 &&
        pattern.find_first_of("|)$^\\") == std::string::npos) {
        pattern = "(.?" + pattern + "){33}";
    }
    return encode_stars(pattern.c_str());
}

// What the pattern may match, or nearly: now and then a byte of its own text.
std::string random_url(Choices& choices, const std::string& pattern) {
    constexpr std::string_view bytes = "aaaabbbcc/1.A _\t\xe9\xff";
    std::string url = choices.text("ab", 6);
    for (size_t left = choices.below(4); left > 0; --left) {
        choices.edit(url, choices.one_in(4) ? std::string_view(pattern) : bytes);
    }
    return url;
}

// A back-reference or an anchor at words, if it does not stand in a bracket.
bool has_what_needs_library(std::string_view pattern) {
    for (size_t at = 0; (at = pattern.find('\\', at)) < pattern.size() - 1; at += 2) {
        if (std::string_view("123456789<>bB").find(pattern[at + 1]) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

// Where in the URL a part may end that starts at one of these places.
using Places = std::set<size_t>;

Places ends_of(const SyntaxNode& node, std::string_view url, const Places& starts);

Places ends_of_repetition(const SyntaxNode& node, std::string_view url, Places starts) {
    Places ends = node.least == 0 ? starts : Places();
    for (uint32_t count = 1; count <= node.most && !starts.empty(); ++count) {
        starts = ends_of(node.parts.front(), url, starts);
        const size_t known = ends.size();
        if (count >= node.least) {
            ends.insert(starts.begin(), starts.end());
        }
        if (count > node.least + url.size() && ends.size() == known) {
            break;
        }
    }
    return ends;
}

Places ends_of(const SyntaxNode& node, std::string_view url, const Places& starts) {
    Places ends = node.kind == SyntaxKind::choice ? Places() : starts;
    switch (node.kind) {
    case SyntaxKind::bytes:
        ends.clear();
        for (const size_t start : starts) {
            if (start < url.size() && node.bytes.test(static_cast<unsigned char>(url[start]))) {
                ends.insert(start + 1);
            }
        }
        return ends;
    case SyntaxKind::start:
        return starts.count(0) != 0 ? Places{0} : Places();
    case SyntaxKind::end:
        return starts.count(url.size()) != 0 ? Places{url.size()} : Places();
    case SyntaxKind::sequence:
        for (const SyntaxNode& part : node.parts) {
            ends = ends_of(part, url, ends);
        }
        return ends;
    case SyntaxKind::choice:
        for (const SyntaxNode& part : node.parts) {
            ends.merge(ends_of(part, url, starts));
        }
        return ends;
    case SyntaxKind::repetition:
        return ends_of_repetition(node, url, starts);
    default:
        return starts;
    }
}

// The rule as it is described: some way through the pattern consumes the whole URL.
bool covers_by_rule(const SyntaxNode& root, std::string_view url) {
    return ends_of(root, url, {0}).count(url.size()) != 0;
}

bool repeats_an_anchor(const SyntaxNode& node, bool is_repeated = false) {
    is_repeated |= node.kind == SyntaxKind::repetition;
    const bool is_anchor = node.kind == SyntaxKind::start || node.kind == SyntaxKind::end;
    return (is_anchor && is_repeated) ||
           std::any_of(node.parts.begin(), node.parts.end(), [&](const SyntaxNode& part) {
               return repeats_an_anchor(part, is_repeated);
           });
}

bool covers_by_library(const regex_t& regex, const std::string& url) {
    regmatch_t match;
    return regexec(&regex, url.c_str(), 1, &match, 0) == 0 && match.rm_so == 0 &&
           static_cast<size_t>(match.rm_eo) == url.size();
}

void expect_same_answers(Choices& choices, const regex_t& regex, const std::string& pattern) {
    const PatternSyntax syntax = parse_pattern(pattern);
    if (syntax.needs_library) {
        EXPECT_TRUE(has_what_needs_library(pattern)) << pattern;
        return;
    }
    const PatternProgram program = compile_program(syntax.root);
    const bool library_errs = library_may_err(pattern);
    PatternAutomaton automaton(program, 1 << 20);
    PatternAutomaton small(program, 800);
    PatternAutomaton simulation(program, 0);
    const PatternOutline outline(syntax);
    for (size_t left = 200; left > 0 && choices.any_left(); --left) {
        const std::string url = random_url(choices, pattern);
        const bool expected =
            library_errs ? covers_by_rule(syntax.root, url) : covers_by_library(regex, url);
        EXPECT_EQ(automaton.covers(url), expected) << pattern << " over " << url;
        EXPECT_EQ(small.covers(url), expected) << pattern << " over " << url;
        EXPECT_EQ(simulation.covers(url), expected) << pattern << " over " << url;
        const PatternOutline::Verdict verdict = outline.test(url);
        EXPECT_TRUE(verdict == PatternOutline::Verdict::unknown ||
                    (verdict == PatternOutline::Verdict::covers) == expected)
            << pattern << " over " << url;
    }
}

} // namespace

bool library_may_err(const std::string& encoded_pattern) {
    return repeats_an_anchor(parse_pattern(encoded_pattern).root);
}

void check_pattern_matching(Choices& choices) {
    const std::string pattern = random_pattern(choices);
    regex_t regex;
    if (regcomp(&regex, pattern.c_str(), REG_EXTENDED) == 0) {
        expect_same_answers(choices, regex, pattern);
        regfree(&regex);
    }
}
