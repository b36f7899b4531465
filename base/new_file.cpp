#include "base/new_file.h"

#include "base/inherited_rights.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

bool remove_file(int directory, const char* name) {
    return unlinkat(directory, name, 0) == 0 || errno == ENOENT;
}

FileDescriptor open_in_place(int directory, const char* name) {
    constexpr int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC; // never waits
    FileDescriptor file(openat(directory, name, flags));
    struct stat status;
    const bool is_usable = file.is_open() && fstat(file.get(), &status) == 0 &&
                           S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
                           status.st_nlink == 1 && ftruncate(file.get(), 0) == 0;
    return is_usable ? std::move(file) : FileDescriptor();
}

} // namespace

FileDescriptor create_new_file(int directory, const char* name, mode_t permissions) {
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    constexpr mode_t for_owner = 0600; // which is also the most that an inherited list allows
    constexpr int max_attempts = 100;  // how often somebody may be faster with a file of the name
    for (int i = 0; i < max_attempts; ++i) {
        if (!remove_file(directory, name)) {
            return open_in_place(directory, name);
        }
        FileDescriptor file(openat(directory, name, flags, for_owner));
        if (file.is_open()) {
            set_rights(file.get(), permissions);
            return file;
        }
        if (errno != EEXIST) {
            return {};
        }
    }
    return {};
}

bool clear_file(int directory, const char* name) {
    return remove_file(directory, name) || open_in_place(directory, name).is_open();
}
