#include "base/regular_file.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Opens for reading what `found` stands for, or without /proc what the path leads to now. Never
// waits, neither for a pipe's writer nor for who holds a lease.
FileDescriptor open_at_once(const FileDescriptor& found, const char* path) {
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    const std::string name = "/proc/self/fd/" + std::to_string(found.get());
    const int descriptor = open(name.c_str(), flags);
    const bool is_without_proc = descriptor == -1 && errno == ENOENT;
    return FileDescriptor(is_without_proc ? open(path, flags) : descriptor);
}

bool is_harmless(const FileDescriptor& file) {
    struct stat status;
    return file.is_open() && fstat(file.get(), &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

} // namespace

FileDescriptor open_regular_file(const char* path) {
    static std::atomic<long> waited = 0;                        // microseconds, for all files
    const FileDescriptor found(open(path, O_PATH | O_CLOEXEC)); // which opens nothing
    if (!is_harmless(found)) {
        return {};
    }
    constexpr useconds_t step = 10'000; // microseconds
    FileDescriptor file = open_at_once(found, path);
    while (!file.is_open() && errno == EWOULDBLOCK && waited < most_lease_wait * 1'000'000L) {
        usleep(step);
        waited += step;
        file = open_at_once(found, path);
    }
    return is_harmless(file) ? std::move(file) : FileDescriptor();
}
