#include "base/own_file.h"

#include <cerrno>
#include <fcntl.h>

bool is_own(const struct stat& status) {
    return status.st_uid == geteuid() || status.st_uid == 0;
}

FileDescriptor open_own_file(int directory, const char* name) {
    constexpr int flags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC; // never waits
    FileDescriptor file(openat(directory, name, flags));
    struct stat status;
    if (file.is_open() &&
        (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || !is_own(status))) {
        file.close();
        errno = EPERM;
    }
    return file;
}
