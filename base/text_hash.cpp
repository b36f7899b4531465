#include "base/text_hash.h"

#include <ctime>
#include <unistd.h>

namespace {

HashSeed choose_seed() {
    HashSeed seed;
    if (getentropy(&seed, sizeof seed) != 0) {
        seed = {static_cast<uint64_t>(time(nullptr)), static_cast<uint64_t>(getpid())};
    }
    return seed;
}

} // namespace

const HashSeed hash_seed = choose_seed();
