#include "tools/parse/quote_index.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

#if defined(__x86_64__)
#define ZVR_WITH_AVX2 [[gnu::target("avx2,bmi,popcnt")]]

constexpr size_t block_size = 64;

// A bit for each character of a block that is a quote.
ZVR_WITH_AVX2 inline uint64_t quotes_in(const char* block) {
    const __m256i quote = _mm256_set1_epi8('"');
    __m256i low;
    __m256i high;
    std::memcpy(&low, block, sizeof low);
    std::memcpy(&high, block + sizeof low, sizeof high);
    const auto low_bits =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, quote)));
    const auto high_bits =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, quote)));
    return uint64_t{high_bits} << 32 | low_bits;
}

// Writes the offset of the first quote and takes it out.
ZVR_WITH_AVX2 inline void write_first(uint16_t* place, uint64_t& quotes, size_t block_offset) {
    *place = static_cast<uint16_t>(block_offset + _tzcnt_u64(quotes));
    quotes = _blsr_u64(quotes);
}

// Appends the offsets of a block's quotes; returns the end of all. Most blocks have at most four:
// as many are written without asking, since the processor could not foresee the answer.
ZVR_WITH_AVX2 inline uint16_t* append(uint16_t* end, uint64_t quotes, size_t block_offset) {
    const int count = __builtin_popcountll(quotes);
    write_first(end, quotes, block_offset);
    write_first(end + 1, quotes, block_offset);
    write_first(end + 2, quotes, block_offset);
    write_first(end + 3, quotes, block_offset);
    for (int i = 4; i < count; ++i) {
        write_first(end + i, quotes, block_offset);
    }
    return end + count;
}

ZVR_WITH_AVX2 void index_quotes_in_blocks(const char* text, size_t size, QuoteOffsets& offsets) {
    uint16_t* end = offsets;
    size_t done = 0;
    for (; done + block_size <= size; done += block_size) {
        end = append(end, quotes_in(text + done), done);
    }
    if (done != size && done != 0) { // the last block overlaps the one before
        const size_t start = size - block_size;
        const uint64_t already_seen = (uint64_t{1} << (done - start)) - 1;
        end = append(end, quotes_in(text + start) & ~already_seen, start);
    } else if (done != size) {
        char padded[block_size] = {};
        std::memcpy(padded, text, size);
        end = append(end, quotes_in(padded), 0);
    }
    *end = static_cast<uint16_t>(size);
}

const bool has_avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                      __builtin_cpu_supports("popcnt");
#endif

} // namespace

void index_quotes(const char* text, size_t size, QuoteOffsets& offsets) {
#if defined(__x86_64__)
    if (has_avx2) {
        index_quotes_in_blocks(text, size, offsets);
        return;
    }
#endif
    index_quotes_plainly(text, size, offsets);
}

void index_quotes_plainly(const char* text, size_t size, QuoteOffsets& offsets) {
    uint16_t* end = offsets;
    for (size_t i = 0; i < size; ++i) {
        if (text[i] == '"') {
            *end++ = static_cast<uint16_t>(i);
        }
    }
    *end = static_cast<uint16_t>(size);
}
