#include "base/line_index.h"

#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

bool index_lines_plainly(char* begin, char* end, char mark, LineIndexEnds& ends) {
    bool has_nul = false;
    for (char* position = begin; position != end; ++position) {
        if (*position == '\n') {
            *ends.line_feeds++ = position;
        }
        if (*position == mark) {
            *ends.marks++ = position;
        }
        has_nul = has_nul || *position == '\0';
    }
    return has_nul;
}

#if defined(__x86_64__)

namespace {

#define ZVR_WITH_AVX2 [[gnu::target("avx2,bmi,popcnt")]]

constexpr long block_size = 64;

struct Block {
    __m256i low;
    __m256i high;
};

ZVR_WITH_AVX2 inline Block load(const char* position) {
    Block block;
    std::memcpy(&block.low, position, sizeof block.low);
    std::memcpy(&block.high, position + sizeof block.low, sizeof block.high);
    return block;
}

// A bit for each character of the block that is the one `wanted` consists of.
ZVR_WITH_AVX2 inline uint64_t places_of(__m256i wanted, const Block& block) {
    const auto low =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(block.low, wanted)));
    const auto high =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(block.high, wanted)));
    return uint64_t{high} << 32 | low;
}

// Appends the first `count` of the places in a block, whether there are as many or not: the
// processor could not foresee the answer.
template <int count>
ZVR_WITH_AVX2 inline void write_first(char** list, uint64_t& places, char* block) {
    for (int i = 0; i < count; ++i) {
        list[i] = block + _tzcnt_u64(places);
        places = _blsr_u64(places);
    }
}

// Appends the places in a block, of which most have at most `usual_count`.
template <int usual_count>
ZVR_WITH_AVX2 inline char** append(char** list, uint64_t places, char* block) {
    static_assert(usual_count <= line_index_slack);
    char** const end = list + __builtin_popcountll(places);
    write_first<usual_count>(list, places, block);
    if (end - list > usual_count) [[unlikely]] {
        for (list += usual_count; list != end; ++list) {
            write_first<1>(list, places, block);
        }
    }
    return end;
}

ZVR_WITH_AVX2 bool index_in_blocks(char* begin, char* end, char mark, LineIndexEnds& ends) {
    const __m256i line_feed = _mm256_set1_epi8('\n');
    const __m256i all_mark = _mm256_set1_epi8(mark);
    __m256i least = _mm256_set1_epi8(-1); // of the characters in each column
    LineIndexEnds new_ends = ends;
    char* position = begin;
    for (char* const rest = end - (end - begin) % block_size; position != rest;
         position += block_size) {
        const Block block = load(position);
        least = _mm256_min_epu8(least, _mm256_min_epu8(block.low, block.high));
        new_ends.line_feeds = append<1>(new_ends.line_feeds, places_of(line_feed, block), position);
        new_ends.marks = append<4>(new_ends.marks, places_of(all_mark, block), position);
    }
    ends = new_ends;
    const bool has_nul =
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(least, _mm256_setzero_si256())) != 0;
    return index_lines_plainly(position, end, mark, ends) || has_nul;
}

const bool has_avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                      __builtin_cpu_supports("popcnt");

} // namespace

bool index_lines(char* begin, char* end, char mark, LineIndexEnds& ends) {
    return has_avx2 ? index_in_blocks(begin, end, mark, ends)
                    : index_lines_plainly(begin, end, mark, ends);
}

#else

bool index_lines(char* begin, char* end, char mark, LineIndexEnds& ends) {
    return index_lines_plainly(begin, end, mark, ends);
}

#endif
