#include "tools/load/measured_log.h"

#include "base/failure.h"
#include "tools/load/read_logs.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>

FileIdentity identity_of(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

void fail_as_changed(const char* log) {
    fail("Failed to read file %s. Error = '%s'", log,
         std::generic_category().message(ESTALE).c_str());
}

uint64_t end_of_measured(int descriptor, uint64_t size) {
    if (size != 0) {
        return size;
    }
    struct stat status;
    return fstat(descriptor, &status) == 0 && status.st_size == 0 ? most_unshown : 0;
}

void refuse_more_than_unshown(const char* log, int descriptor) {
    char next;
    if (end_of_measured(descriptor, 0) == most_unshown &&
        pread(descriptor, &next, 1, most_unshown) == 1) {
        fail("Failed to read file %s. Error = '%s'", log,
             std::generic_category().message(EFBIG).c_str());
    }
}

void take_measured_log(const char* log, const FileDescriptor& file, const FileIdentity& measured) {
    struct stat status;
    if (fstat(file.get(), &status) != 0 || identity_of(status) != measured) {
        fail_as_changed(log);
    }
    note_read_log(log, file.get());
}
