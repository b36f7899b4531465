#include "base/text_hash.h"

#include <cstring>
#include <ctime>
#include <unistd.h>

namespace {

constexpr uint64_t odd_multiplier = 0x9e3779b97f4a7c15;
__extension__ using uint128 = unsigned __int128;

// Two of them: who knew the multiplier could write a word that wipes out all that came before it.
struct Seed {
    uint64_t first;
    uint64_t second;
};

Seed choose_seed() {
    Seed seed;
    if (getentropy(&seed, sizeof seed) != 0) {
        seed = {static_cast<uint64_t>(time(nullptr)), static_cast<uint64_t>(getpid())};
    }
    return seed;
}

const Seed seed = choose_seed();

uint64_t mix(uint64_t a, uint64_t b) {
    const uint128 product = static_cast<uint128>(a) * b;
    return static_cast<uint64_t>(product) ^ static_cast<uint64_t>(product >> 64);
}

uint64_t word_at(const char* position) {
    uint64_t word;
    std::memcpy(&word, position, sizeof word);
    return word;
}

} // namespace

uint64_t hash_text(std::string_view text) {
    constexpr size_t step = 2 * sizeof(uint64_t);
    uint64_t hash = seed.first ^ text.size();
    const auto add_step = [&](const char* position) {
        hash = mix(hash ^ word_at(position), seed.second ^ word_at(position + sizeof(uint64_t)));
    };
    const char* const end = text.data() + text.size();
    if (text.size() < step) {
        char padded[step] = {};
        text.copy(padded, text.size());
        add_step(padded);
        return mix(hash, odd_multiplier);
    }
    for (const char* position = text.data(); end - position > static_cast<long>(step);
         position += step) {
        add_step(position);
    }
    add_step(end - step); // overlaps the one before rather than being pieced together
    return mix(hash, odd_multiplier);
}
