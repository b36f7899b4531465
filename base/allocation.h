#pragma once

#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

// How the program takes memory: every block has a name, is announced in the debug log (level 2)
// where its caller says so, and is there on return: running out of memory ends the process with an
// error line. `fname` is the function under whose name the lines are written. Any thread may call.

// Announces a block of `size` bytes for `name` in the debug log.
void log_allocation(const char* fname, const char* name, size_t size);

// Reports that `size` bytes for `name` could not be had, and ends the process with status -1.
[[noreturn]] void out_of_memory(const char* name, size_t size);

// Announces and returns `count` zeroed elements of `element_size` bytes; null when there are none.
// The caller owns the block, may grow it with grow_table and release it with std::free.
void* allocate_zeroed(const char* fname, const char* name, size_t count, size_t element_size);

// Grows a table from `old_count` to `new_count` elements of `element_size` bytes each, keeps its
// contents and clears what is new. Takes the table over and returns the one to use from now on. A
// new size of 0 or less is refused with an error line and status -1. Not announced.
void* grow_table(const char* name, void* table, int old_count, int new_count, size_t element_size);

// A heap copy of `text`, terminated, owned by the caller. Not announced.
char* copy_text(const char* name, std::string_view text);

// The same, announced.
char* allocate_text(const char* fname, const char* name, std::string_view text);

// `size` bytes of zeroed address space that take no memory until they are touched, in huge pages
// where the system has them; null when the system refuses.
void* reserve_pages(size_t size);

// Grows whole pages that reserve_pages gave, or a part of them, from `old_size` to `new_size`
// bytes. They keep what they hold and may come to lie elsewhere; what is new is as from
// reserve_pages. Null when the system refuses: nothing has changed then.
void* grow_pages(void* pages, size_t old_size, size_t new_size);

// Gives back what reserve_pages or grow_pages gave for the same size, or whole pages of it.
void release_pages(void* pages, size_t size);

constexpr size_t huge_page_size = size_t{2} << 20;

// Allocator of the library's containers that takes large blocks by reserve_pages, in whole huge
// pages: the system aligns only those, and the rest of a block would be cleared page by page.
template <typename Element> struct PageAllocator {
    using value_type = Element;

    PageAllocator() = default;
    template <typename Other> explicit PageAllocator(const PageAllocator<Other>&) {}

    Element* allocate(size_t count) {
        const size_t size = count * sizeof(Element);
        void* block = size < huge_page_size ? ::operator new(size) : reserve_pages(whole(size));
        if (block == nullptr) {
            out_of_memory("working memory", size);
        }
        return static_cast<Element*>(block);
    }
    void deallocate(Element* block, size_t count) {
        const size_t size = count * sizeof(Element);
        if (size < huge_page_size) {
            ::operator delete(block);
        } else {
            release_pages(block, whole(size));
        }
    }
    static size_t whole(size_t size) {
        return (size + huge_page_size - 1) / huge_page_size * huge_page_size;
    }
    bool operator==(const PageAllocator&) const = default;
};

// The same for elements that are written before they are read: new ones are not cleared.
template <typename Element> struct RawPageAllocator : PageAllocator<Element> {
    template <typename Other> struct rebind { using other = RawPageAllocator<Other>; };

    RawPageAllocator() = default;
    template <typename Other> explicit RawPageAllocator(const RawPageAllocator<Other>&) {}

    template <typename Made> void construct(Made* place) { ::new (static_cast<void*>(place)) Made; }
    template <typename Made, typename... From> void construct(Made* place, From&&... from) {
        ::new (static_cast<void*>(place)) Made(std::forward<From>(from)...);
    }
};
