#include "tests/unit_helpers.h"

#include <vector>

void ZVR_CHECK(Choices& choices);

void* real_reserve_pages(size_t size) asm("__real__Z13reserve_pagesm");
void* reserve_pages_of_input(size_t size) asm("__wrap__Z13reserve_pagesm");

namespace {

std::vector<std::unique_ptr<char[]>> blocks; // of one input

} // namespace

// Small blocks are those of texts, which nobody gives back.
void* reserve_pages_of_input(size_t size) {
    return size >= size_t{1} << 20 ? real_reserve_pages(size)
                                   : blocks.emplace_back(new char[size]()).get();
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
