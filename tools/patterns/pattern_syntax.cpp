#include "tools/patterns/pattern_syntax.h"

#include "tools/patterns/bracket_syntax.h"

#include <algorithm>
#include <utility>

namespace {

SyntaxNode node_of(SyntaxKind kind) {
    return {.kind = kind};
}

SyntaxNode node_of(const ByteSet& bytes) {
    return {.kind = SyntaxKind::bytes, .bytes = bytes};
}

SyntaxNode node_of(char c) {
    return node_of(ByteSet().set(static_cast<unsigned char>(c)));
}

// What stays of parts when single bytes that are to be chosen from are one set.
SyntaxNode choice_of(std::vector<SyntaxNode> parts) {
    const auto others = std::stable_partition(parts.begin(), parts.end(), [](const auto& part) {
        return part.kind == SyntaxKind::bytes;
    });
    for (auto part = parts.begin(); part < others; ++part) {
        parts.front().bytes |= part->bytes;
    }
    if (others - parts.begin() > 1) {
        parts.erase(parts.begin() + 1, others);
    }
    return parts.size() == 1 ? std::move(parts.front())
                             : SyntaxNode{.kind = SyntaxKind::choice, .parts = std::move(parts)};
}

SyntaxNode sequence_of(std::vector<SyntaxNode> parts) {
    if (parts.empty()) {
        return {};
    }
    return parts.size() == 1 ? std::move(parts.front())
                             : SyntaxNode{.kind = SyntaxKind::sequence, .parts = std::move(parts)};
}

struct Count {
    uint32_t least;
    uint32_t most;

    bool is_operator() const { return least <= 1 && (most == 1 || most == any_number); }
};

// Operators in a row are one, so that a tree is no deeper than the groups of its pattern.
SyntaxNode repetition_of(SyntaxNode part, Count count) {
    if (part.kind == SyntaxKind::nothing || count.most == 0) {
        return {};
    }
    if (count.least == 1 && count.most == 1) {
        return part;
    }
    if (part.kind == SyntaxKind::repetition && Count{part.least, part.most}.is_operator() &&
        count.is_operator()) {
        part.least = std::min(part.least, count.least);
        part.most = std::max(part.most, count.most);
        return part;
    }
    SyntaxNode node = {
        .kind = SyntaxKind::repetition, .least = count.least, .most = count.most, .parts = {}};
    node.parts.push_back(std::move(part));
    return node;
}

// Goes through the pattern from left to right. Where that cannot go on, it is at the end at once
// and the pattern is left to the library.
class Parser {
  public:
    explicit Parser(std::string_view pattern) : rest_(pattern) {}

    PatternSyntax parse() {
        SyntaxNode root = parse_choice();
        return {is_understood_ ? std::move(root) : SyntaxNode(), needs_library_};
    }

  private:
    bool at_end() const { return rest_.empty(); }
    bool at(char c) const { return !at_end() && rest_.front() == c; }

    char take() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    bool take_if(char c) {
        const bool is_there = at(c);
        rest_.remove_prefix(is_there ? 1 : 0);
        return is_there;
    }

    SyntaxNode give_up() {
        is_understood_ = false;
        needs_library_ = true;
        rest_ = {};
        return {};
    }

    SyntaxNode parse_choice() {
        SyntaxNode first = parse_sequence();
        if (!at('|')) {
            return first;
        }
        std::vector<SyntaxNode> parts;
        parts.push_back(std::move(first));
        while (take_if('|')) {
            parts.push_back(parse_sequence());
        }
        return choice_of(std::move(parts));
    }

    SyntaxNode parse_sequence() {
        std::vector<SyntaxNode> parts;
        parts.reserve(std::min(rest_.size(), size_t{32}));
        while (!at_end() && !at('|') && !(at(')') && open_groups_ > 0)) {
            parts.push_back(parse_repetitions(parse_single()));
        }
        return sequence_of(std::move(parts));
    }

    SyntaxNode parse_repetitions(SyntaxNode node) {
        while (!at_end()) {
            if (take_if('*')) {
                node = repetition_of(std::move(node), {0, any_number});
            } else if (take_if('+')) {
                node = repetition_of(std::move(node), {1, any_number});
            } else if (take_if('?')) {
                node = repetition_of(std::move(node), {0, 1});
            } else if (take_if('{')) {
                node = repetition_of(std::move(node), parse_count());
            } else {
                break;
            }
        }
        return node;
    }

    // After the opening brace. What is missing in front of a comma is 0; after it, there is no
    // limit.
    Count parse_count() {
        const uint32_t least = parse_number(0);
        const uint32_t most = take_if(',') ? parse_number(any_number) : least;
        if (!take_if('}') || least > most) {
            give_up();
        }
        return {least, most};
    }

    uint32_t parse_number(uint32_t missing) {
        uint32_t number = missing;
        for (bool is_first = true;; is_first = false) {
            if (rest_.size() > 1 && at('\\')) {
                take(); // which the library allows here, in front of a digit or a comma
            }
            if (at_end() || rest_.front() < '0' || rest_.front() > '9') {
                return number;
            }
            constexpr uint32_t too_many = 100'000; // for the library, so that it cannot come here
            const auto digit = static_cast<uint32_t>(take() - '0');
            number = std::min(too_many, is_first ? digit : number * 10 + digit);
        }
    }

    SyntaxNode parse_single() {
        switch (const char c = take()) {
        case '(':
            return parse_group();
        case '[':
            return parse_bracket();
        case '\\':
            return at_end() ? give_up() : parse_escaped(take());
        case '.':
            return node_of(ByteSet().set());
        case '^':
            return node_of(SyntaxKind::start);
        case '$':
            return node_of(SyntaxKind::end);
        case '*':
        case '+':
        case '?':
        case '{':
            return give_up(); // nothing to repeat
        default:
            return node_of(c); // also a closing parenthesis of no group
        }
    }

    SyntaxNode parse_group() {
        ++open_groups_;
        SyntaxNode node = parse_choice();
        --open_groups_;
        return take_if(')') ? node : give_up();
    }

    SyntaxNode parse_bracket() {
        const std::optional<ByteSet> bytes = take_bracket(rest_);
        return bytes ? node_of(*bytes) : give_up();
    }

    SyntaxNode parse_escaped(char c) {
        switch (c) {
        case '`':
            return node_of(SyntaxKind::start);
        case '\'':
            return node_of(SyntaxKind::end);
        case 'w':
            return node_of(word_bytes());
        case 'W':
            return node_of(~word_bytes());
        case 's':
            return node_of(*bytes_of_class("space"));
        case 'S':
            return node_of(~*bytes_of_class("space"));
        case '<':
        case '>':
        case 'b':
        case 'B':
            needs_library_ = true;
            return {};
        default:
            return c >= '1' && c <= '9' ? parse_back_reference() : node_of(c);
        }
    }

    SyntaxNode parse_back_reference() {
        needs_library_ = true;
        return node_of(SyntaxKind::back_reference);
    }

    std::string_view rest_;
    int open_groups_ = 0;
    bool needs_library_ = false;
    bool is_understood_ = true;
};

} // namespace

PatternSyntax parse_pattern(std::string_view encoded_pattern) {
    return Parser(encoded_pattern).parse();
}
