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

    std::string_view view() const { return {reinterpret_cast<const char*>(words), sizeof words}; }

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

uint64_t hash_parts(std::string_view method, std::string_view host, std::string_view url) {
    return hash_text(url, hash_text(host, hash_text(method)));
}

} // namespace

uint64_t hash_url_key(const UrlParts& parts) {
    MethodWords method(parts.method);
    method.make_small();
    return hash_parts(method.view(), parts.host, parts.url);
}

uint64_t hash_url_key(std::string_view key) {
    const UrlKey parts(key);
    return hash_parts(parts.method, parts.host, parts.url);
}

// The host ends with a terminator.
size_t url_key_size(const UrlParts& parts) {
    return max_method_length + parts.host.size() + 1 + parts.url.size();
}

void write_url_key(const UrlParts& parts, char* key) {
    MethodWords method(parts.method);
    method.make_small();
    std::memcpy(key, method.words, sizeof method.words);
    char* const host = key + max_method_length;
    std::memcpy(host, parts.host.data(), parts.host.size());
    char* const host_end = host + parts.host.size();
    *host_end = '\0';
    std::memcpy(host_end + 1, parts.url.data(), parts.url.size());
}

UrlKey::UrlKey(std::string_view key)
    : method(key.substr(0, max_method_length)), host(key.data() + max_method_length),
      url(key.substr(max_method_length + std::strlen(host) + 1)) {}

bool UrlKey::has_ignored_query() const {
    return ignore_query_flag != 0 && !url.empty() && is_query_separator(url.back());
}

bool has_standard_spelling(const alInfo& request) {
    return !MethodWords(request.method).has_small_letter();
}

void standard_method(std::string_view key, char (&method)[max_method_length + 1]) {
    MethodWords standard(key.data());
    standard.make_capital();
    std::memcpy(method, standard.words, sizeof standard.words);
    method[max_method_length] = '\0';
}
