#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

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

// The first occurrence of `wanted` in [position, end), or null. Never reads outside the range.
inline char* find_text_plainly(char* position, char* end, std::string_view wanted) {
    const size_t at = std::string_view(position, static_cast<size_t>(end - position)).find(wanted);
    return at == std::string_view::npos ? nullptr : position + at;
}

inline char* find_text(char* position, char* end, std::string_view wanted) {
#if defined(__SSE2__)
    constexpr long width = sizeof(__m128i);
    const long to_last = static_cast<long>(wanted.size()) - 1; // from the first character
    if (to_last < 1 || end - position < width + to_last) {
        return end - position <= to_last ? nullptr : find_text_plainly(position, end, wanted);
    }
    const __m128i all_first = _mm_set1_epi8(wanted.front());
    const __m128i all_last = _mm_set1_epi8(wanted.back());
    char* const last_block = end - to_last - width; // overlaps the one before
    while (true) {
        __m128i first;
        __m128i last;
        std::memcpy(&first, position, sizeof first);
        std::memcpy(&last, position + to_last, sizeof last);
        const __m128i fits =
            _mm_and_si128(_mm_cmpeq_epi8(first, all_first), _mm_cmpeq_epi8(last, all_last));
        for (auto places = static_cast<unsigned>(_mm_movemask_epi8(fits)); places != 0;
             places &= places - 1) {
            char* const found = position + __builtin_ctz(places);
            if (std::memcmp(found, wanted.data(), wanted.size()) == 0) {
                return found;
            }
        }
        if (position == last_block) {
            return nullptr;
        }
        position = position + width < last_block ? position + width : last_block;
    }
#else
    return find_text_plainly(position, end, wanted);
#endif
}

// Searches in a line that LineReader has cut: up to room_behind_line bytes behind its terminator
// are read, but never told of.

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
