#include "base/regular_file.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

bool is_harmless(const struct stat& status) {
    return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
}

// Never waits, neither for a pipe's writer nor for who holds a lease.
FileDescriptor open_at_once(const char* path) {
    return FileDescriptor(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

} // namespace

FileDescriptor open_regular_file(const char* path) {
    static std::atomic<long> waited = 0; // microseconds, for all files
    struct stat status;
    if (stat(path, &status) != 0 || !is_harmless(status)) {
        return {};
    }
    constexpr useconds_t step = 10'000; // microseconds
    FileDescriptor file = open_at_once(path);
    while (!file.is_open() && errno == EWOULDBLOCK && waited < most_lease_wait * 1'000'000L) {
        usleep(step);
        waited += step;
        file = open_at_once(path);
    }
    const bool is_found = file.is_open() && fstat(file.get(), &status) == 0 && is_harmless(status);
    return is_found ? std::move(file) : FileDescriptor();
}
