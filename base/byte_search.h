#pragma once

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Searches in short texts, where a call of the library's search would cost more than the search.

// The first character in [position, end) that is `a` or `b`, or `end`. Never reads outside the
// range.
inline char* find_either_plainly(char* position, char* end, char a, char b) {
    while (position != end && *position != a && *position != b) {
        ++position;
    }
    return position;
}

inline char* find_either(char* position, char* end, char a, char b) {
#if defined(__SSE2__)
    constexpr long width = sizeof(__m128i);
    const __m128i all_a = _mm_set1_epi8(a);
    const __m128i all_b = _mm_set1_epi8(b);
    for (; end - position >= width; position += width) {
        __m128i block;
        std::memcpy(&block, position, sizeof block);
        const __m128i found =
            _mm_or_si128(_mm_cmpeq_epi8(block, all_a), _mm_cmpeq_epi8(block, all_b));
        const auto places = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (places != 0) {
            return position + __builtin_ctz(places);
        }
    }
#endif
    return find_either_plainly(position, end, a, b);
}
