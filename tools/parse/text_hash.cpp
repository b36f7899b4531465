#include "tools/parse/text_hash.h"

#include <ctime>
#include <unistd.h>

namespace {

uint64_t choose_seed() {
    uint64_t seed;
    if (getentropy(&seed, sizeof seed) != 0) {
        seed = static_cast<uint64_t>(time(nullptr)) << 32 ^ static_cast<uint64_t>(getpid());
    }
    return seed;
}

} // namespace

uint64_t hash_seed() {
    static const uint64_t seed = choose_seed();
    return seed;
}
