#include "cache/work_mark.h"

#include <fcntl.h>

namespace {

FileDescriptor open_for_locks(const OwnDirectory& directory) {
    return FileDescriptor(openat(directory.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// Of the whole directory.
struct flock lock_of_type(short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

// Asks without taking a lock, so that nobody else takes the question for a mark. Locks of the same
// open file do not count.
bool has_foreign_lock(const FileDescriptor& file) {
    struct flock lock = lock_of_type(F_WRLCK);
    return fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace

// Marks do not exclude each other, so that a run sets its own without waiting.
FileDescriptor mark_work(const OwnDirectory& config_dir) {
    FileDescriptor mark = open_for_locks(config_dir);
    const struct flock lock = lock_of_type(F_RDLCK);
    return fcntl(mark.get(), F_OFD_SETLK, &lock) == 0 ? std::move(mark) : FileDescriptor();
}

bool is_work_marked(const OwnDirectory& config_dir) {
    return has_foreign_lock(open_for_locks(config_dir));
}

bool is_marked_by_others(const FileDescriptor& mark) {
    return has_foreign_lock(mark);
}
