#include "tools/parse/url_key.h"

#include "base/text_hash.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/counted_url.h"

#include <cstdint>
#include <cstring>

namespace {

// Eight characters, the bits of which are looked at together.
constexpr uint64_t in_each = 0x0101010101010101;

// The highest bit of each character from `first` to `last`, which are below 128.
uint64_t characters_between(uint64_t word, char first, char last) {
    const uint64_t low_bits = word & (in_each * 0x7f);
    const uint64_t reaches_first = low_bits + in_each * static_cast<uint64_t>(0x80 - first);
    const uint64_t exceeds_last = low_bits + in_each * static_cast<uint64_t>(0x7f - last);
    return reaches_first & ~exceeds_last & ~word & (in_each * 0x80);
}

constexpr int letter_case_shift = 2; // from the highest bit to the one that tells capitals

struct MethodWords {
    uint64_t words[max_method_length / sizeof(uint64_t)];

    explicit MethodWords(const char* method) { std::memcpy(words, method, sizeof words); }

    bool has_small_letter() const {
        return (characters_between(words[0], 'a', 'z') | characters_between(words[1], 'a', 'z')) !=
               0;
    }
    void make_small() {
        for (uint64_t& word : words) {
            word |= characters_between(word, 'A', 'Z') >> letter_case_shift;
        }
    }
    void make_capital() {
        for (uint64_t& word : words) {
            word &= ~(characters_between(word, 'a', 'z') >> letter_case_shift);
        }
    }
};
static_assert(sizeof(MethodWords) == max_method_length);

// Two hashes that do not wait for one another, which the method joins.
uint64_t hash_parts(const MethodWords& method, std::string_view host, std::string_view url) {
    return folded_product(hash_text(host) ^ method.words[0], hash_text(url) ^ method.words[1]);
}

} // namespace

uint64_t hash_url_key(std::string_view key) {
    const UrlKey parts(key);
    return hash_parts(MethodWords(parts.method.data()), parts.host, parts.url);
}

// The texts are hashed where they stand: words of a fresh copy would have to wait for it.
uint64_t write_url_key(const UrlParts& parts, char* key) {
    MethodWords method(parts.method);
    method.make_small();
    const uint64_t hash = hash_parts(method, parts.host, parts.url);
    std::memcpy(key, method.words, sizeof method.words);
    char* const host = key + max_method_length;
    std::memcpy(host, parts.host.data(), parts.host.size());
    char* const host_end = host + parts.host.size();
    *host_end = '\0';
    std::memcpy(host_end + 1, parts.url.data(), parts.url.size());
    return hash;
}

UrlKey::UrlKey(std::string_view key)
    : method(key.substr(0, max_method_length)), host(key.data() + max_method_length),
      url(key.substr(max_method_length + std::strlen(host) + 1)) {}

bool UrlKey::has_ignored_query() const {
    return ignore_query_flag != 0 && !url.empty() && is_query_separator(url.back());
}

bool has_no_small_letter(const char* method) {
    return !MethodWords(method).has_small_letter();
}

void standard_method(std::string_view key, char (&method)[max_method_length + 1]) {
    MethodWords standard(key.data());
    standard.make_capital();
    std::memcpy(method, standard.words, sizeof standard.words);
    method[max_method_length] = '\0';
}
