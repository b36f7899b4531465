#include "tools/patterns/pattern_outline.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr char any_character = '\0';
constexpr size_t longest_text = 32; // to be searched for; automata take no longer for longer ones

bool is_any_byte(const SyntaxNode& node) {
    return node.kind == SyntaxKind::bytes && node.bytes.all();
}

bool is_literal(const SyntaxNode& node) {
    return node.kind == SyntaxKind::bytes && is_single(node.bytes);
}

bool has_fixed_place(const SyntaxNode& node) {
    return is_any_byte(node) || is_literal(node);
}

bool is_star(const SyntaxNode& node) {
    return node.kind == SyntaxKind::repetition && node.least == 0 && node.most == any_number &&
           is_any_byte(node.parts.front());
}

char character_of(const SyntaxNode& node) {
    return is_any_byte(node) ? any_character : static_cast<char>(node.bytes._Find_first());
}

// Whether the characters stand at the start of the text, which is at least as long.
bool stand_in_front(std::string_view characters, std::string_view text) {
    return std::equal(characters.begin(), characters.end(), text.begin(),
                      [](char wanted, char c) { return wanted == c || wanted == any_character; });
}

} // namespace

PatternOutline::PatternOutline(const PatternSyntax& syntax) {
    const SyntaxNode& root = syntax.root;
    const Parts parts = root.kind == SyntaxKind::sequence ? Parts(root.parts) : Parts(&root, 1);
    const auto middle = std::find_if_not(parts.begin(), parts.end(), has_fixed_place);
    const auto behind =
        std::find_if_not(parts.rbegin(), std::reverse_iterator(middle), has_fixed_place).base();
    std::transform(parts.begin(), middle, std::back_inserter(start_), character_of);
    std::transform(behind, parts.end(), std::back_inserter(end_), character_of);
    read_middle(Parts(middle, behind));
}

void PatternOutline::read_middle(Parts parts) {
    has_stars_ = !parts.empty();
    texts_.resize(1);
    for (const SyntaxNode& part : parts) {
        if (is_star(part)) {
            texts_.emplace_back();
        } else if (is_literal(part)) {
            texts_.back() += character_of(part);
        } else {
            is_all_ = false;
        }
    }
    std::erase(texts_, "");
    is_all_ = is_all_ && std::all_of(texts_.begin(), texts_.end(), [](const std::string& text) {
                  return text.size() <= longest_text;
              });
}

PatternOutline::Verdict PatternOutline::test(std::string_view url) const {
    const size_t fixed = start_.size() + end_.size();
    if (url.size() < fixed || !stand_in_front(start_, url) ||
        !stand_in_front(end_, url.substr(url.size() - end_.size()))) {
        return Verdict::does_not_cover;
    }
    if (!is_all_) {
        return Verdict::unknown;
    }
    std::string_view rest = url.substr(start_.size(), url.size() - fixed);
    if (!has_stars_) {
        return rest.empty() ? Verdict::covers : Verdict::does_not_cover;
    }
    for (const std::string& text : texts_) {
        const size_t at = rest.find(text);
        if (at == std::string_view::npos) {
            return Verdict::does_not_cover;
        }
        rest.remove_prefix(at + text.size());
    }
    return Verdict::covers;
}
