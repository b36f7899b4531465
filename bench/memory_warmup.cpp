#include "memory_warmup.h"

#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

bool touch(std::size_t bytes) {
    constexpr std::size_t page_size = 4096;
    void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        return false;
    madvise(memory, bytes, MADV_HUGEPAGE);
    for (std::size_t at = 0; at < bytes; at += page_size)
        static_cast<volatile char*>(memory)[at] = 1;
    return true;
}

} // namespace

void touch_memory(std::size_t bytes) {
    if (bytes == 0)
        return;
    const pid_t child = fork();
    if (child == 0)
        _exit(touch(bytes) ? 0 : 1);
    int status = 0;
    if (child == -1 || waitpid(child, &status, 0) == -1 || status != 0)
        throw std::runtime_error("the memory cannot be warmed up");
}

} // namespace bench
