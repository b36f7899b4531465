#include "base/allocation.h"

#include "base/logs.h"

#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

void log_allocation(const char* fname, const char* name, size_t size) {
    DEBUG_LOG(2, fname, "Allocating memory for %s. size = %zd", name, static_cast<ssize_t>(size));
}

void out_of_memory(const char* name, size_t size) {
    fatal_error("Out of Memory: %s (size = %zd) for index %d", name, static_cast<ssize_t>(size),
                -1);
}

void* allocate_zeroed(const char* fname, const char* name, size_t count, size_t element_size) {
    const size_t size = count * element_size;
    log_allocation(fname, name, size);
    if (count == 0) {
        return nullptr;
    }
    void* block = std::calloc(count, element_size); // refuses a size that overflows
    if (block == nullptr) {
        out_of_memory(name, size);
    }
    return block;
}

void* grow_table(const char* name, void* table, int old_count, int new_count, size_t element_size) {
    if (new_count <= 0) {
        const long long size =
            static_cast<long long>(new_count) * static_cast<long long>(element_size);
        fatal_error("Trying to realloc a negative or 0 size (%lld) for index  %d", size, -1);
    }
    const size_t old_size = static_cast<size_t>(old_count) * element_size;
    const size_t new_size = static_cast<size_t>(new_count) * element_size;
    char* grown = static_cast<char*>(std::realloc(table, new_size));
    if (grown == nullptr) {
        out_of_memory(name, new_size);
    }
    std::memset(grown + old_size, 0, new_size - old_size);
    return grown;
}

char* copy_text(const char* name, std::string_view text) {
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy == nullptr) {
        out_of_memory(name, text.size() + 1);
    }
    text.copy(copy, text.size());
    copy[text.size()] = '\0';
    return copy;
}

char* allocate_text(const char* fname, const char* name, std::string_view text) {
    log_allocation(fname, name, text.size() + 1);
    return copy_text(name, text);
}

void* reserve_pages(size_t size) {
    void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages == MAP_FAILED) {
        return nullptr;
    }
    madvise(pages, size, MADV_HUGEPAGE);
    return pages;
}

void* grow_pages(void* pages, size_t old_size, size_t new_size) {
#if defined(__SANITIZE_THREAD__)
    // The thread sanitizer does not see pages move: it would take who gets their old place for a
    // second user of them.
    void* grown = reserve_pages(new_size);
    if (grown != nullptr) {
        std::memcpy(grown, pages, old_size);
        release_pages(pages, old_size);
    }
    return grown;
#else
    void* grown = mremap(pages, old_size, new_size, MREMAP_MAYMOVE);
    return grown == MAP_FAILED ? nullptr : grown;
#endif
}

void release_pages(void* pages, size_t size) {
    munmap(pages, size);
}
