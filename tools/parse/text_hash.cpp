#include "tools/parse/text_hash.h"

#include <cstring>
#include <ctime>
#include <unistd.h>

namespace {

__extension__ using uint128 = unsigned __int128;

uint64_t choose_seed() {
    uint64_t seed;
    if (getentropy(&seed, sizeof seed) != 0) {
        seed = static_cast<uint64_t>(time(nullptr)) << 32 ^ static_cast<uint64_t>(getpid());
    }
    return seed;
}

const uint64_t seed = choose_seed();

uint64_t mix(uint64_t a) {
    constexpr uint64_t multiplier = 0x9e3779b97f4a7c15;
    const uint128 product = static_cast<uint128>(a) * multiplier;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

} // namespace

uint64_t hash_text(std::string_view text) {
    uint64_t hash = seed ^ text.size();
    const char* position = text.data();
    size_t left = text.size();
    for (; left >= sizeof(uint64_t); left -= sizeof(uint64_t), position += sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, position, sizeof word);
        hash = mix(hash ^ word);
    }
    uint64_t word = 0;
    std::memcpy(&word, position, left);
    return mix(hash ^ word);
}
