#include "tools/load/measured_log.h"

#include "base/failure.h"
#include "tools/load/read_logs.h"

#include <cerrno>
#include <system_error>

FileIdentity identity_of(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

void fail_as_changed(const char* log) {
    fail("Failed to read file %s. Error = '%s'", log,
         std::generic_category().message(ESTALE).c_str());
}

uint64_t end_of_unshown(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && status.st_size == 0 ? most_unshown : 0;
}

void take_measured_log(const char* log, const FileDescriptor& file, const FileIdentity& measured) {
    struct stat status;
    if (fstat(file.get(), &status) != 0 || identity_of(status) != measured) {
        fail_as_changed(log);
    }
    note_read_log(log, file.get());
}
