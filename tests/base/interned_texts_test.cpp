#include "base/interned_texts.h"

#include "base/text_hash.h"

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// Whether the address belongs to memory of this process.
bool is_mapped(uintptr_t page) {
    unsigned char is_resident;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the system is asked, nobody reads there
    return mincore(reinterpret_cast<void*>(page), 1, &is_resident) == 0 || errno != ENOMEM;
}

std::string text_number(uint32_t number, size_t size) {
    const std::string digits = std::to_string(number);
    return digits + std::string(size - digits.size(), 'x');
}

// Interns different texts and returns the pages in which they begin.
std::set<uintptr_t> fill(InternedTexts& texts, uint32_t count, size_t text_size) {
    const auto page_size = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    std::set<uintptr_t> pages;
    for (uint32_t i = 0; i < count; ++i) {
        const std::string text = text_number(i, text_size);
        EXPECT_EQ(texts.intern(text, hash_text(text)), i);
        pages.insert(reinterpret_cast<uintptr_t>(texts.text(i).data()) / page_size * page_size);
    }
    return pages;
}

} // namespace

TEST(InternedTexts, GiveAllMemoryBackAndBeginAnew) {
    InternedTexts texts;
    for (const size_t text_size : {size_t{40}, size_t{9} << 20, size_t{7}}) {
        const uint32_t count = text_size > 1000 ? 3 : 200'000; // of several blocks each
        const std::set<uintptr_t> pages = fill(texts, count, text_size);
        EXPECT_GT(texts.held_size(), count * text_size);
        const std::string last = text_number(count - 1, text_size);
        EXPECT_EQ(texts.find(last, hash_text(last)), count - 1);

        texts.release();

        EXPECT_EQ(texts.held_size(), 0);
        EXPECT_EQ(texts.count(), 0);
        EXPECT_EQ(texts.find(last, hash_text(last)), InternedTexts::unknown);
        for (const uintptr_t page : pages) {
            ASSERT_FALSE(is_mapped(page)) << text_size;
        }
    }
}
