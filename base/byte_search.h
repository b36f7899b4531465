#pragma once

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Searches in a line that LineReader has cut, whose texts are so short that a call of the library's
// search would cost more than the search. Up to room_behind_line bytes behind its terminator are
// read, but never told of.

// The first character from `position` on that is a blank, a control character or the terminator.
inline char* find_blank_or_control(char* position) {
#if defined(__SSE2__)
    const __m128i blanks = _mm_set1_epi8(' ');
    while (true) {
        __m128i block;
        std::memcpy(&block, position, sizeof block);
        const __m128i found = _mm_cmpeq_epi8(_mm_min_epu8(block, blanks), block);
        const auto places = static_cast<unsigned>(_mm_movemask_epi8(found));
        if (places != 0) {
            return position + static_cast<unsigned>(__builtin_ctz(places));
        }
        position += sizeof block;
    }
#else
    while (static_cast<unsigned char>(*position) > ' ') {
        ++position;
    }
    return position;
#endif
}

// A bit for each of the 64 characters from `position` on that is `wanted`, the first one's lowest.
// Only bits of characters before the terminator mean anything.
inline uint64_t places_in_line(const char* position, char wanted) {
    uint64_t places = 0;
#if defined(__SSE2__)
    const __m128i all_wanted = _mm_set1_epi8(wanted);
    for (unsigned at = 0; at < 64; at += sizeof all_wanted) {
        __m128i block;
        std::memcpy(&block, position + at, sizeof block);
        const auto found =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, all_wanted)));
        places |= uint64_t{found} << at;
    }
#else
    for (unsigned at = 0; at < 64 && position[at] != '\0'; ++at) {
        places |= uint64_t{position[at] == wanted} << at;
    }
#endif
    return places;
}

// The first `wanted` in [position, end), or null.
inline char* find_in_line(char* position, const char* end, char wanted) {
#if defined(__SSE2__)
    const __m128i all_wanted = _mm_set1_epi8(wanted);
    for (; position < end; position += sizeof all_wanted) {
        __m128i block;
        std::memcpy(&block, position, sizeof block);
        const auto places =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, all_wanted)));
        if (places != 0) {
            char* const found = position + static_cast<unsigned>(__builtin_ctz(places));
            return found < end ? found : nullptr;
        }
    }
    return nullptr;
#else
    return static_cast<char*>(std::memchr(position, wanted, static_cast<size_t>(end - position)));
#endif
}
