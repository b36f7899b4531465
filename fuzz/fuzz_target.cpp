#include "tests/unit_helpers.h"

#include <mutex>
#include <sys/mman.h>
#include <vector>

// The program gives the blocks of its texts back by its end, which never comes here: the linker
// puts stand-ins in the place of mmap, so that they live for one input only.

void ZVR_CHECK(Choices& choices);

void* real_mmap(void*, size_t, int, int, int, off_t) asm("__real_mmap64");
void* mmap_for_input(void*, size_t, int, int, int, off_t) asm("__wrap_mmap64");

namespace {

std::mutex mutex;                            // of the blocks: worker threads ask for them, too
std::vector<std::unique_ptr<char[]>> blocks; // of one input

} // namespace

// Large blocks are those of tables, which are given back.
void* mmap_for_input(void* place, size_t size, int protection, int flags, int file, off_t offset) {
    const bool is_block_of_texts = (flags & MAP_NORESERVE) != 0 && size < size_t{1} << 20;
    const std::lock_guard lock(mutex);
    return is_block_of_texts ? blocks.emplace_back(new char[size]()).get()
                             : real_mmap(place, size, protection, flags, file, offset);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Choices choices(std::string_view(reinterpret_cast<const char*>(data), size));
    ZVR_CHECK(choices);
    blocks.clear();
    if (testing::Test::HasFailure()) {
        std::abort();
    }
    return 0;
}
