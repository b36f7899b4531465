#include "tools/patterns/text_hash.h"

#include <random>

uint64_t hash_seed() {
    static const uint64_t seed = [] {
        std::random_device device;
        return static_cast<uint64_t>(device()) << 32 | device();
    }();
    return seed;
}
