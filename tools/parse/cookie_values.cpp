#include "tools/parse/cookie_values.h"

#include "base/logs.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr size_t block_size = sizeof(CookieName::Block);

const char* find_name(LineText header, std::string_view name) {
    const size_t at = std::string_view(header.text, header.size).find(name);
    return at == std::string_view::npos ? nullptr : header.text + at;
}

#if defined(__x86_64__)
#define ZVR_WITH_AVX2 [[gnu::target("avx2,bmi")]]

const bool has_avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");

ZVR_WITH_AVX2 inline __m256i block_at(const char* place) {
    __m256i block;
    std::memcpy(&block, place, sizeof block);
    return block;
}

// A bit for each character that is the same in both.
ZVR_WITH_AVX2 inline uint32_t equal_characters(__m256i a, __m256i b) {
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(a, b)));
}

// A bit for each place of a block from which on the name may stand.
ZVR_WITH_AVX2 inline uint32_t possible_places(const CookieName& name, const char* block) {
    const __m256i first = _mm256_cmpeq_epi8(block_at(block), block_at(name.all_first.data()));
    const __m256i last =
        _mm256_cmpeq_epi8(block_at(block + name.to_last), block_at(name.all_last.data()));
    return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_and_si256(first, last)));
}

// Whether the name stands at `place`. A call of the library's comparison would cost more.
ZVR_WITH_AVX2 inline bool stands_at(const char* place, const CookieName& name) {
    const uint32_t equal = equal_characters(block_at(place), block_at(name.all.data()));
    return (~equal & name.all_places) == 0;
}

// The first of the places from which on the name stands, or null.
ZVR_WITH_AVX2 inline const char* first_place(const CookieName& name, const char* block,
                                             uint32_t places) {
    for (; places != 0; places = _blsr_u32(places)) {
        const char* const place = block + _tzcnt_u32(places);
        if (stands_at(place, name)) {
            return place;
        }
    }
    return nullptr;
}

// No name stands at the end of the header and behind it: the terminator would be part of it.
ZVR_WITH_AVX2 CookiePlaces find_in_blocks(const CookieName& session, const CookieName& secondary,
                                          LineText header, size_t last) {
    CookiePlaces found;
    for (size_t at = 0;; at = std::min(at + block_size, last)) { // the last overlaps another
        const char* const block = header.text + at;
        const uint32_t of_session = possible_places(session, block);
        const uint32_t of_secondary = possible_places(secondary, block);
        if (of_session != 0 && found.session == nullptr) {
            found.session = first_place(session, block, of_session);
        }
        if (of_secondary != 0 && found.secondary == nullptr) {
            found.secondary = first_place(secondary, block, of_secondary);
        }
        if (at == last) {
            return found;
        }
    }
}

// Copies two blocks, which overlap in a value of less than two.
ZVR_WITH_AVX2 size_t copy_in_blocks(const char* start, size_t limit, CookieValue& value) {
    const __m256i semicolons = _mm256_set1_epi8(';');
    const size_t second = limit - block_size;
    const __m256i low = block_at(start);
    const __m256i high = block_at(start + second);
    std::memcpy(value, &low, sizeof low);
    std::memcpy(value + second, &high, sizeof high);
    const uint64_t all_ends =
        equal_characters(low, semicolons) | uint64_t{equal_characters(high, semicolons)} << second;
    return all_ends == 0 ? limit : _tzcnt_u64(all_ends);
}
#endif

} // namespace

CookieName::CookieName(std::string_view name) : text(name) {
    if (!name.empty()) {
        to_last = name.size() - 1;
        all_first.fill(name.front());
        all_last.fill(name.back());
        const size_t size = name.copy(all.data(), all.size());
        all_places = static_cast<uint32_t>((uint64_t{1} << size) - 1);
    }
}

CookieNames::CookieNames(std::string_view session, std::string_view secondary)
    : session_(session), secondary_(secondary),
      min_size_(std::min(session.size(), secondary.size())) {
    // A block that begins in a header may be read a block behind it, which room_behind_line allows.
    static_assert(2 * block_size <= room_behind_line);
    if (min_size_ != 0 && std::max(session_.to_last, secondary_.to_last) < block_size) {
        min_block_size_ = block_size + min_size_ - 1;
    }
}

CookiePlaces CookieNames::find_plainly(LineText header) const {
    return {find_name(header, session_.text), find_name(header, secondary_.text)};
}

CookiePlaces CookieNames::find_in(LineText header) const {
#if defined(__x86_64__)
    if (has_avx2 && header.size >= min_block_size_) {
        return find_in_blocks(session_, secondary_, header, header.size - min_block_size_);
    }
#endif
    return find_plainly(header);
}

size_t copy_cookie_value_plainly(const char* start, size_t rest, CookieValue& value) {
    const std::string_view text(start, std::min(rest, sizeof value));
    return text.copy(value, text.find(';'));
}

size_t copy_cookie_value(const char* start, size_t rest, CookieValue& value) {
#if defined(__x86_64__)
    if (has_avx2 && rest >= block_size) {
        return copy_in_blocks(start, std::min(rest, sizeof value), value);
    }
#endif
    return copy_cookie_value_plainly(start, rest, value);
}

size_t store_cookie_value(const char* start, size_t rest, CookieValue& value) {
    size_t size = copy_cookie_value(start, rest, value);
    if (size == sizeof value) {
        DEBUG_LOG(2, "load_url_info",
                  "Cookie length is more than max_cookie_length(64), truncating cookie value.");
        --size;
    }
    value[size] = '\0';
    return size;
}
