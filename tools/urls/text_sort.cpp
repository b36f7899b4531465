#include "tools/urls/text_sort.h"

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>

namespace {

constexpr size_t cached_length = sizeof(uint64_t);
constexpr ptrdiff_t few = 24; // texts that are sorted without dividing them further

using Position = std::vector<SortableText>::iterator;

std::string_view text_from(const SortableText& text, size_t depth) {
    return {text.characters + depth, text.size - depth};
}

void cache_characters(Position begin, Position end, size_t depth) {
    for (Position text = begin; text != end; ++text) {
        text->cached = order_prefix(text_from(*text, depth));
    }
}

bool ends_in(uint64_t characters) {
    return (characters & 0xff) == 0;
}

// `depth`: characters that all the texts begin with, before the cached ones.
void sort_few(Position begin, Position end, size_t depth) {
    std::sort(begin, end, [&](const SortableText& a, const SortableText& b) {
        if (a.cached != b.cached || ends_in(a.cached)) {
            return a.cached < b.cached;
        }
        return text_from(a, depth + cached_length) < text_from(b, depth + cached_length);
    });
}

// The places between which the texts' cached characters equal the pivot's; less ones stand before,
// greater ones behind.
std::pair<Position, Position> divide(Position begin, Position end, uint64_t pivot) {
    Position less_end = begin;
    Position greater_begin = end;
    for (Position text = begin; text != greater_begin;) {
        if (text->cached < pivot) {
            std::swap(*text++, *less_end++);
        } else if (text->cached > pivot) {
            std::swap(*text, *--greater_begin);
        } else {
            ++text;
        }
    }
    return {less_end, greater_begin};
}

struct Range {
    Position begin;
    Position end;
    size_t depth; // as in sort_few
};

} // namespace

// A quicksort by the next eight characters, with a pivot that nobody can foresee.
void sort_texts(std::vector<SortableText>& texts) {
    std::minstd_rand random(std::random_device{}());
    cache_characters(texts.begin(), texts.end(), 0);
    std::vector<Range> ranges = {{texts.begin(), texts.end(), 0}};
    while (!ranges.empty()) {
        const Range range = ranges.back();
        ranges.pop_back();
        const ptrdiff_t size = range.end - range.begin;
        if (size <= few) {
            sort_few(range.begin, range.end, range.depth);
            continue;
        }
        const uint64_t pivot = range.begin[static_cast<ptrdiff_t>(random()) % size].cached;
        const auto [equal_begin, equal_end] = divide(range.begin, range.end, pivot);
        ranges.push_back({range.begin, equal_begin, range.depth});
        ranges.push_back({equal_end, range.end, range.depth});
        if (!ends_in(pivot)) {
            const size_t deeper = range.depth + cached_length;
            cache_characters(equal_begin, equal_end, deeper);
            ranges.push_back({equal_begin, equal_end, deeper});
        }
    }
}
