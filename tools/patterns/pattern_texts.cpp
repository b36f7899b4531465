#include "tools/patterns/pattern_texts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr size_t max_ends = 16;
constexpr size_t max_end_length = 15; // which need no memory of their own
constexpr size_t max_texts = 256;
constexpr uint32_t max_copies = 4; // of a byte that is repeated

// What is known where a way through the pattern has come to: any way there has consumed a text that
// ends in one of `ends`, and that holds one text of each of `required`.
struct Trail {
    RequiredTexts ends;
    std::vector<RequiredTexts> required;
};

RequiredTexts any_end() {
    return {""};
}

void set_ends(Trail& trail, RequiredTexts ends) {
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
    trail.ends = ends.size() > max_ends || ends.front().empty() ? any_end() : std::move(ends);
}

void add_texts(RequiredTexts& texts, const RequiredTexts& more) {
    texts.insert(texts.end(), more.begin(), more.end());
}

size_t shortest_length(const RequiredTexts& texts) {
    const auto is_shorter = [](const auto& a, const auto& b) { return a.size() < b.size(); };
    return std::min_element(texts.begin(), texts.end(), is_shorter)->size();
}

// Before the ends are lost, or become many.
void require_ends(Trail& trail) {
    if (shortest_length(trail.ends) >= shortest_required_text) {
        trail.required.push_back(trail.ends);
    }
}

void lose_ends(Trail& trail) {
    require_ends(trail);
    trail.ends = any_end();
}

// Four characters in a row are in one text or in the other.
void shorten_ends(Trail& trail) {
    require_ends(trail);
    for (std::string& end : trail.ends) {
        end.erase(0, end.size() - std::min(end.size(), shortest_required_text - 1));
    }
    set_ends(trail, std::move(trail.ends));
}

// The bytes of the set, or one more than max_ends when there are more.
std::string first_bytes(const ByteSet& bytes) {
    std::string first;
    for (size_t byte = bytes._Find_first(); byte < bytes.size() && first.size() <= max_ends;
         byte = bytes._Find_next(byte)) {
        first += static_cast<char>(byte);
    }
    return first;
}

void consume(Trail& trail, const ByteSet& bytes) {
    const std::string choice = first_bytes(bytes);
    if (choice.size() != 1) {
        require_ends(trail);
    }
    if (choice.empty() || choice.size() > max_ends) {
        trail.ends = any_end();
        return;
    }
    if (choice.size() * trail.ends.size() > max_ends) {
        trail.ends = any_end();
    }
    const size_t known = trail.ends.size();
    for (size_t i = 1; i < choice.size(); ++i) {
        for (size_t end = 0; end < known; ++end) {
            trail.ends.push_back(trail.ends[end] + choice[i]);
        }
    }
    for (size_t end = 0; end < known; ++end) {
        trail.ends[end] += choice[0];
    }
    if (trail.ends.front().size() >= max_end_length) {
        shorten_ends(trail);
    }
}

void go_through(Trail& trail, const SyntaxNode& node);

// The requirement that is met by the fewest URLs, as far as can be told; null when there is none.
const RequiredTexts* hardest(const std::vector<RequiredTexts>& required) {
    const auto is_harder = [](const RequiredTexts& a, const RequiredTexts& b) {
        return std::pair(a.size(), shortest_length(b)) < std::pair(b.size(), shortest_length(a));
    };
    const auto found = std::min_element(required.begin(), required.end(), is_harder);
    return found == required.end() ? nullptr : &*found;
}

// One of the ways that begin where the trail has come to and go through a part each.
void go_through_one(Trail& trail, const std::vector<const SyntaxNode*>& parts) {
    require_ends(trail);
    RequiredTexts ends;
    RequiredTexts required;
    bool all_require = true;
    for (const SyntaxNode* part : parts) {
        Trail way = {trail.ends, {}};
        go_through(way, *part);
        add_texts(ends, way.ends);
        require_ends(way);
        const RequiredTexts* texts = hardest(way.required);
        all_require = all_require && texts != nullptr && required.size() <= max_texts;
        if (all_require) {
            add_texts(required, *texts);
        }
    }
    if (all_require && required.size() <= max_texts) {
        trail.required.push_back(std::move(required));
    }
    set_ends(trail, std::move(ends));
}

// How a part can end that is gone through some times, at least once.
Trail go_through_last(const SyntaxNode& part, uint32_t least) {
    Trail trail = {any_end(), {}};
    const uint32_t copies = part.kind == SyntaxKind::bytes ? std::clamp(least, 1U, max_copies) : 1;
    for (uint32_t i = 0; i < copies; ++i) {
        go_through(trail, part);
    }
    return trail;
}

void go_through_repetition(Trail& trail, const SyntaxNode& node) {
    const SyntaxNode& part = node.parts.front();
    if (node.least == 0 && node.most == 1) {
        const SyntaxNode nothing;
        go_through_one(trail, {&part, &nothing});
        return;
    }
    if (part.kind == SyntaxKind::bytes) {
        for (uint32_t i = 0; i < std::min(node.least, max_copies); ++i) {
            consume(trail, part.bytes);
        }
        if (node.least == node.most && node.least <= max_copies) {
            return;
        }
    }
    require_ends(trail);
    Trail last = go_through_last(part, node.least);
    if (node.least == 0) {
        add_texts(last.ends, trail.ends);
    } else {
        std::move(last.required.begin(), last.required.end(), std::back_inserter(trail.required));
    }
    set_ends(trail, std::move(last.ends));
}

void go_through(Trail& trail, const SyntaxNode& node) {
    switch (node.kind) {
    case SyntaxKind::bytes:
        consume(trail, node.bytes);
        break;
    case SyntaxKind::sequence:
        for (const SyntaxNode& part : node.parts) {
            go_through(trail, part);
        }
        break;
    case SyntaxKind::choice: {
        std::vector<const SyntaxNode*> parts;
        for (const SyntaxNode& part : node.parts) {
            parts.push_back(&part);
        }
        go_through_one(trail, parts);
        break;
    }
    case SyntaxKind::repetition:
        go_through_repetition(trail, node);
        break;
    case SyntaxKind::back_reference:
        lose_ends(trail);
        break;
    default: // an empty text
        break;
    }
}

} // namespace

std::vector<RequiredTexts> find_required_texts(const PatternSyntax& syntax) {
    const ByteSet null_byte = ByteSet().set(0);
    Trail trail = {any_end(), {}};
    consume(trail, null_byte);
    go_through(trail, syntax.root);
    consume(trail, null_byte);
    require_ends(trail);
    return std::move(trail.required);
}
