#include "base/text_hash.h"

#include "base/short_text.h"

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

uint64_t hash_text(std::string_view text, uint64_t before) {
    constexpr size_t step = 2 * sizeof(uint64_t);
    uint64_t hash = before ^ seed.first ^ text.size();
    const auto add_step = [&](uint64_t low, uint64_t high) {
        hash = mix(hash ^ low, seed.second ^ high);
    };
    const auto add_step_at = [&](const char* position) {
        add_step(word_at(position), word_at(position + sizeof(uint64_t)));
    };
    if (text.size() < step) {
        const ShortText words(text.data(), text.size());
        add_step(words.low, words.high);
        return mix(hash, odd_multiplier);
    }
    const char* const end = text.data() + text.size();
    for (const char* position = text.data(); end - position > static_cast<long>(step);
         position += step) {
        add_step_at(position);
    }
    add_step_at(end - step); // overlaps the one before rather than being pieced together
    return mix(hash, odd_multiplier);
}
