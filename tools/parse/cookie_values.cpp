#include "tools/parse/cookie_values.h"

#include "base/byte_search.h"
#include "base/logs.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

constexpr size_t block_size = sizeof(CookieName::Block);

const char* find_name(LineText header, size_t from, std::string_view name) {
    return find_text(header.text + from, header.text + header.size, name);
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

// The first of the places from which on the name stands, or null.
ZVR_WITH_AVX2 const char* first_place(const CookieName& name, const char* block, uint32_t places) {
    for (; places != 0; places = _blsr_u32(places)) {
        const char* const place = block + _tzcnt_u32(places);
        if (std::memcmp(place, name.text.data(), name.text.size()) == 0) {
            return place;
        }
    }
    return nullptr;
}

// Returns behind which place nothing is searched yet: only the shorter name may stand there.
ZVR_WITH_AVX2 size_t find_in_blocks(const CookieName& session, const CookieName& secondary,
                                    LineText header, CookiePlaces& found) {
    const size_t last = header.size - block_size - std::max(session.to_last, secondary.to_last);
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
            return at + block_size;
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
    }
}

CookieNames::CookieNames(std::string_view session, std::string_view secondary)
    : session_(session), secondary_(secondary),
      min_size_(std::min(session.size(), secondary.size())),
      min_block_size_(
          min_size_ == 0 ? SIZE_MAX : std::max(session_.to_last, secondary_.to_last) + block_size) {
}

CookiePlaces CookieNames::find_plainly(LineText header) const {
    return {find_name(header, 0, session_.text), find_name(header, 0, secondary_.text)};
}

CookiePlaces CookieNames::find_in(LineText header) const {
#if defined(__x86_64__)
    if (has_avx2 && header.size >= min_block_size_) {
        CookiePlaces found;
        const size_t searched = find_in_blocks(session_, secondary_, header, found);
        if (found.session == nullptr) {
            found.session = find_name(header, searched, session_.text);
        }
        if (found.secondary == nullptr) {
            found.secondary = find_name(header, searched, secondary_.text);
        }
        return found;
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
