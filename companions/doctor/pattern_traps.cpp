#include "companions/doctor/pattern_traps.h"

#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstddef>
#include <fmt/core.h>

namespace {

// What stands in a pattern outside brackets.
struct Token {
    enum Kind { plain, escaped, bracket };
    Kind kind;
    char c; // the character; of a bracket expression, its last one
    size_t begin;
    size_t end; // place in the pattern, exclusive
};

// Place behind a bracket expression that begins at `begin`.
size_t end_of_bracket(std::string_view pattern, size_t begin) {
    size_t i = begin + 1;
    i += i < pattern.size() && pattern[i] == '^' ? 1 : 0;
    i += i < pattern.size() && pattern[i] == ']' ? 1 : 0; // stands for itself here
    while (i < pattern.size() && pattern[i] != ']') {
        const bool is_named =
            pattern[i] == '[' && i + 1 < pattern.size() &&
            std::string_view(".:=").find(pattern[i + 1]) != std::string_view::npos;
        const size_t named_end =
            is_named ? pattern.find(std::string{pattern[i + 1], ']'}, i + 2) : std::string::npos;
        i = named_end == std::string::npos ? i + 1 : named_end + 2;
    }
    return std::min(i + 1, pattern.size());
}

std::vector<Token> tokens_of(std::string_view pattern) {
    std::vector<Token> tokens;
    for (size_t i = 0; i < pattern.size();) {
        Token token = {Token::plain, pattern[i], i, i + 1};
        if (pattern[i] == '\\' && i + 1 < pattern.size()) {
            token = {Token::escaped, pattern[i + 1], i, i + 2};
        } else if (pattern[i] == '[') {
            token = {Token::bracket, ']', i, end_of_bracket(pattern, i)};
        }
        tokens.push_back(token);
        i = token.end;
    }
    return tokens;
}

bool is_letter_or_digit(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// Looks for traps of one pattern.
class TrapSearch {
  public:
    TrapSearch(std::string_view pattern, bool queries_are_cut)
        : pattern_(pattern), queries_are_cut_(queries_are_cut), tokens_(tokens_of(pattern)) {}

    std::vector<PatternTrap> find() {
        look_for(TrapKind::question_mark_operator, &TrapSearch::is_meant_question_mark, "\\?");
        cut_likely_pattern();
        look_for(TrapKind::dot_star, &TrapSearch::is_dot_of_star, "");
        look_for(TrapKind::dot_operator, &TrapSearch::is_meant_dot, "\\.");
        look_for(TrapKind::star_after_set, &TrapSearch::is_repeating_star, "{0,}");
        look_for(TrapKind::escaped_star, &TrapSearch::is_escaped_star, ".");
        look_at_start();
        if (queries_are_cut_) {
            look_at_cut();
        }
        return std::move(traps_);
    }

  private:
    using Test = bool (TrapSearch::*)(size_t) const;

    bool is_plain(size_t i, char c) const {
        return i < tokens_.size() && tokens_[i].kind == Token::plain && tokens_[i].c == c;
    }
    bool is_word(size_t i) const {
        return i < tokens_.size() && tokens_[i].kind == Token::plain &&
               (is_letter_or_digit(tokens_[i].c) || tokens_[i].c == '_');
    }

    // Where the pattern goes on as a query does: with anything, or with a name and "=".
    bool is_query(size_t i) const {
        if (is_plain(i, '*')) {
            return true;
        }
        size_t end = i;
        while (is_word(end) || is_plain(end, '-')) {
            ++end;
        }
        return end > i && is_plain(end, '=');
    }

    bool is_meant_question_mark(size_t i) const {
        const bool is_behind_character =
            i > 0 && (is_word(i - 1) || is_plain(i - 1, '/') || is_plain(i - 1, '-'));
        const bool is_at_cut = queries_are_cut_ && i + 1 == tokens_.size();
        return is_plain(i, '?') && is_behind_character && (is_query(i + 1) || is_at_cut);
    }

    bool is_dot_of_star(size_t i) const { return is_plain(i, '.') && is_plain(i + 1, '*'); }

    bool is_meant_dot(size_t i) const {
        return is_plain(i, '.') && i > 0 && is_word(i - 1) && is_word(i + 1);
    }

    bool is_repeating_star(size_t i) const {
        return is_plain(i, '*') && i > 0 && tokens_[i - 1].kind == Token::bracket;
    }

    bool is_escaped_star(size_t i) const {
        return tokens_[i].kind == Token::escaped && tokens_[i].c == '*';
    }

    // Of the pattern, with each token for which the test holds written otherwise.
    void look_for(TrapKind kind, Test test, std::string_view instead) {
        std::string likely;
        bool is_found = false;
        for (size_t i = 0; i < tokens_.size(); ++i) {
            const Token& token = tokens_[i];
            const bool holds = (this->*test)(i);
            is_found = is_found || holds;
            likely += holds ? instead : pattern_.substr(token.begin, token.end - token.begin);
        }
        if (is_found) {
            traps_.push_back({kind, likely});
        }
    }

    // What stands behind the first question mark of a URL does not stay.
    void cut_likely_pattern() {
        if (queries_are_cut_ && !traps_.empty()) {
            std::string& likely = traps_.front().likely;
            likely.resize(std::min(likely.find("\\?"), likely.size()));
            likely += "\\?*";
        }
    }

    void look_at_start() {
        if (is_word(0) && !pattern_.starts_with("http")) {
            traps_.push_back({TrapKind::no_slash_at_start, "*" + std::string(pattern_)});
        }
    }

    // A character at which URLs are cut, and which stands for itself.
    bool is_cut(size_t i) const {
        return (tokens_[i].kind == Token::escaped && tokens_[i].c == '?') || is_plain(i, '#') ||
               is_plain(i, ';');
    }

    void look_at_cut() {
        for (size_t i = 0; i < tokens_.size(); ++i) {
            if (!is_cut(i)) {
                continue;
            }
            const std::string cut(pattern_.substr(0, tokens_[i].end));
            if (i + 1 == tokens_.size()) {
                traps_.push_back({TrapKind::no_star_at_the_cut, cut + "*"});
            } else if (is_word(i + 1)) {
                traps_.push_back({TrapKind::behind_the_cut, cut + "*"});
            }
            return;
        }
    }

    std::string_view pattern_;
    bool queries_are_cut_;
    std::vector<Token> tokens_;
    std::vector<PatternTrap> traps_;
};

// Where the longest part of the pattern's start ends that compiles: what stands there makes the
// rest fail. None when that takes too long to find out.
size_t find_fault(const std::string& pattern) {
    constexpr auto longest_search = std::chrono::milliseconds(50);
    const auto start = std::chrono::steady_clock::now();
    for (size_t size = pattern.size(); size-- > 0;) {
        if (why_not_compiled(pattern.substr(0, size).c_str()).empty()) {
            return size;
        }
        if (std::chrono::steady_clock::now() - start > longest_search) {
            break;
        }
    }
    return std::string::npos;
}

} // namespace

std::vector<PatternTrap> find_traps(std::string_view pattern, bool queries_are_cut) {
    return TrapSearch(pattern, queries_are_cut).find();
}

std::string find_refused_place(const std::string& pattern) {
    const size_t place = find_fault(pattern);
    return place == std::string::npos
               ? ""
               : fmt::format(", from character {} on: '{}'", place + 1, pattern.substr(place, 20));
}
